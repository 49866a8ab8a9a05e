#pragma once

#include "platform/uikit/view/UIView.h"

namespace ostrel {

enum class UIBlurEffectStyle { light };

/// Shows what lies beneath it in its own superview (the picture that the superview shows, and the views behind this
/// one) blurred and lightened. Takes no touches.
class UIVisualEffectView final : public UIView {
public:
    UIVisualEffectView(CGRect frame, UIBlurEffectStyle style);
    UIBlurEffectStyle style() const { return style_; }

    /// Points: the standard deviation of the blur.
    static constexpr CGFloat lightRadius = 15;

protected:
    ViewContent makeContent() const override;

private:
    UIBlurEffectStyle style_;
};

}  // namespace ostrel
