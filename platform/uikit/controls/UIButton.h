#pragma once

#include "platform/uikit/controls/UIImageView.h"
#include "platform/uikit/text/UILabel.h"
#include "platform/uikit/view/UIControl.h"

#include <map>

namespace ostrel {

/// A button with an image beside its title, each settable for every state; a state without its own value uses
/// that of the normal state, dimmed when disabled and when pressed.
class UIButton : public UIControl {
public:
    /// custom: all colours are set by the program; system: title and symbol have the tint colour.
    enum class Type { custom, system };

    explicit UIButton(Type type = Type::custom, CGRect frame = {});
    void initialise();

    const std::string& titleForState(UIControlState state) const;
    void setTitle(std::string title, UIControlState state = UIControlState::normal);
    /// The title of the current state.
    const std::string& currentTitle() const { return titleForState(controlState()); }
    void setTitleColor(UIColor color, UIControlState state = UIControlState::normal);
    UIColor titleColorForState(UIControlState state) const;
    void setImage(std::shared_ptr<const UIImage> image, UIControlState state = UIControlState::normal);
    const std::shared_ptr<const UIImage>& imageForState(UIControlState state) const;
    /// The fill behind the title. Replaces `backgroundColor` in all states once it is set for one of them.
    void setBackgroundColor(UIColor color, UIControlState state);
    using UIView::setBackgroundColor;
    UIColor backgroundColorForState(UIControlState state) const;
    const std::shared_ptr<UILabel>& titleLabel() const { return titleLabel_; }
    const std::shared_ptr<UIImageView>& imageView() const { return imageView_; }
    void setTitleFont(UIFont font);
    void setTintColor(UIColor color);
    /// Space between image and title, in points (default 4).
    void setImagePadding(CGFloat padding);
    void setContentInsets(UIEdgeInsets insets);
    /// The alignment of image and title in a button that is wider than both (default center).
    void setContentAlignment(NSTextAlignment alignment);
    CGSize sizeThatFits(CGSize size) const override;
    void layoutSubviews() override;

protected:
    void controlStateDidChange() override;

private:
    template <class T>
    const T* valueForState(const std::map<UIControlState, T>& values, UIControlState state) const;
    void update();
    Type type_;
    std::map<UIControlState, std::string> titles_;
    std::map<UIControlState, UIColor> titleColors_, backgrounds_;
    UIColor plainBackground_;  ///< the fill of states without their own, once another state has one
    std::map<UIControlState, std::shared_ptr<const UIImage>> images_;
    std::shared_ptr<UILabel> titleLabel_;
    std::shared_ptr<UIImageView> imageView_;
    UIColor tint_ = UIColor::tint();
    CGFloat padding_ = 4;
    UIEdgeInsets insets_;
    NSTextAlignment alignment_ = NSTextAlignment::center;
};

}  // namespace ostrel
