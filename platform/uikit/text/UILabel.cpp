#include "platform/uikit/text/UILabel.h"

#include "platform/uikit/events/UIEvent.h"

namespace ostrel {

UILabel::UILabel(CGRect frame) : UIView(frame) { setUserInteractionEnabled(false); }

void UILabel::contentDidChange() {
    setNeedsDisplay();
    // The superview may lay the label out by the size of its text.
    if (superview()) superview()->setNeedsLayout();
}

void UILabel::setText(std::string text) {
    if (text == content_.text) return;
    if (selection_) selection_->clear();
    content_.text = std::move(text);
    setDefaultAccessibility(AccessibilityRole::text, content_.text);
    contentDidChange();
}

void UILabel::setFont(UIFont font) {
    if (font == content_.font) return;
    content_.font = std::move(font);
    contentDidChange();
}

void UILabel::setTextColor(UIColor color) {
    if (color == content_.color) return;
    content_.color = color;
    setNeedsDisplay();
}

void UILabel::setTextAlignment(NSTextAlignment alignment) {
    if (alignment == content_.alignment) return;
    content_.alignment = alignment;
    setNeedsDisplay();
}

void UILabel::setNumberOfLines(int lines) {
    lines = std::max(0, lines);
    if (lines == content_.numberOfLines) return;
    content_.numberOfLines = lines;
    contentDidChange();
}

void UILabel::setLineBreakMode(NSLineBreakMode mode) {
    if (mode == content_.lineBreakMode) return;
    content_.lineBreakMode = mode;
    setNeedsDisplay();
}

void UILabel::setAdjustsFontSizeToFitWidth(bool adjusts, CGFloat minimumScale) {
    const CGFloat scale = adjusts ? std::clamp(minimumScale, 0.1, 1.0) : 1;
    if (scale == content_.minimumScale) return;
    content_.minimumScale = scale;
    setNeedsDisplay();
}

void UILabel::setSelectable(bool selectable, bool byPress) {
    if (selection_) selection_->setSelectsByPress(byPress);
    if (selectable == selectable_) return;
    selectable_ = selectable;
    setUserInteractionEnabled(selectable);
    setCursor(selectable ? CursorShape::text : CursorShape::arrow);
    if (selection_) return selection_->clear();
    selection_ = make<TextSelection>(
        *this,
        [this] {
            const CGSize size = bounds().size;
            const CGFloat height = TextMeasurer::shared()
                                       .measure(content_.text, content_.font, size.width, content_.numberOfLines)
                                       .size.height;
            return TextSelection::Layout{selectable_ ? std::string_view(content_.text) : std::string_view(),
                                         {.font = content_.font,
                                          .width = size.width,
                                          .alignment = content_.alignment,
                                          .lineBreakMode = content_.lineBreakMode,
                                          .maximumLines = content_.numberOfLines},
                                         {0, std::max(0.0, (size.height - height) / 2)}};
        },
        [this] { setNeedsDisplay(); });
    selection_->setSelectsByPress(byPress);
}

void UILabel::touchesBegan(const UITouch& touch) {
    if (selection_ && selection_->touchBegan(touch)) return;
    UIView::touchesBegan(touch);
}

void UILabel::touchesMoved(const UITouch& touch) {
    if (selection_) selection_->touchMoved(touch);
    UIView::touchesMoved(touch);
}

CGSize UILabel::sizeThatFits(CGSize size) const {
    if (content_.text.empty()) return {};
    const CGFloat width = size.width > 0 && content_.numberOfLines != 1 ? size.width : CGFLOAT_MAX_TEXT;
    const CGSize text =
        TextMeasurer::shared().measure(content_.text, content_.font, width, content_.numberOfLines).size;
    return {std::ceil(text.width), std::ceil(text.height)};
}

ViewContent UILabel::makeContent() const {
    if (content_.text.empty()) return {};
    TextContent content = content_;
    if (selection_) {
        content.selectionBegin = selection_->begin();
        content.selectionEnd = selection_->end();
    }
    return content;
}

}  // namespace ostrel
