#include "article/detail/UIArticleViewTitleTableViewCell.h"

#include "platform/uikit/view/UIGestureRecognizer.h"

#include <utility>

namespace ostrel {

namespace {

constexpr CGFloat titleHeight = 30;

}  // namespace

UIArticleViewTitleTableViewCell::UIArticleViewTitleTableViewCell(UITableViewCellStyle style,
                                                                 std::string reuseIdentifier)
    : UITableViewCell(style, std::move(reuseIdentifier)) {}

void UIArticleViewTitleTableViewCell::initialise() {
    UITableViewCell::initialise();
    setSelectionStyle(UITableViewCellSelectionStyle::none);
    titleLabel_ = make<UILabel>(CGRect(0, 0, frame().width(), titleHeight));
    titleLabel_->setFont(UIFont::fontWithName("PingFangSC-Regular", 24));
    titleLabel_->setTextAlignment(NSTextAlignment::center);
    titleLabel_->setAutoresizingMask(flexibleWidth);
    // A long press on the row is for its handler.
    titleLabel_->setSelectable(true, false);
    addSubview(titleLabel_);
    addGestureRecognizer(
        std::make_shared<UILongPressGestureRecognizer>([this](UIGestureRecognizer&) { longpress(); }));
}

void UIArticleViewTitleTableViewCell::setTitle(std::string title) {
    title_ = std::move(title);
    titleLabel_->setText(title_);
    setAccessibility(AccessibilityRole::listItem, title_);
}

void UIArticleViewTitleTableViewCell::longpress() {
    // On purpose for every step of the gesture: a press that begins and ends runs the handler twice.
    if (const auto handler = longPressHandler_) handler();
}

}  // namespace ostrel
