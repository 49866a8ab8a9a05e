#pragma once

#include "platform/uikit/events/TextInputClient.h"
#include "platform/uikit/text/TextSelection.h"
#include "platform/uikit/view/UIView.h"

#include <functional>
#include <memory>
#include <optional>

namespace ostrel {

class UITextView;

class UITextViewDelegate {
public:
    virtual ~UITextViewDelegate() = default;
    virtual void textViewDidBeginEditing(UITextView&) {}
    virtual void textViewDidChange(UITextView&) {}
    virtual void textViewDidEndEditing(UITextView&) {}
    /// The caret or the selection moved; when typing moves it, this is called after `textViewDidChange`.
    virtual void textViewDidChangeSelection(UITextView&) {}
};

/// Posted without an object whenever the user has changed the text of a text view.
inline constexpr const char* UITextViewTextDidChangeNotification = "UITextViewTextDidChangeNotification";

/// Text of many lines. While the view is editable and takes touches, the backend's editor edits and scrolls
/// the text. Otherwise the text is at rest: it is as wide as the view less `textContainerInset`, and lines
/// that do not fit into the height are not drawn. In a selectable view that takes touches, parts of a text at
/// rest can be selected and copied (see TextSelection).
class UITextView : public UIView, public TextInputClient {
public:
    explicit UITextView(CGRect frame = {});

    const std::string& text() const { return content_.text; }
    /// A change by the program: neither the delegate nor observers are told.
    void setText(std::string text);
    void setTextViewDelegate(std::weak_ptr<UITextViewDelegate> delegate) { delegate_ = std::move(delegate); }
    /// The text shown while an editable view is empty.
    void setPlaceholder(std::string placeholder);
    /// In UTF-16 units; 0: no limit.
    void setMaximumLength(std::size_t length);
    const UIFont& font() const { return content_.font; }
    void setFont(UIFont font);
    void setTextColor(UIColor color);
    void setTextAlignment(NSTextAlignment alignment);
    bool isEditable() const { return editable_; }
    void setEditable(bool editable);
    bool isSelectable() const { return selectable_; }
    void setSelectable(bool selectable);
    /// The selection of a text at rest; null until the text was selectable for the first time.
    const std::shared_ptr<TextSelection>& selection() const { return selection_; }
    bool isScrollEnabled() const { return scrollEnabled_; }
    void setScrollEnabled(bool enabled) { scrollEnabled_ = enabled; }
    UIReturnKeyType returnKeyType() const { return returnKey_; }
    void setReturnKeyType(UIReturnKeyType type);
    /// The size of the whole text with its insets: as the editor reports it while the text is under edit,
    /// else measured.
    CGSize contentSize() const;
    /// The selection of text under edit, or the position of its caret, in UTF-16 units.
    NSRange selectedRange() const { return selectedRange_; }
    void setShowsVerticalScrollIndicator(bool shows) { showsIndicator_ = shows; }
    void setLineBreakMode(NSLineBreakMode mode);
    /// Space between the frame and the text, in points. Default: none around text at rest, `editableInset`
    /// around text that can be edited.
    UIEdgeInsets textContainerInset() const;
    void setTextContainerInset(UIEdgeInsets insets);
    static constexpr UIEdgeInsets editableInset{8, 5, 8, 5};
    /// Moves the text without changing the width in which it is laid out.
    void setContentInset(UIEdgeInsets insets);
    UIEdgeInsets contentInset() const { return contentInset_; }
    CGSize sizeThatFits(CGSize size) const override;

    bool canBecomeFirstResponder() const override { return editable_ && isUserInteractionEnabled(); }
    bool canBecomeFocused() const override { return canBecomeFirstResponder(); }
    void firstResponderDidChange(bool isFirst) override;
    void focusDidChange(bool focused, bool byKeyboard) override;
    void touchesBegan(const UITouch& touch) override;
    void touchesMoved(const UITouch& touch) override;
    void touchesEnded(const UITouch& touch) override;
    void touchesCancelled(const UITouch& touch) override;
    void editorTextChanged(const std::string& text) override;
    void editorFocusChanged(bool focused) override;
    void editorReturn() override {}
    void editorSelectionChanged(NSRange selection, CGFloat height) override;

protected:
    ViewContent makeContent() const override;

private:
    void contentDidChange();
    UIEdgeInsets textInsets() const;
    bool canBeSelected() const;
    std::weak_ptr<UITextViewDelegate> delegate_;
    std::string placeholder_;
    std::uint64_t revision_ = 0;
    std::size_t maximumLength_ = 0;
    UIReturnKeyType returnKey_ = UIReturnKeyType::standard;
    NSRange selectedRange_;
    std::optional<CGFloat> editedHeight_;  ///< the text's height in the editor; absent: not known
    bool editing_ = false;
    TextContent content_{.color = UIColor::label(),
                         .lineBreakMode = NSLineBreakMode::byWordWrapping,
                         .numberOfLines = 0,
                         .vertical = TextContent::Vertical::top,
                         .onlyWholeLines = true};
    UIEdgeInsets contentInset_;
    std::optional<UIEdgeInsets> containerInset_;
    std::shared_ptr<TextSelection> selection_;  ///< null until the text first can be selected
    bool editable_ = true, selectable_ = true, scrollEnabled_ = true, showsIndicator_ = true;
};

}  // namespace ostrel
