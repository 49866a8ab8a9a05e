#include "platform/uikit/controls/UIVisualEffectView.h"

namespace ostrel {

namespace {

/// The opacity of the white over the blurred backdrop.
constexpr float tintAlpha = 0.3f;

}  // namespace

UIVisualEffectView::UIVisualEffectView(CGRect frame, UIBlurEffectStyle style) : UIView(frame), style_(style) {
    setUserInteractionEnabled(false);
}

ViewContent UIVisualEffectView::makeContent() const {
    return BlurContent{.radius = lightRadius, .tint = UIColor::white().withAlpha(tintAlpha)};
}

}  // namespace ostrel
