#include "platform/uikit/controls/UIVisualEffectView.h"

namespace ostrel {

namespace {

/// Laid over the blurred picture.
constexpr float lightVeil = 0.3f;

}  // namespace

UIVisualEffectView::UIVisualEffectView(CGRect frame, UIBlurEffectStyle style) : UIView(frame), style_(style) {
    setUserInteractionEnabled(false);
}

ViewContent UIVisualEffectView::makeContent() const {
    return BlurContent{.radius = lightRadius, .veil = UIColor::white().withAlpha(lightVeil)};
}

}  // namespace ostrel
