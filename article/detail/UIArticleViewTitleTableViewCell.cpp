#include "article/detail/UIArticleViewTitleTableViewCell.h"

#include "platform/uikit/view/UIGestureRecognizer.h"

#include <utility>

namespace ostrel {

namespace {

constexpr CGFloat titleLabelHeight = 30;

}  // namespace

UIArticleViewTitleTableViewCell::UIArticleViewTitleTableViewCell(UITableViewCellStyle style,
                                                                 std::string reuseIdentifier)
    : UITableViewCell(style, std::move(reuseIdentifier)) {}

void UIArticleViewTitleTableViewCell::initialise() {
    UITableViewCell::initialise();
    setSelectionStyle(UITableViewCellSelectionStyle::none);
    titleLabel_ = make<UILabel>(CGRect(0, 0, frame().width(), titleLabelHeight));
    titleLabel_->setFont(UIFont::fontWithName("PingFangSC-Regular", 24));
    titleLabel_->setTextAlignment(NSTextAlignment::center);
    titleLabel_->setAutoresizingMask(flexibleWidth);
    // The label must not begin a selection at a long press, which runs the row's handler.
    titleLabel_->setSelectable(true, false);
    addSubview(titleLabel_);
    addGestureRecognizer(std::make_shared<UILongPressGestureRecognizer>([this](UIGestureRecognizer&) { longpress(); }));
}

void UIArticleViewTitleTableViewCell::setTitle(std::string title) {
    title_ = std::move(title);
    titleLabel_->setText(title_);
    setAccessibility(AccessibilityRole::listItem, title_);
}

void UIArticleViewTitleTableViewCell::longpress() {
    // Every step of the gesture runs the handler: twice for a press that begins and ends. Kept on purpose: a
    // handler can follow the whole press.
    if (const auto handler = longPressHandler_) handler();
}

}  // namespace ostrel
