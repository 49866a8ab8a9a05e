#include "platform/uikit/text/UITextView.h"

#include "platform/foundation/runloop/NSNotificationCenter.h"
#include "platform/uikit/view/UIWindow.h"

namespace ostrel {

UITextView::UITextView(CGRect frame) : UIView(frame) {}

void UITextView::contentDidChange() {
    setCursor(canBecomeFirstResponder() || canBeSelected() ? CursorShape::text : CursorShape::arrow);
    setNeedsDisplay();
    if (selection_ || !canBeSelected()) return;
    selection_ = make<TextSelection>(
        *this,
        [this] {
            const UIEdgeInsets insets = textInsets();
            return TextSelection::Layout{canBeSelected() ? std::string_view(content_.text) : std::string_view(),
                                         {.font = content_.font,
                                          .width = std::max(0.0, bounds().width() - insets.left - insets.right),
                                          .alignment = content_.alignment,
                                          .lineBreakMode = content_.lineBreakMode},
                                         {insets.left, insets.top}};
        },
        [this] { setNeedsDisplay(); });
}

void UITextView::setText(std::string text) {
    if (maximumLength_) text.resize(prefixOfUtf16Length(text, maximumLength_).size());
    if (text == content_.text) return;
    if (selection_) selection_->clear();
    content_.text = std::move(text);
    editedHeight_.reset();
    selectedRange_ = {utf16Length(content_.text), 0};
    ++revision_;
    if (!editable_) setDefaultAccessibility(AccessibilityRole::text, content_.text);
    contentDidChange();
}

void UITextView::setSelectable(bool selectable) {
    if (selectable == selectable_) return;
    selectable_ = selectable;
    contentDidChange();
}

void UITextView::setPlaceholder(std::string placeholder) {
    placeholder_ = std::move(placeholder);
    if (editable_) setDefaultAccessibility(AccessibilityRole::textField, placeholder_);
    contentDidChange();
}

void UITextView::setMaximumLength(std::size_t length) {
    maximumLength_ = length;
    setText(content_.text);
    contentDidChange();
}

void UITextView::setFont(UIFont font) {
    if (font == content_.font) return;
    content_.font = std::move(font);
    contentDidChange();
}

void UITextView::setReturnKeyType(UIReturnKeyType type) {
    if (type == returnKey_) return;
    returnKey_ = type;
    contentDidChange();
}

void UITextView::setTextColor(UIColor color) {
    if (color == content_.color) return;
    content_.color = color;
    contentDidChange();
}

void UITextView::setTextAlignment(NSTextAlignment alignment) {
    if (alignment == content_.alignment) return;
    content_.alignment = alignment;
    contentDidChange();
}

void UITextView::setLineBreakMode(NSLineBreakMode mode) {
    if (mode == content_.lineBreakMode) return;
    content_.lineBreakMode = mode;
    contentDidChange();
}

UIEdgeInsets UITextView::textContainerInset() const {
    return containerInset_.value_or(editable_ ? editableInset : UIEdgeInsets());
}

void UITextView::setTextContainerInset(UIEdgeInsets insets) {
    if (insets == containerInset_) return;
    containerInset_ = insets;
    contentDidChange();
}

void UITextView::setContentInset(UIEdgeInsets insets) {
    if (insets == contentInset_) return;
    contentInset_ = insets;
    contentDidChange();
}

void UITextView::setEditable(bool editable) {
    if (editable == editable_) return;
    editable_ = editable;
    if (!editable) resignFirstResponder();
    setDefaultAccessibility(editable ? AccessibilityRole::textField : AccessibilityRole::text,
                            editable ? placeholder_ : content_.text);
    contentDidChange();
}

CGSize UITextView::sizeThatFits(CGSize size) const {
    const UIEdgeInsets insets = textContainerInset();
    const CGFloat width = size.width > 0 ? std::max(0.0, size.width - insets.left - insets.right) : CGFLOAT_MAX_TEXT;
    const CGSize text = TextMeasurer::shared().measure(content_.text, content_.font, width).size;
    return {std::ceil(text.width) + insets.left + insets.right, std::ceil(text.height) + insets.top + insets.bottom};
}

CGSize UITextView::contentSize() const {
    const CGFloat width = bounds().width();
    const UIEdgeInsets insets = textContainerInset();
    if (editing_ && editedHeight_) return {width, std::ceil(*editedHeight_) + insets.top + insets.bottom};
    // An empty text is one line high.
    const CGFloat least = std::ceil(TextMeasurer::shared().lineHeight(content_.font)) + insets.top + insets.bottom;
    return {width, std::max(least, sizeThatFits({std::max(1.0, width), 0}).height)};
}

// Editing

void UITextView::firstResponderDidChange(bool isFirst) {
    editing_ = isFirst;
    contentDidChange();
    const auto delegate = delegate_.lock();
    if (!delegate) return;
    if (isFirst) {
        delegate->textViewDidBeginEditing(*this);
        // The editor now shows a caret.
        if (editing_) delegate->textViewDidChangeSelection(*this);
    } else {
        delegate->textViewDidEndEditing(*this);
    }
}

void UITextView::focusDidChange(bool focused, bool byKeyboard) {
    UIView::focusDidChange(focused, byKeyboard);
    editorFocusChanged(focused);
}

// Touches on text under edit belong to the editor; those on text at rest, to the selection and then to the
// superview.

void UITextView::touchesBegan(const UITouch& touch) {
    if (canBecomeFirstResponder()) return;
    if (selection_ && selection_->touchBegan(touch)) return;
    UIView::touchesBegan(touch);
}

void UITextView::touchesMoved(const UITouch& touch) {
    if (canBecomeFirstResponder()) return;
    if (selection_) selection_->touchMoved(touch);
    UIView::touchesMoved(touch);
}

void UITextView::touchesEnded(const UITouch& touch) {
    if (!becomeFirstResponder()) UIView::touchesEnded(touch);
}

void UITextView::touchesCancelled(const UITouch& touch) {
    if (!canBecomeFirstResponder()) UIView::touchesCancelled(touch);
}

void UITextView::editorFocusChanged(bool focused) {
    if (focused) {
        becomeFirstResponder();
    } else {
        resignFirstResponder();
    }
}

void UITextView::editorTextChanged(const std::string& text) {
    if (!canBecomeFirstResponder()) return;
    std::string accepted = text;
    if (maximumLength_) accepted.resize(prefixOfUtf16Length(text, maximumLength_).size());
    // The editor shows a text longer than the accepted one: a new revision replaces it.
    if (accepted.size() != text.size()) {
        ++revision_;
        contentDidChange();
    }
    if (accepted == content_.text) return;
    content_.text = std::move(accepted);
    editedHeight_.reset();
    contentDidChange();
    if (const auto delegate = delegate_.lock()) delegate->textViewDidChange(*this);
    NSNotificationCenter::defaultCenter().postNotification(UITextViewTextDidChangeNotification);
}

void UITextView::editorSelectionChanged(NSRange selection, CGFloat height) {
    if (!canBecomeFirstResponder()) return;
    editedHeight_ = height;
    selectedRange_ = selection;
    if (const auto delegate = delegate_.lock()) delegate->textViewDidChangeSelection(*this);
}

bool UITextView::canBeSelected() const {
    return !editable_ && selectable_ && isUserInteractionEnabled() && !content_.text.empty();
}

UIEdgeInsets UITextView::textInsets() const {
    // A content inset moves the text without changing the width in which it is laid out.
    UIEdgeInsets insets = textContainerInset();
    insets.top += contentInset_.top;
    insets.left += contentInset_.left;
    insets.right -= contentInset_.left;
    return insets;
}

ViewContent UITextView::makeContent() const {
    if (canBecomeFirstResponder()) {
        return TextInputContent{.text = content_.text,
                                .revision = revision_,
                                .placeholder = placeholder_,
                                .font = content_.font,
                                .color = content_.color,
                                .placeholderColor = UIColor::placeholderText(),
                                .alignment = content_.alignment,
                                .multiline = true,
                                .focused = editing_,
                                .maximumLength = maximumLength_,
                                .returnKey = returnKey_,
                                .insets = textInsets()};
    }
    if (content_.text.empty()) return {};
    TextContent content = content_;
    content.insets = textInsets();
    if (selection_) {
        content.selectionBegin = selection_->begin();
        content.selectionEnd = selection_->end();
    }
    return content;
}

}  // namespace ostrel
