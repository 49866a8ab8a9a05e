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
class UIWindow;
class ViewOwner;

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

/// A rectangle of the screen with subviews. Setters change the view's state and mark the view; the window
/// sends one batch of changes per turn to its backend. Owned by its superview and by whoever else keeps it.
/// Main thread only.
class UIView : public UIResponder, public std::enable_shared_from_this<UIView> {
public:
    explicit UIView(CGRect frame = {});
    ~UIView() override;
    UIView(const UIView&) = delete;
    UIView& operator=(const UIView&) = delete;

    ViewTag tag() const { return tag_; }

    // Geometry. `frame` is in the superview's coordinates and ignores the transform.
    const CGRect& frame() const { return state_.frame; }
    /// When the size changes, subviews are laid out again: autoresizing at once, `layoutSubviews` before the
    /// next flush.
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
    /// The part of the bounds that neither an ancestor nor the window clips; empty outside of a window.
    /// Ignores transforms.
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
    /// A surface is painted as one picture with its subviews: for rows, bars and sheets that move or fade as
    /// a whole.
    void setSurface(bool isSurface);
    const ViewState& state() const { return state_; }
    /// Starts the animation, in place of the one with this key. The backend animates only while the view is
    /// visible. With reduced motion the view shows the animation's first value. Of several animations of one
    /// key path the last one added is shown. An animation with an unknown key path, or without finite values,
    /// is not added.
    void addAnimationForKey(const CAKeyframeAnimation& animation, const std::string& key);
    void removeAnimationForKey(const std::string& key);
    void removeAllAnimations();
    /// Null when the view has no animation with this key (any more).
    const CAKeyframeAnimation* animationForKey(const std::string& key) const;

    // Tree; subviews are in z-order, the first at the back
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
    /// Called after the view came into a window or left it; `window()` is then null.
    virtual void didMoveToWindow() {}
    virtual void didMoveToSuperview() {}

    // Layout
    void setNeedsLayout();
    void layoutIfNeeded();
    virtual void layoutSubviews() {}
    void addConstraint(const NSLayoutConstraint& constraint);
    const std::vector<NSLayoutConstraint>& constraints() const { return constraints_; }
    /// The largest height that a constraint of this view's height demands; absent without constraints.
    std::optional<CGFloat> constrainedHeight() const;

    // Events
    bool isUserInteractionEnabled() const { return userInteractionEnabled_; }
    void setUserInteractionEnabled(bool enabled);
    /// The deepest view at the point (in this view's bounds). Views that are hidden, have an alpha of 0.01 or
    /// less, or have user interaction disabled are skipped with their subviews.
    virtual UIView* hitTest(CGPoint point);
    virtual bool pointInside(CGPoint point) const { return bounds().contains(point); }
    void addGestureRecognizer(const std::shared_ptr<UIGestureRecognizer>& recognizer);
    void removeGestureRecognizer(const std::shared_ptr<UIGestureRecognizer>& recognizer);
    const std::vector<std::shared_ptr<UIGestureRecognizer>>& gestureRecognizers() const { return recognizers_; }
    UIResponder* nextResponder() const override;
    bool becomeFirstResponder() override;
    bool resignFirstResponder() override;
    bool isFirstResponder() const override;
    /// Whether Tab moves the focus to this view; the order of the focus is that of the tree.
    virtual bool canBecomeFocused() const { return false; }
    /// The view got or lost the focus; the default draws a ring around a view that the keyboard has focused.
    virtual void focusDidChange(bool focused, bool byKeyboard);
    /// The view became the first responder or is no longer; called by the window.
    virtual void firstResponderDidChange(bool /*isFirst*/) {}
    /// Scrolls by wheel or trackpad; true when content moved. The window asks the deepest view under the
    /// pointer, then its ancestors.
    virtual bool scrollBy(const UIScrollEvent& /*event*/) { return false; }
    /// The pointer came over the view or one of its subviews, or left them.
    virtual void hoverDidChange(bool /*inside*/) {}
    /// The controller whose `view` this is; null for other views. Not owned: the owner resets it when it
    /// goes.
    ViewOwner* owner() const { return owner_; }
    void setOwner(ViewOwner* owner) { owner_ = owner; }

    // Accessibility and pointer
    void setAccessibility(AccessibilityRole role, std::string label);
    const AccessibilityState& accessibility() const { return state_.accessibility; }
    void setCursor(CursorShape cursor);

    /// Runs `changes`. Frames, alphas, transforms and background colours set in it have their new values at
    /// once; the screen shows the transition for `duration` seconds. `completion` runs when the animation has
    /// ended or was interrupted; in the next turn when motion is reduced or the view is in no window.
    static void animate(double duration, const std::function<void()>& changes,
                        std::function<void(bool finished)> completion = {},
                        UIViewAnimationCurve curve = UIViewAnimationCurve::easeInOut);
    static bool isReduceMotionEnabled();
    static void setReduceMotionEnabled(bool reduce);

protected:
    /// The content of this view itself. Called by a flush after `setNeedsDisplay` or a change of the size.
    virtual ViewContent makeContent() const { return {}; }
    void setNeedsDisplay();
    /// The role and label of a class of views; ignored once `setAccessibility` was called.
    void setDefaultAccessibility(AccessibilityRole role, const std::string& label);
    void setAccessibilityDisabled(bool disabled);
    /// From now on `visibleRectDidChange` is called before a flush whenever `visibleRect` has changed.
    void setObservesVisibleRect() { observesVisibleRect_ = true; }
    virtual void visibleRectDidChange() {}
    /// Called when the size of a subview has changed, so that a row can tell its table.
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
    ViewOwner* owner_ = nullptr;
    std::vector<std::shared_ptr<UIView>> subviews_;
    std::vector<NSLayoutConstraint> constraints_;
    std::vector<std::shared_ptr<UIGestureRecognizer>> recognizers_;
    std::shared_ptr<UIView> focusRing_;
    struct Animation;
    std::vector<Animation> animations_;  ///< of the layer, in the order added
};

}  // namespace ostrel
