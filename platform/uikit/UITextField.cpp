#include "platform/uikit/UITextField.h"

#include "platform/uikit/UIWindow.h"

namespace ostrel {

UITextField::UITextField(CGRect frame) : UIControl(frame) {
    setCursor(CursorShape::text);
    setDefaultAccessibility(AccessibilityRole::textField, {});
}

void UITextField::contentDidChange() { setNeedsDisplay(); }

void UITextField::setText(std::string text) {
    if (content_.maximumLength) text.resize(prefixOfUtf16Length(text, content_.maximumLength).size());
    if (text == content_.text) return;
    content_.text = std::move(text);
    ++content_.revision;
    contentDidChange();
}

void UITextField::setPlaceholder(std::string placeholder) {
    content_.placeholder = std::move(placeholder);
    setDefaultAccessibility(AccessibilityRole::textField, content_.placeholder);
    contentDidChange();
}

void UITextField::setFont(UIFont font) {
    content_.font = std::move(font);
    contentDidChange();
}

void UITextField::setTextColor(UIColor color) {
    content_.color = color;
    contentDidChange();
}

void UITextField::setSecureTextEntry(bool secure) {
    content_.secure = secure;
    contentDidChange();
}

void UITextField::setTextAlignment(NSTextAlignment alignment) {
    content_.alignment = alignment;
    contentDidChange();
}

void UITextField::setMaximumLength(std::size_t length) {
    content_.maximumLength = length;
    setText(content_.text);
    contentDidChange();
}

void UITextField::setTextInsets(UIEdgeInsets insets) {
    content_.insets = insets;
    contentDidChange();
}

void UITextField::setEnabled(bool enabled) {
    if (!enabled) resignFirstResponder();
    UIControl::setEnabled(enabled);
    contentDidChange();
}

bool UITextField::becomeFirstResponder() { return UIControl::becomeFirstResponder(); }

bool UITextField::resignFirstResponder() { return UIControl::resignFirstResponder(); }

void UITextField::firstResponderDidChange(bool isFirst) {
    content_.focused = isFirst;
    contentDidChange();
    sendActions(isFirst ? UIControlEvent::editingDidBegin : UIControlEvent::editingDidEnd);
}

void UITextField::focusDidChange(bool focused, bool byKeyboard) {
    // The caret shows where the focus is; only the ring of the keyboard's way here is added.
    UIControl::focusDidChange(focused, byKeyboard);
    if (focused) {
        becomeFirstResponder();
    } else {
        resignFirstResponder();
    }
}

void UITextField::touchesEnded(const UITouch& touch) {
    const bool wasPressed = isHighlighted();
    UIControl::touchesEnded(touch);
    if (wasPressed) becomeFirstResponder();
}

bool UITextField::pressesBegan(const UIPress& press) {
    if (press.key.code == UIKeyCode::enter && isFirstResponder()) {
        if (!press.isRepeat) editorReturn();
        return true;
    }
    // Past UIControl: a blank is text here, not a press.
    return UIView::pressesBegan(press);
}

void UITextField::editorTextChanged(const std::string& text) {
    if (!isEnabled()) return;
    std::string accepted = text;
    if (content_.maximumLength) accepted.resize(prefixOfUtf16Length(text, content_.maximumLength).size());
    // The editor shows more than is accepted: it has to be told.
    if (accepted.size() != text.size()) {
        ++content_.revision;
        contentDidChange();
    }
    if (accepted == content_.text) return;
    content_.text = std::move(accepted);
    contentDidChange();
    sendActions(UIControlEvent::editingChanged);
}

void UITextField::editorFocusChanged(bool focused) {
    if (focused) {
        becomeFirstResponder();
    } else {
        resignFirstResponder();
    }
}

void UITextField::editorReturn() {
    if (!hasTarget(UIControlEvent::editingDidEndOnExit)) {
        UIPress press;
        press.key = {.code = UIKeyCode::enter, .characters = "\r"};
        UIView::pressesBegan(press);
        return;
    }
    sendActions(UIControlEvent::editingDidEndOnExit);
    resignFirstResponder();
}

ViewContent UITextField::makeContent() const {
    TextInputContent content = content_;
    content.enabled = isEnabled();
    return content;
}

}  // namespace ostrel
