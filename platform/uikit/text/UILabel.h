#pragma once

#include "platform/uikit/text/TextSelection.h"
#include "platform/uikit/view/UIView.h"

namespace ostrel {

/// Read-only text of one or more lines.
class UILabel : public UIView {
public:
    /// User interaction is disabled by default.
    explicit UILabel(CGRect frame = {});

    const std::string& text() const { return content_.text; }
    void setText(std::string text);
    const UIFont& font() const { return content_.font; }
    void setFont(UIFont font);
    UIColor textColor() const { return content_.color; }
    void setTextColor(UIColor color);
    NSTextAlignment textAlignment() const { return content_.alignment; }
    void setTextAlignment(NSTextAlignment alignment);
    int numberOfLines() const { return content_.numberOfLines; }
    /// 0: as many lines as fit.
    void setNumberOfLines(int lines);
    void setLineBreakMode(NSLineBreakMode mode);
    /// Shrinks the font, down to `minimumScale` of its size, until the text fits the width on one line.
    void setAdjustsFontSizeToFitWidth(bool adjusts, CGFloat minimumScale = 0.5);
    /// Whether parts of the text can be selected and copied (see TextSelection). A selectable label takes
    /// touches; its superview gets those that the selection does not use. `byPress` is false where the
    /// superview handles long presses.
    void setSelectable(bool selectable, bool byPress = true);
    bool isSelectable() const { return selectable_; }
    CGSize sizeThatFits(CGSize size) const override;
    void touchesBegan(const UITouch& touch) override;
    void touchesMoved(const UITouch& touch) override;

protected:
    ViewContent makeContent() const override;

private:
    void contentDidChange();
    std::shared_ptr<TextSelection> selection_;  ///< null until the label first becomes selectable
    bool selectable_ = false;
    TextContent content_{.color = UIColor::label()};
};

}  // namespace ostrel
