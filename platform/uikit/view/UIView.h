#pragma once

#include "platform/foundation/values/Object.h"
#include "platform/uikit/events/UIResponder.h"
#include "platform/uikit/mounting/Mounting.h"
#include "platform/uikit/view/CAKeyframeAnimation.h"
#include "platform/uikit/view/NSLayoutConstraint.h"

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace ostrel {

class UIGestureRecognizer;
class UIViewController;
class UIWindow;

enum UIViewAutoresizing : unsigned {
    autoresizingNone = 0,
    flexibleLeftMargin = 1,
    flexibleWidth = 2,
    flexibleRightMargin = 4,
    flexibleTopMargin = 8,
    flexibleHeight = 16,
    flexibleBottomMargin = 32,
};

enum class UIViewAnimationCurve { easeInOut, easeOut, linear, spring };

/// A rectangle of the screen with subviews. A plain object: setters change state and mark the view; the window sends one
/// batch of changes per turn to its backend. Held by its superview and whoever keeps it. Main thread only.
class UIView : public UIResponder, public std::enable_shared_from_this<UIView> {
public:
    explicit UIView(CGRect frame = {});
    ~UIView() override;
    UIView(const UIView&) = delete;
    UIView& operator=(const UIView&) = delete;

    ViewTag tag() const { return tag_; }

    // Geometry. `frame` is in the superview's coordinates and ignores the transform.
    const CGRect& frame() const { return state_.frame; }
    /// Lays subviews out again when the size changed (autoresizing, then `layoutSubviews` before the next flush).
    virtual void setFrame(const CGRect& frame);
    CGRect bounds() const { return {state_.boundsOrigin, state_.frame.size}; }
    virtual void setBoundsOrigin(CGPoint origin);
    CGPoint center() const { return {state_.frame.midX(), state_.frame.midY()}; }
    void setCenter(CGPoint center);
    void setTransform(const CGAffineTransform& transform);
    const CGAffineTransform& transform() const { return state_.transform; }
    unsigned autoresizingMask() const { return autoresizingMask_; }
    void setAutoresizingMask(unsigned mask) { autoresizingMask_ = mask; }
    /// Converts from this view's coordinates to `view`'s (null: the window's).
    CGPoint convertPointToView(CGPoint point, const UIView* view) const;
    CGRect convertRectToView(const CGRect& rect, const UIView* view) const;
    virtual CGSize sizeThatFits(CGSize size) const;
    void sizeToFit();
    /// The part of the bounds that neither an ancestor nor the window clips away; empty outside of a window. Transforms
    /// are left out.
    CGRect visibleRect() const;

    // Layer
    UIColor backgroundColor() const { return state_.backgroundColor; }
    void setBackgroundColor(UIColor color);
    double alpha() const { return state_.alpha; }
    void setAlpha(double alpha);
    bool isHidden() const { return state_.hidden; }
    void setHidden(bool hidden);
    bool clipsToBounds() const { return state_.clipsToBounds; }
    void setClipsToBounds(bool clips);
    CGFloat cornerRadius() const { return state_.cornerRadius; }
    void setCornerRadius(CGFloat radius);
    void setRoundedCorners(bool top, bool bottom);
    CGFloat borderWidth() const { return state_.borderWidth; }
    void setBorderWidth(CGFloat width);
    UIColor borderColor() const { return state_.borderColor; }
    void setBorderColor(UIColor color);
    void setShadow(const LayerShadow& shadow);
    /// Painted as one picture with its subviews: for rows, bars, sheets that move or fade as a whole.
    void setSurface(bool isSurface);
    const ViewState& state() const { return state_; }
    /// Runs the animation from now on, in place of the one of that key; it moves only while the view is in sight of a
    /// window. Where motion is reduced, the view stands at its first value instead. Of several with the same key path
    /// the one added last shows. Nothing with a key path that is not known, or without finite values.
    void addAnimationForKey(const CAKeyframeAnimation& animation, const std::string& key);
    void removeAnimationForKey(const std::string& key);
    void removeAllAnimations();
    /// Null when there is none of that key (any more).
    const CAKeyframeAnimation* animationForKey(const std::string& key) const;

    // Tree, back to front
    UIView* superview() const { return superview_; }
    const std::vector<std::shared_ptr<UIView>>& subviews() const { return subviews_; }
    void addSubview(const std::shared_ptr<UIView>& view);
    void insertSubview(const std::shared_ptr<UIView>& view, std::size_t index);
    void bringSubviewToFront(const std::shared_ptr<UIView>& view);
    void sendSubviewToBack(const std::shared_ptr<UIView>& view);
    void removeFromSuperview();
    bool isDescendantOfView(const UIView& view) const;
    /// The window this view is in; null when it is in none.
    UIWindow* window() const { return window_; }
    /// Called after the view came into a window or left it (then null).
    virtual void didMoveToWindow() {}
    virtual void didMoveToSuperview() {}

    // Layout
    void setNeedsLayout();
    void layoutIfNeeded();
    virtual void layoutSubviews() {}
    void addConstraint(const NSLayoutConstraint& constraint);
    const std::vector<NSLayoutConstraint>& constraints() const { return constraints_; }
    /// The height that the constraints of this view's height ask for: the largest of them; none without constraints.
    std::optional<CGFloat> constrainedHeight() const;

    // Events
    bool isUserInteractionEnabled() const { return userInteractionEnabled_; }
    void setUserInteractionEnabled(bool enabled);
    /// The deepest visible, enabled view at the point (in this view's bounds); views that are hidden, have an alpha of
    /// 0.01 or less, or take no touches are passed over with their subviews.
    virtual UIView* hitTest(CGPoint point);
    virtual bool pointInside(CGPoint point) const { return bounds().contains(point); }
    void addGestureRecognizer(const std::shared_ptr<UIGestureRecognizer>& recognizer);
    void removeGestureRecognizer(const std::shared_ptr<UIGestureRecognizer>& recognizer);
    const std::vector<std::shared_ptr<UIGestureRecognizer>>& gestureRecognizers() const {
        return recognizers_;
    }
    UIResponder* nextResponder() const override;
    bool becomeFirstResponder() override;
    bool resignFirstResponder() override;
    bool isFirstResponder() const override;
    /// Tab moves the focus through the views that answer true, in reading order of the tree.
    virtual bool canBecomeFocused() const { return false; }
    /// Keyboard focus came or went; the default draws a ring around the view.
    virtual void focusDidChange(bool focused, bool byKeyboard);
    /// The view became the first responder or ceased to be it; told by the window.
    virtual void firstResponderDidChange(bool /*isFirst*/) {}
    /// Scrolls by wheel or trackpad; true when something moved. Asked from the deepest view under the pointer upwards.
    virtual bool scrollBy(const UIScrollEvent& /*event*/) { return false; }
    /// The pointer came over the view or one of its subviews, or left it.
    virtual void hoverDidChange(bool /*inside*/) {}
    /// The controller whose `view` this is; null for others.
    UIViewController* viewController() const { return viewController_; }
    void setViewController(UIViewController* controller) { viewController_ = controller; }

    // Accessibility and pointer
    void setAccessibility(AccessibilityRole role, std::string label);
    const AccessibilityState& accessibility() const { return state_.accessibility; }
    void setCursor(CursorShape cursor);

    /// Runs `changes`; frames, alphas, transforms and background colours set in it go to their new values in `duration`
    /// seconds on screen (the model has them at once). `completion` runs when the animation ended, also when it was cut
    /// short; at once (in a later turn) when motion is reduced or the view is in no window.
    static void animate(double duration, const std::function<void()>& changes,
                        std::function<void(bool finished)> completion = {},
                        UIViewAnimationCurve curve = UIViewAnimationCurve::easeInOut);
    static bool isReduceMotionEnabled();
    static void setReduceMotionEnabled(bool reduce);

protected:
    /// What this view itself shows; asked at flush when `setNeedsDisplay` or the size has changed it.
    virtual ViewContent makeContent() const { return {}; }
    void setNeedsDisplay();
    /// What a kind of view says of itself; does nothing once `setAccessibility` was called.
    void setDefaultAccessibility(AccessibilityRole role, const std::string& label);
    void setAccessibilityDisabled(bool disabled);
    /// From now on `visibleRectDidChange` is called, before a flush, whenever `visibleRect` is another one.
    void setObservesVisibleRect() { observesVisibleRect_ = true; }
    virtual void visibleRectDidChange() {}
    /// Called when the size of a subview changed, so that a row can tell its table.
    virtual void subviewSizeDidChange(UIView& subview);

private:
    friend class UIWindow;
    friend class ViewAnimator;
    void moveToWindow(UIWindow* window);
    void markChanged(std::uint32_t changes);
    void markChildrenChanged();
    void resizeSubviews(CGSize oldSize);
    void layoutNow();
    void updateRotation();
    CGPoint pointToSuperview(CGPoint point) const;
    CGPoint pointFromSuperview(CGPoint point) const;
    template <class T>
    void changeState(T& field, const T& value, std::uint32_t changes);

    const ViewTag tag_;
    ViewState state_;
    std::uint32_t pendingChanges_ = changedAll;
    bool needsLayout_ = true;
    bool needsContent_ = true;
    bool inDirtyList_ = false;
    bool childrenChanged_ = false;
    bool accessibilityIsExplicit_ = false;
    bool userInteractionEnabled_ = true;
    bool observesVisibleRect_ = false;
    unsigned autoresizingMask_ = autoresizingNone;
    UIView* superview_ = nullptr;
    UIWindow* window_ = nullptr;
    UIViewController* viewController_ = nullptr;
    std::vector<std::shared_ptr<UIView>> subviews_;
    std::vector<NSLayoutConstraint> constraints_;
    std::vector<std::shared_ptr<UIGestureRecognizer>> recognizers_;
    std::shared_ptr<UIView> focusRing_;
    struct Animation;
    std::vector<Animation> animations_;  ///< of the layer, in the order added
};

}  // namespace ostrel
