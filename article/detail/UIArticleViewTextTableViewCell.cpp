#include "article/detail/UIArticleViewTextTableViewCell.h"

#include "article/detail/DetailMetrics.h"

#include <algorithm>
#include <utility>

namespace ostrel {

namespace {

constexpr CGFloat firstHeight = 20;
constexpr CGFloat lineMargin = 8;
/// The text container leaves this room above the text, and the content inset moves the text up by the same
/// amount.
constexpr CGFloat textLift = 6;

}  // namespace

UIArticleViewTextTableViewCell::UIArticleViewTextTableViewCell(UITableViewCellStyle style, std::string reuseIdentifier)
    : UITableViewCell(style, std::move(reuseIdentifier)) {}

const UIFont& UIArticleViewTextTableViewCell::textFont() {
    static const UIFont font = UIFont::fontWithName("PingFangSC-Light", 18);
    return font;
}

double UIArticleViewTextTableViewCell::heightForText(const std::string& text) {
    return TextMeasurer::shared().measure(text, textFont(), CGFLOAT_MAX_TEXT, 1).size.height + lineMargin;
}

void UIArticleViewTextTableViewCell::initialise() {
    UITableViewCell::initialise();
    setSelectionStyle(UITableViewCellSelectionStyle::none);
    textTextView_ = make<UITextView>(CGRect(0, 0, frame().width(), firstHeight));
    // The result is not used: the call makes the shared font.
    heightForText("abc");
    textTextView_->setFont(textFont());
    textTextView_->setShowsVerticalScrollIndicator(false);
    textTextView_->setAutoresizingMask(flexibleWidth);
    textTextView_->setEditable(false);
    textTextView_->setTextContainerInset({textLift, 0, 0, 0});
    textTextView_->setContentInset({-textLift, 0, 0, 0});
    addSubview(textTextView_);
    addConstraint({.toItem = textTextView_, .constant = textTextView_->frame().minY() + roomBelowText});
}

void UIArticleViewTextTableViewCell::setText(std::string text) {
    text_ = std::move(text);
    textTextView_->setText(text_);
    const CGFloat height =
        TextMeasurer::shared().measure(text_, textTextView_->font(), textTextView_->frame().width()).size.height;
    textTextView_->setFrame({5, 2, frame().width() - 10, height});
}

}  // namespace ostrel
