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
    /// The caret or the selection moved, also by typing (then after `textViewDidChange`).
    virtual void textViewDidChangeSelection(UITextView&) {}
};

/// Posted, without an object, whenever the user changed the text of any text view.
inline constexpr const char* UITextViewTextDidChangeNotification = "UITextViewTextDidChangeNotification";

/// Text of many lines. While it is editable and takes touches, the backend's editor edits (and scrolls) it; else it is
/// text at rest: as wide as the view less `textContainerInset`, lines that do not fit the height are not drawn. Of text
/// at rest that is selectable and takes touches parts can be selected and copied (see TextSelection).
class UITextView : public UIView, public TextInputClient {
public:
    explicit UITextView(CGRect frame = {});

    const std::string& text() const { return content_.text; }
    /// By the program: tells neither delegate nor observers.
    void setText(std::string text);
    void setTextViewDelegate(std::weak_ptr<UITextViewDelegate> delegate) { delegate_ = std::move(delegate); }
    /// Shown while an editable view is empty.
    void setPlaceholder(std::string placeholder);
    /// UTF-16 units; 0: no limit.
    void setMaximumLength(std::size_t length);
    const UIFont& font() const { return content_.font; }
    void setFont(UIFont font);
    void setTextColor(UIColor color);
    void setTextAlignment(NSTextAlignment alignment);
    bool isEditable() const { return editable_; }
    void setEditable(bool editable);
    bool isSelectable() const { return selectable_; }
    void setSelectable(bool selectable);
    /// What is selected of text at rest; null while it never could be.
    const std::shared_ptr<TextSelection>& selection() const { return selection_; }
    bool isScrollEnabled() const { return scrollEnabled_; }
    void setScrollEnabled(bool enabled) { scrollEnabled_ = enabled; }
    UIReturnKeyType returnKeyType() const { return returnKey_; }
    void setReturnKeyType(UIReturnKeyType type);
    /// The whole text's, with its insets: as the editor has laid it out while the text is under edit, else measured.
    CGSize contentSize() const;
    /// What is selected of text under edit, or where its caret stands; UTF-16 units.
    NSRange selectedRange() const { return selectedRange_; }
    void setShowsVerticalScrollIndicator(bool shows) { showsIndicator_ = shows; }
    void setLineBreakMode(NSLineBreakMode mode);
    /// Space between the frame and the text, points. Unless set: none around text at rest, `editableInset` around text
    /// that can be edited.
    UIEdgeInsets textContainerInset() const;
    void setTextContainerInset(UIEdgeInsets insets);
    static constexpr UIEdgeInsets editableInset{8, 5, 8, 5};
    /// Moves the text without changing the width it is laid out in.
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
    std::optional<CGFloat> editedHeight_;  ///< of the text as the editor shows it; absent: not known
    bool editing_ = false;
    TextContent content_{.color = UIColor::label(),
                         .lineBreakMode = NSLineBreakMode::byWordWrapping,
                         .numberOfLines = 0,
                         .vertical = TextContent::Vertical::top,
                         .onlyWholeLines = true};
    UIEdgeInsets contentInset_;
    std::optional<UIEdgeInsets> containerInset_;
    std::shared_ptr<TextSelection> selection_;  ///< made when the text first can be selected
    bool editable_ = true, selectable_ = true, scrollEnabled_ = true, showsIndicator_ = true;
};

}  // namespace ostrel
