#include "platform/uikit/view/UIGestureRecognizer.h"

#include "platform/foundation/runloop/RunLoop.h"
#include "platform/uikit/view/UIWindow.h"

#include <cmath>

namespace ostrel {

namespace {

constexpr double velocityWindow = 0.1;  // seconds

CGFloat distance(CGPoint a, CGPoint b) { return std::hypot(a.x - b.x, a.y - b.y); }

}  // namespace

CGPoint UITouch::locationInView(const UIView& target) const {
    const UIWindow* const window = target.window();
    return window ? window->convertPointToView(location, &target) : location;
}

void UIGestureRecognizer::setEnabled(bool enabled) {
    if (enabled_ == enabled) return;
    enabled_ = enabled;
    if (enabled) return;
    UITouch touch;
    touch.phase = UITouchPhase::cancelled;
    touch.location = location_;
    touchesCancelled(touch);
}

CGPoint UIGestureRecognizer::locationInView(const UIView* view) const {
    const UIWindow* const window = view ? view->window() : nullptr;
    return window ? window->convertPointToView(location_, view) : location_;
}

void UIGestureRecognizer::touchesCancelled(const UITouch&) {
    switch (state_) {
    case UIGestureRecognizerState::possible: setState(UIGestureRecognizerState::failed); break;
    case UIGestureRecognizerState::began:
    case UIGestureRecognizerState::changed: setState(UIGestureRecognizerState::cancelled); break;
    default: break;
    }
}

void UIGestureRecognizer::reset() { state_ = UIGestureRecognizerState::possible; }

void UIGestureRecognizer::setState(UIGestureRecognizerState state) {
    using State = UIGestureRecognizerState;
    const bool begins = state_ == State::possible && (state == State::began || state == State::ended);
    const auto kept = weak_from_this().lock();
    if (begins && shouldBegin && !shouldBegin(*this)) state = State::failed;
    state_ = state;
    if (state == State::possible || state == State::failed) return;
    if (begins && view_ && view_->window()) view_->window()->gestureDidBegin(*this);
    if (action_) action_(*this);
}

void UITapGestureRecognizer::touchesBegan(const UITouch& touch) {
    location_ = touch.location;
    if (!isPrimary(touch)) setState(UIGestureRecognizerState::failed);
}

void UITapGestureRecognizer::touchesMoved(const UITouch& touch) {
    if (distance(touch.location, touch.startLocation) > allowableMovement) setState(UIGestureRecognizerState::failed);
}

void UITapGestureRecognizer::touchesEnded(const UITouch& touch) {
    touchesMoved(touch);
    if (state() != UIGestureRecognizerState::possible) return;
    location_ = touch.location;
    setState(UIGestureRecognizerState::ended);
}

UILongPressGestureRecognizer::~UILongPressGestureRecognizer() {
    *alive_ = false;
    if (timer_ && RunLoop::hasMain()) RunLoop::main().cancel(timer_);
}

void UILongPressGestureRecognizer::touchesBegan(const UITouch& touch) {
    location_ = touch.location;
    if (!isPrimary(touch)) return setState(UIGestureRecognizerState::failed);
    // The press begins at once, so that this recogniser wins the touch before another recogniser or the view handles
    // it.
    if (!(minimumPressDuration > 0)) return setState(UIGestureRecognizerState::began);
    timer_ = RunLoop::main().performAfter(minimumPressDuration, [this, alive = alive_] {
        if (!*alive) return;
        timer_ = 0;
        if (state() == UIGestureRecognizerState::possible) setState(UIGestureRecognizerState::began);
    });
}

void UILongPressGestureRecognizer::touchesMoved(const UITouch& touch) {
    location_ = touch.location;
    if (state() != UIGestureRecognizerState::possible) {
        setState(UIGestureRecognizerState::changed);
    } else if (distance(touch.location, touch.startLocation) > allowableMovement) {
        setState(UIGestureRecognizerState::failed);
    }
}

void UILongPressGestureRecognizer::touchesEnded(const UITouch& touch) {
    location_ = touch.location;
    setState(state() == UIGestureRecognizerState::possible ? UIGestureRecognizerState::failed
                                                           : UIGestureRecognizerState::ended);
}

void UILongPressGestureRecognizer::touchesCancelled(const UITouch& touch) {
    if (timer_) RunLoop::main().cancel(std::exchange(timer_, 0));
    UIGestureRecognizer::touchesCancelled(touch);
}

void UILongPressGestureRecognizer::reset() {
    if (timer_) RunLoop::main().cancel(std::exchange(timer_, 0));
    UIGestureRecognizer::reset();
}

void UIPanGestureRecognizer::track(const UITouch& touch) {
    location_ = touch.location;
    translation_ = {touch.location.x - origin_.x, touch.location.y - origin_.y};
    samples_.push_back({touch.location, touch.timestamp});
    std::erase_if(samples_, [&](const Sample& sample) { return sample.time < touch.timestamp - velocityWindow; });
    const Sample& first = samples_.front();
    const double seconds = touch.timestamp - first.time;
    velocity_ = seconds > 0 ? CGPoint{(touch.location.x - first.point.x) / seconds,
                                      (touch.location.y - first.point.y) / seconds}
                            : CGPoint{};
}

void UIPanGestureRecognizer::touchesBegan(const UITouch& touch) {
    const bool isNearEdge =
        edgeWidth <= 0 || !view() || touch.locationInView(*view()).x - view()->bounds().minX() < edgeWidth;
    if (!isPrimary(touch) || !isNearEdge || (touch.type == UITouchType::pointer && !allowsPointer)) {
        return setState(UIGestureRecognizerState::failed);
    }
    samples_.clear();
    origin_ = touch.location;
    track(touch);
}

void UIPanGestureRecognizer::touchesMoved(const UITouch& touch) {
    if (state() != UIGestureRecognizerState::possible) {
        track(touch);
        return setState(UIGestureRecognizerState::changed);
    }
    const CGFloat dx = touch.location.x - touch.startLocation.x, dy = touch.location.y - touch.startLocation.y;
    const bool crosses = std::abs(dx) > std::abs(dy);
    const CGFloat along = axis == Axis::any ? std::hypot(dx, dy) : std::abs(axis == Axis::horizontal ? dx : dy);
    const CGFloat across = axis == Axis::any ? 0 : std::abs(axis == Axis::horizontal ? dy : dx);
    const bool isOnAxis = axis == Axis::any || crosses == (axis == Axis::horizontal);
    if (along >= threshold && isOnAxis) {
        // The translation starts at 0: the dragged content must not jump by the step that began the drag.
        const CGFloat length = std::hypot(dx, dy);
        const CGPoint step = axis == Axis::any          ? CGPoint{dx / length * threshold, dy / length * threshold}
                             : axis == Axis::horizontal ? CGPoint{std::copysign(threshold, dx), 0}
                                                        : CGPoint{0, std::copysign(threshold, dy)};
        origin_ = {touch.startLocation.x + step.x, touch.startLocation.y + step.y};
        track(touch);
        setState(UIGestureRecognizerState::began);
    } else {
        track(touch);
        if (across >= threshold && !isOnAxis) setState(UIGestureRecognizerState::failed);
    }
}

void UIPanGestureRecognizer::touchesEnded(const UITouch& touch) {
    if (state() == UIGestureRecognizerState::possible) return setState(UIGestureRecognizerState::failed);
    track(touch);
    setState(UIGestureRecognizerState::ended);
}

void UIPanGestureRecognizer::reset() {
    samples_.clear();
    UIGestureRecognizer::reset();
}

}  // namespace ostrel
