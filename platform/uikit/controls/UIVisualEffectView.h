#pragma once

#include "platform/uikit/view/UIView.h"

namespace ostrel {

enum class UIBlurEffectStyle { light };

/// Shows its backdrop (the superview's own content and the siblings behind this view) blurred and lightened.
/// Takes no touches.
class UIVisualEffectView final : public UIView {
public:
    UIVisualEffectView(CGRect frame, UIBlurEffectStyle style);
    UIBlurEffectStyle style() const { return style_; }

    /// The standard deviation of the blur, in points.
    static constexpr CGFloat lightRadius = 15;

protected:
    ViewContent makeContent() const override;

private:
    UIBlurEffectStyle style_;
};

}  // namespace ostrel
