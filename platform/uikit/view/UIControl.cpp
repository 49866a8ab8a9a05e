#include "platform/uikit/view/UIControl.h"

#include "platform/uikit/view/UIWindow.h"

#include <algorithm>

namespace ostrel {

void UIControl::setEnabled(bool enabled) {
    if (enabled_ == enabled) return;
    enabled_ = enabled;
    setAccessibilityDisabled(!enabled);
    if (!enabled) {
        tracking_ = false;
        highlighted_ = false;
        if (window() && window()->focusedView() == this) window()->setFocusedView(nullptr, false);
    }
    controlStateDidChange();
}

void UIControl::setSelected(bool selected) {
    if (selected_ == selected) return;
    selected_ = selected;
    controlStateDidChange();
}

void UIControl::setHighlighted(bool highlighted) {
    if (highlighted_ == highlighted) return;
    highlighted_ = highlighted;
    controlStateDidChange();
}

UIControlState UIControl::controlState() const {
    if (!enabled_) return UIControlState::disabled;
    if (highlighted_) return UIControlState::highlighted;
    return selected_ ? UIControlState::selected : UIControlState::normal;
}

void UIControl::addTarget(std::function<void()> action, UIControlEvent event) {
    targets_.emplace_back(event, std::move(action));
}

bool UIControl::hasTarget(UIControlEvent event) const {
    return std::any_of(targets_.begin(), targets_.end(), [event](const auto& target) { return target.first == event; });
}

void UIControl::sendActions(UIControlEvent event) {
    // An action may change the targets or release the control.
    const auto targets = targets_;
    for (const auto& [kind, action] : targets) {
        if (kind == event && action) action();
    }
}

bool UIControl::isTouchInside(const UITouch& touch) const {
    const CGFloat slop = touch.type == UITouchType::direct ? touchSlop : 0;
    const CGPoint point = touch.locationInView(*this);
    return pointInside(point) || bounds().insetBy(UIEdgeInsets{-slop, -slop, -slop, -slop}).contains(point);
}

void UIControl::touchesBegan(const UITouch& touch) {
    if (touch.button != UIButtonMask::primary) return UIView::touchesBegan(touch);
    if (!enabled_) return;
    tracking_ = true;
    setHighlighted(true);
    sendActions(UIControlEvent::touchDown);
}

void UIControl::touchesMoved(const UITouch& touch) {
    if (touch.button != UIButtonMask::primary) return UIView::touchesMoved(touch);
    if (tracking_) setHighlighted(isTouchInside(touch));
}

void UIControl::touchesEnded(const UITouch& touch) {
    if (touch.button != UIButtonMask::primary) return UIView::touchesEnded(touch);
    if (!std::exchange(tracking_, false)) return;
    const bool inside = isTouchInside(touch);
    setHighlighted(false);
    sendActions(inside ? UIControlEvent::touchUpInside : UIControlEvent::touchUpOutside);
}

void UIControl::touchesCancelled(const UITouch& touch) {
    if (touch.button != UIButtonMask::primary) return UIView::touchesCancelled(touch);
    if (!std::exchange(tracking_, false)) return;
    setHighlighted(false);
    sendActions(UIControlEvent::touchCancel);
}

bool UIControl::pressesBegan(const UIPress& press) {
    const bool presses = press.key.code == UIKeyCode::enter || press.key.code == UIKeyCode::space;
    constexpr unsigned others = modifierControl | modifierAlternate | modifierCommand;
    if (!presses || !enabled_ || !hasTarget(UIControlEvent::touchUpInside) || (press.key.modifiers & others)) {
        return UIView::pressesBegan(press);
    }
    // A key that is held down presses only once.
    if (!press.isRepeat) sendActions(UIControlEvent::touchUpInside);
    return true;
}

}  // namespace ostrel
