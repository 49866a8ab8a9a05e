#include "platform/uikit/text/UITextField.h"

#include "platform/uikit/view/UIWindow.h"

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

void UITextField::setReturnKeyType(UIReturnKeyType type) {
    content_.returnKey = type;
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
    const auto delegate = delegate_.lock();
    if (!delegate) return;
    if (isFirst) {
        delegate->textFieldDidBeginEditing(*this);
    } else {
        delegate->textFieldDidEndEditing(*this);
    }
}

void UITextField::focusDidChange(bool focused, bool byKeyboard) {
    // Touch needs no focus ring here, because the caret shows the focus; the keyboard's ring is drawn as for
    // any control.
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
    // Not UIControl's implementation, for which a blank is a press: here it is text.
    return UIView::pressesBegan(press);
}

void UITextField::editorTextChanged(const std::string& text) {
    if (!isEnabled()) return;
    std::string accepted = text;
    if (content_.maximumLength) accepted.resize(prefixOfUtf16Length(text, content_.maximumLength).size());
    if (accepted != content_.text && !mayChangeTo(accepted)) accepted = content_.text;
    // The editor shows a text that was not accepted: a new revision replaces it.
    if (accepted != text) {
        ++content_.revision;
        contentDidChange();
    }
    if (accepted == content_.text) return;
    content_.text = std::move(accepted);
    contentDidChange();
    sendActions(UIControlEvent::editingChanged);
}

/// Asks the delegate about the shortest range that differs between the two texts.
bool UITextField::mayChangeTo(const std::string& text) {
    const auto delegate = delegate_.lock();
    if (!delegate) return true;
    const std::string& old = content_.text;
    const auto isInside = [](const std::string& s, std::size_t at) {
        return at < s.size() && (static_cast<unsigned char>(s[at]) & 0xC0) == 0x80;
    };
    std::size_t begin = 0;
    const std::size_t shorter = std::min(old.size(), text.size());
    while (begin < shorter && old[begin] == text[begin]) ++begin;
    while (begin > 0 && (isInside(old, begin) || isInside(text, begin))) --begin;
    std::size_t oldEnd = old.size(), newEnd = text.size();
    while (oldEnd > begin && newEnd > begin && old[oldEnd - 1] == text[newEnd - 1]) --oldEnd, --newEnd;
    while (isInside(old, oldEnd) || isInside(text, newEnd)) ++oldEnd, ++newEnd;
    const std::string_view before = old;
    const NSRange range{utf16Length(before.substr(0, begin)), utf16Length(before.substr(begin, oldEnd - begin))};
    return delegate->textFieldShouldChangeCharactersInRangeReplacementString(*this, range,
                                                                             text.substr(begin, newEnd - begin));
}

void UITextField::editorFocusChanged(bool focused) {
    if (focused) {
        becomeFirstResponder();
    } else {
        resignFirstResponder();
    }
}

void UITextField::editorReturn() {
    const auto kept = shared_from_this();
    const auto delegate = delegate_.lock();
    if (delegate && !delegate->textFieldShouldReturn(*this)) return;
    if (delegate && !hasTarget(UIControlEvent::editingDidEndOnExit)) return;
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
