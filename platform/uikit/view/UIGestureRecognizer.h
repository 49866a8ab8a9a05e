#pragma once

#include "platform/uikit/events/UIEvent.h"

#include <functional>
#include <memory>
#include <vector>

namespace ostrel {

enum class UIGestureRecognizerState { possible, began, changed, ended, cancelled, failed };

/// Watches the touches of a view and its subviews for one gesture at a time. The window tells each touch to
/// the recognisers of the view hit and of its ancestors, the deepest first, and then to the view. The first
/// recogniser that begins (a tap: ends) wins the touch: the view gets `touchesCancelled` once, the other
/// recognisers fail. A tap recogniser of an ancestor of an enabled control does not see the control's
/// touches. Main thread.
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
    /// Asked before the gesture begins; false makes the gesture fail for this touch.
    std::function<bool(UIGestureRecognizer&)> shouldBegin;

    // Called by the window. A recogniser that failed for a touch gets no more calls for it.
    virtual void touchesBegan(const UITouch& touch) = 0;
    virtual void touchesMoved(const UITouch& touch) = 0;
    virtual void touchesEnded(const UITouch& touch) = 0;
    virtual void touchesCancelled(const UITouch& touch);
    virtual void reset();

protected:
    /// Moves to `state` and runs the action for began, changed, ended and cancelled.
    void setState(UIGestureRecognizerState state);
    /// Whether gestures consider `touch`: a finger or the primary button.
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

/// A finger or pointer that goes up within 10 points of where it went down, before another gesture has begun.
class UITapGestureRecognizer final : public UIGestureRecognizer {
public:
    using UIGestureRecognizer::UIGestureRecognizer;
    static constexpr CGFloat allowableMovement = 10;
    void touchesBegan(const UITouch& touch) override;
    void touchesMoved(const UITouch& touch) override;
    void touchesEnded(const UITouch& touch) override;
};

/// Begins when a touch has stayed within `allowableMovement` points (10) for `minimumPressDuration` seconds
/// (0.5). Reports `changed` when the touch moves after that.
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
    /// Only touches that begin within this distance of the view's left edge count, in points; 0: all touches.
    CGFloat edgeWidth = 0;
    bool allowsPointer = true;  ///< whether a pressed mouse drags like a finger

    /// Points since the touch began, less the threshold.
    CGPoint translation() const { return translation_; }
    /// Points a second, averaged over the last 0.1 seconds.
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
