#include "reader/screens/ReaderLogCell.h"

#include "platform/graphics/TextMeasurer.h"

#include <algorithm>
#include <cmath>

namespace ostrel {

namespace {

constexpr CGFloat timeWidth = 66, linePadding = 5;

UIFont lineFont() { return UIFont::system(13); }

CGFloat textWidth(CGFloat rowWidth) { return std::max(0.0, rowWidth - timeWidth - 2 * ReaderLogCell::margin); }

CGFloat textHeight(const std::string& text, CGFloat rowWidth) {
    const CGFloat width = std::max(1.0, textWidth(rowWidth));
    return std::ceil(TextMeasurer::shared().measure(text, lineFont(), width).size.height);
}

}  // namespace

void ReaderLogCell::initialise() {
    UITableViewCell::initialise();
    setSelectionStyle(UITableViewCellSelectionStyle::none);
    time_ = make<UILabel>();
    time_->setFont(UIFont::system(12));
    time_->setTextColor(UIColor::tertiaryLabel());
    text_ = make<UILabel>();
    text_->setFont(lineFont());
    text_->setNumberOfLines(0);
    text_->setLineBreakMode(NSLineBreakMode::byWordWrapping);
    text_->setSelectable(true);
    addSubview(time_);
    addSubview(text_);
}

void ReaderLogCell::show(const ReaderLog::Line& line) {
    time_->setText(logTimeText(line.time));
    text_->setText(line.text);
    setBackgroundColor(line.number % 2 == 0 ? UIColor::rgb(0xF6F7F9) : UIColor::white());
    setAccessibility(AccessibilityRole::listItem, time_->text() + ", " + line.text);
    setNeedsLayout();
}

CGFloat ReaderLogCell::automaticHeight() const {
    return std::max(leastHeight, textHeight(text_->text(), frame().width()) + 2 * linePadding);
}

void ReaderLogCell::layoutSubviews() {
    UITableViewCell::layoutSubviews();
    const CGFloat width = frame().width();
    const CGFloat lineHeight = TextMeasurer::shared().lineHeight(lineFont());
    time_->setFrame({margin, linePadding, timeWidth, lineHeight});
    text_->setFrame({margin + timeWidth, linePadding, textWidth(width), textHeight(text_->text(), width)});
}

}  // namespace ostrel
