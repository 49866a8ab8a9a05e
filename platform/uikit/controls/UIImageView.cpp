#include "platform/uikit/controls/UIImageView.h"

namespace ostrel {

UIImageView::UIImageView(CGRect frame) : UIView(frame) { setUserInteractionEnabled(false); }

void UIImageView::setImage(std::shared_ptr<const UIImage> image) {
    if (image == content_.image) return;
    content_.image = std::move(image);
    setDefaultAccessibility(content_.image ? AccessibilityRole::image : AccessibilityRole::none, {});
    setNeedsDisplay();
}

void UIImageView::setContentMode(UIViewContentMode mode) {
    if (mode == content_.contentMode) return;
    content_.contentMode = mode;
    setNeedsDisplay();
}

void UIImageView::setTintColor(UIColor color) {
    if (color == content_.tint) return;
    content_.tint = color;
    setNeedsDisplay();
}

CGSize UIImageView::sizeThatFits(CGSize) const { return content_.image ? content_.image->size() : CGSize{}; }

ViewContent UIImageView::makeContent() const {
    if (!content_.image) return {};
    return content_;
}

}  // namespace ostrel
