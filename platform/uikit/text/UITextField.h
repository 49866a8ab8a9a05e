#pragma once

#include "platform/uikit/events/TextInputClient.h"
#include "platform/uikit/view/UIControl.h"

namespace ostrel {

class UITextField;

class UITextFieldDelegate {
public:
    virtual ~UITextFieldDelegate() = default;
    virtual void textFieldDidBeginEditing(UITextField&) {}
    virtual void textFieldDidEndEditing(UITextField&) {}
    /// Return was pressed; true: the field handles the key as it does without a delegate.
    virtual bool textFieldShouldReturn(UITextField&) { return true; }
    /// The user replaces `range` (UTF-16 units) of the field's text; false rejects the change.
    virtual bool textFieldShouldChangeCharactersInRangeReplacementString(UITextField&, NSRange /*range*/,
                                                                         const std::string& /*replacement*/) {
        return true;
    }
};

/// One line of text under edit. The backend's own editor does the editing; the field holds the text that the
/// editor reports. Sends editingChanged, editingDidBegin, editingDidEnd, and editingDidEndOnExit for Return.
/// A Return without a target, which the delegate has not rejected, goes up the responder chain as a key.
class UITextField : public UIControl, public TextInputClient {
public:
    explicit UITextField(CGRect frame = {});

    const std::string& text() const { return content_.text; }
    void setText(std::string text);
    void setPlaceholder(std::string placeholder);
    const std::string& placeholder() const { return content_.placeholder; }
    void setTextFieldDelegate(std::weak_ptr<UITextFieldDelegate> delegate) { delegate_ = std::move(delegate); }
    const UIFont& font() const { return content_.font; }
    void setFont(UIFont font);
    UIReturnKeyType returnKeyType() const { return content_.returnKey; }
    void setReturnKeyType(UIReturnKeyType type);
    void setTextColor(UIColor color);
    void setSecureTextEntry(bool secure);
    bool isSecureTextEntry() const { return content_.secure; }
    void setTextAlignment(NSTextAlignment alignment);
    /// In UTF-16 units; 0: no limit.
    void setMaximumLength(std::size_t length);
    /// Space between the frame and the text, in points (default 0).
    void setTextInsets(UIEdgeInsets insets);
    void setEnabled(bool enabled) override;

    bool canBecomeFirstResponder() const override { return isEnabled(); }
    bool becomeFirstResponder() override;
    bool resignFirstResponder() override;
    void touchesEnded(const UITouch& touch) override;
    bool pressesBegan(const UIPress& press) override;

    void editorTextChanged(const std::string& text) override;
    void editorFocusChanged(bool focused) override;
    void editorReturn() override;
    void firstResponderDidChange(bool isFirst) override;

protected:
    ViewContent makeContent() const override;
    void focusDidChange(bool focused, bool byKeyboard) override;

private:
    void contentDidChange();
    bool mayChangeTo(const std::string& text);
    std::weak_ptr<UITextFieldDelegate> delegate_;
    TextInputContent content_{.color = UIColor::label(), .placeholderColor = UIColor::placeholderText()};
};

}  // namespace ostrel
