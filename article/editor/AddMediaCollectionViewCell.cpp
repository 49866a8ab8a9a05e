#include "article/editor/AddMediaCollectionViewCell.h"

#include "article/resources/ArticleBundles.h"

#include <utility>

namespace ostrel {

void AddMediaCollectionViewCell::makeButton(const char* picture, std::string name) {
    contentView()->setBackgroundColor({0.96f, 0.96f, 0.97f, 1});
    setClipsToBounds(true);
    setCornerRadius(5);
    button_ = make<UIButton>(UIButton::Type::custom, CGRect{{0, 0}, frame().size});
    button_->setBackgroundColor(UIColor::clear());
    button_->setAutoresizingMask(flexibleWidth);
    button_->setImage(imageInBundle(openFrameworkArticleBundle(), picture));
    button_->setAccessibility(AccessibilityRole::button, std::move(name));
    button_->addTarget([this] { addAction(); }, UIControlEvent::touchUpInside);
    contentView()->addSubview(button_);
}

void AddMediaCollectionViewCell::setFrame(const CGRect& frame) {
    UICollectionViewCell::setFrame(frame);
    if (button_) button_->setFrame({{0, 0}, frame.size});
}

void AddImageCollectionViewCell::initialise() { makeButton("add_image", articleText("Add image")); }

void AddImageCollectionViewCell::addImageAction() {
    const auto receiver = delegate();
    if (receiver) receiver->addImageFromAddImageCollectionViewCell(*this);
}

void AddVideoCollectionViewCell::initialise() { makeButton("add_video", articleText("Add video")); }

void AddVideoCollectionViewCell::addVideoAction() {
    const auto receiver = delegate();
    if (receiver) receiver->addVideoFromAddVideoCollectionViewCell(*this);
}

}  // namespace ostrel
