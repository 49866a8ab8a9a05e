#include "reader/screens/ReaderMessageCell.h"

#include "article/records/NSStringForDate.h"
#include "platform/graphics/TextMeasurer.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace ostrel {

namespace {

constexpr CGFloat sideMargin = 16, padding = 10, gap = 3, headHeight = 22, dotSize = 8;
constexpr int mostTitleLines = 2;

UIFont titleFont() { return UIFont::mediumSystem(15); }
UIFont textFont() { return UIFont::system(14); }

CGFloat heightOf(const std::string& text, const UIFont& font, CGFloat width, int lines) {
    if (text.empty()) return 0;
    return std::ceil(TextMeasurer::shared().measure(text, font, width, lines).size.height) + gap;
}

}  // namespace

void ReaderMessageCell::initialise() {
    UITableViewCell::initialise();
    setSelectionStyle(UITableViewCellSelectionStyle::none);
    dot_ = make<UIView>();
    dot_->setBackgroundColor(UIColor::tint());
    dot_->setCornerRadius(dotSize / 2);
    addSubview(dot_);
    sender_ = addLabel(UIFont::mediumSystem(15), UIColor::label());
    date_ = addLabel(UIFont::system(13), UIColor::secondaryLabel());
    date_->setTextAlignment(NSTextAlignment::right);
    title_ = addLabel(titleFont(), UIColor::label());
    title_->setNumberOfLines(mostTitleLines);
    text_ = addLabel(textFont(), UIColor::secondaryLabel());
    text_->setNumberOfLines(0);
}

std::shared_ptr<UILabel> ReaderMessageCell::addLabel(const UIFont& font, UIColor color) {
    auto label = make<UILabel>();
    label->setFont(font);
    label->setTextColor(color);
    addSubview(label);
    return label;
}

void ReaderMessageCell::show(const UserNotification& message) {
    dot_->setHidden(message.isRead);
    sender_->setText(message.senderName);
    date_->setText(message.date ? NSStringForDate::date(*message.date) : "");
    title_->setText(message.title);
    text_->setText(message.text);
    setAccessibility(AccessibilityRole::listItem, message.senderName + ", " + message.title + ", " + message.text);
    setNeedsLayout();
}

void ReaderMessageCell::layoutSubviews() {
    UITableViewCell::layoutSubviews();
    const CGFloat width = std::max(0.0, frame().width() - 2 * sideMargin);
    const CGFloat indent = dot_->isHidden() ? 0 : dotSize + 6;
    dot_->setFrame({sideMargin, padding + (headHeight - dotSize) / 2, dotSize, dotSize});
    const CGFloat dateWidth = std::min(width / 2, std::ceil(date_->sizeThatFits({width, headHeight}).width));
    sender_->setFrame({sideMargin + indent, padding, std::max(0.0, width - indent - dateWidth - 8), headHeight});
    date_->setFrame({sideMargin + width - dateWidth, padding, dateWidth, headHeight});
    CGFloat y = padding + headHeight;
    const auto place = [&](UILabel& label, const UIFont& font, int lines) {
        const CGFloat height = heightOf(label.text(), font, width, lines);
        label.setFrame({sideMargin, y, width, height});
        y += height;
    };
    place(*title_, titleFont(), mostTitleLines);
    place(*text_, textFont(), 0);
}

CGFloat ReaderMessageCell::heightFor(const UserNotification& message, CGFloat rowWidth) {
    const CGFloat width = std::max(0.0, rowWidth - 2 * sideMargin);
    return padding + headHeight + heightOf(message.title, titleFont(), width, mostTitleLines) +
           heightOf(message.text, textFont(), width, 0) + padding;
}

}  // namespace ostrel
