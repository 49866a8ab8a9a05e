#pragma once

#include "platform/uikit/events/UIEvent.h"

#include <functional>
#include <memory>
#include <vector>

namespace ostrel {

enum class UIGestureRecognizerState { possible, began, changed, ended, cancelled, failed };

/// Watches the touches of a view and its subviews for one gesture at a time. For each touch the recognisers of the view
/// hit and of its ancestors are told before the view, the deepest first. The first that begins (a tap: ends) has the
/// touch: the view gets `touchesCancelled` once, the other recognisers fail. Taps above an enabled control under the
/// finger do not count: the control has them. Main thread.
class UIGestureRecognizer : public std::enable_shared_from_this<UIGestureRecognizer> {
public:
    using Action = std::function<void(UIGestureRecognizer&)>;
    explicit UIGestureRecognizer(Action action) : action_(std::move(action)) {}
    virtual ~UIGestureRecognizer() = default;

    UIGestureRecognizerState state() const { return state_; }
    UIView* view() const { return view_; }
    bool isEnabled() const { return enabled_; }
    void setEnabled(bool enabled);
    CGPoint locationInView(const UIView* view) const;
    /// Asked before the gesture begins; false makes it fail for this touch.
    std::function<bool(UIGestureRecognizer&)> shouldBegin;

    // Called by the window. One that failed for a touch is told no more of it.
    virtual void touchesBegan(const UITouch& touch) = 0;
    virtual void touchesMoved(const UITouch& touch) = 0;
    virtual void touchesEnded(const UITouch& touch) = 0;
    virtual void touchesCancelled(const UITouch& touch);
    virtual void reset();

protected:
    /// Moves to `state` and runs the action for began, changed, ended and cancelled.
    void setState(UIGestureRecognizerState state);
    /// Whether `touch` is one that gestures are made of: a finger or the primary button.
    static bool isPrimary(const UITouch& touch) { return touch.button == UIButtonMask::primary; }
    CGPoint location_;  ///< in the window

private:
    friend class UIView;
    friend class UIWindow;
    UIView* view_ = nullptr;
    bool enabled_ = true;
    UIGestureRecognizerState state_ = UIGestureRecognizerState::possible;
    Action action_;
};

/// A finger or pointer that goes up where it went down: within 10 points, without a gesture beginning meanwhile.
class UITapGestureRecognizer final : public UIGestureRecognizer {
public:
    using UIGestureRecognizer::UIGestureRecognizer;
    static constexpr CGFloat allowableMovement = 10;
    void touchesBegan(const UITouch& touch) override;
    void touchesMoved(const UITouch& touch) override;
    void touchesEnded(const UITouch& touch) override;
};

/// Begins after `minimumPressDuration` seconds (0.5) within `allowableMovement` points (10); changed while it moves.
class UILongPressGestureRecognizer final : public UIGestureRecognizer {
public:
    using UIGestureRecognizer::UIGestureRecognizer;
    ~UILongPressGestureRecognizer() override;
    double minimumPressDuration = 0.5;
    CGFloat allowableMovement = 10;
    void touchesBegan(const UITouch& touch) override;
    void touchesMoved(const UITouch& touch) override;
    void touchesEnded(const UITouch& touch) override;
    void touchesCancelled(const UITouch& touch) override;
    void reset() override;

private:
    std::uint64_t timer_ = 0;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

/// Begins when a touch has moved `threshold` points in an allowed direction.
class UIPanGestureRecognizer final : public UIGestureRecognizer {
public:
    enum class Axis { any, horizontal, vertical };
    using UIGestureRecognizer::UIGestureRecognizer;
    Axis axis = Axis::any;
    CGFloat threshold = 8;
    /// Only touches that start this near to the left edge of the view count; 0: all.
    CGFloat edgeWidth = 0;
    bool allowsPointer = true;  ///< whether a pressed mouse drags like a finger

    /// Since the touch began, less the threshold's step, points.
    CGPoint translation() const { return translation_; }
    /// Points a second over the last 0.1 seconds.
    CGPoint velocity() const { return velocity_; }
    void touchesBegan(const UITouch& touch) override;
    void touchesMoved(const UITouch& touch) override;
    void touchesEnded(const UITouch& touch) override;
    void reset() override;

private:
    void track(const UITouch& touch);
    struct Sample {
        CGPoint point;
        double time;
    };
    std::vector<Sample> samples_;
    CGPoint origin_, translation_, velocity_;
};

}  // namespace ostrel
