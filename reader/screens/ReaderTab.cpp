#include "reader/screens/ReaderTab.h"

#include <algorithm>
#include <utility>

namespace ostrel {

namespace {
constexpr UIColor restColor = UIColor::rgb(0x7A8190);
}

ReaderTab::ReaderTab(std::shared_ptr<const UIImage> symbol, std::string title)
    : symbol_(std::move(symbol)), title_(std::move(title)) {}

void ReaderTab::initialise() {
    image_ = make<UIImageView>();
    image_->setImage(symbol_);
    image_->setContentMode(UIViewContentMode::scaleAspectFit);
    image_->setUserInteractionEnabled(false);
    addSubview(image_);
    label_ = make<UILabel>();
    label_->setUserInteractionEnabled(false);
    addSubview(label_);
    setCornerRadius(8);
    setTitle(title_);
    controlStateDidChange();
}

void ReaderTab::setTitle(std::string title) {
    title_ = std::move(title);
    label_->setText(title_);
    setAccessibility(AccessibilityRole::button, title_);
}

void ReaderTab::setBeside(bool beside) {
    beside_ = beside;
    controlStateDidChange();
    place();
}

void ReaderTab::controlStateDidChange() {
    const bool lit = isSelected() || isHighlighted();
    const UIColor color = lit ? UIColor::tint() : restColor;
    image_->setTintColor(color);
    label_->setTextColor(beside_ && !lit ? UIColor::label() : color);
    label_->setFont(beside_ ? (isSelected() ? UIFont::mediumSystem(15) : UIFont::system(15))
                            : UIFont::mediumSystem(10));
    label_->setTextAlignment(beside_ ? NSTextAlignment::left : NSTextAlignment::center);
    setBackgroundColor(beside_ && isSelected() ? UIColor::tint().withAlpha(0.1f) : UIColor::clear());
}

void ReaderTab::setFrame(const CGRect& frame) {
    UIControl::setFrame(frame);
    if (label_) place();
}

void ReaderTab::layoutSubviews() { place(); }

void ReaderTab::place() {
    const CGSize size = bounds().size;
    if (beside_) {
        image_->setFrame({12, (size.height - symbolSize) / 2, symbolSize, symbolSize});
        label_->setFrame({46, 0, std::max(0.0, size.width - 54), size.height});
    } else {
        image_->setFrame({(size.width - symbolSize) / 2, 7, symbolSize, symbolSize});
        label_->setFrame({2, 33, std::max(0.0, size.width - 4), 14});
    }
}

}  // namespace ostrel
