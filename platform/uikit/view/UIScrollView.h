#pragma once

#include "platform/uikit/view/ScrollMotion.h"
#include "platform/uikit/view/UIGestureRecognizer.h"
#include "platform/uikit/view/UIView.h"

namespace ostrel {

class UIScrollView;

class UIScrollViewDelegate {
public:
    virtual ~UIScrollViewDelegate() = default;
    virtual void scrollViewDidScroll(UIScrollView&) {}
    virtual void scrollViewWillBeginDragging(UIScrollView&) {}
    virtual void scrollViewDidEndDragging(UIScrollView&, bool /*willDecelerate*/) {}
    virtual void scrollViewDidEndDecelerating(UIScrollView&) {}
};

/// A viewport onto larger content: `contentOffset` is the point of the content at the view's upper left corner. Scrolls
/// vertically only. A finger drags the content, and except on the Mac idiom the pointer does too, with momentum and a
/// rubber band at the ends; wheel, trackpad, keys and the scroll bar scroll too. Offsets have double precision; user
/// scrolling ends at multiples of 1/64 point. A touch during a fling only stops the content. The motion follows the
/// window's frames; a scroll view at rest requests no frames.
class UIScrollView : public UIView {
public:
    explicit UIScrollView(CGRect frame = {});
    ~UIScrollView() override;
    void initialise();

    CGPoint contentOffset() const { return state().boundsOrigin; }
    /// Takes any offset, also beyond the limits. Without animation it ends the motion; a drag continues from
    /// the new offset.
    virtual void setContentOffset(CGPoint offset, bool animated = false);
    CGSize contentSize() const { return contentSize_; }
    void setContentSize(CGSize size);
    UIEdgeInsets contentInset() const { return contentInset_; }
    /// Content that is scrolled to the top stays at the top.
    void setContentInset(UIEdgeInsets insets);
    bool isScrollEnabled() const { return scrollEnabled_; }
    void setScrollEnabled(bool enabled);
    bool scrollsToTop() const { return scrollsToTop_; }
    void setScrollsToTop(bool scrolls) { scrollsToTop_ = scrolls; }
    void setShowsVerticalScrollIndicator(bool shows);
    bool isDragging() const { return dragging_; }
    bool isDecelerating() const { return decelerating_; }
    bool isTracking() const { return tracking_; }
    void setScrollViewDelegate(std::shared_ptr<UIScrollViewDelegate> delegate) { scrollDelegate_ = delegate; }
    /// The limits of user scrolling.
    CGFloat minimumOffsetY() const;
    CGFloat maximumOffsetY() const;
    void scrollRectToVisible(const CGRect& rect, bool animated);
    /// Scrolls by wheel or trackpad; false when the content cannot move that way. A wheel's notches are
    /// smoothed, a trackpad's pixels are applied at once.
    bool scrollBy(const UIScrollEvent& event) override;
    void stopScrolling();

    void setFrame(const CGRect& frame) override;
    UIView* hitTest(CGPoint point) override;
    void didMoveToWindow() override;
    void touchesBegan(const UITouch& touch) override;
    void touchesEnded(const UITouch& touch) override;
    void touchesCancelled(const UITouch& touch) override;
    void hoverDidChange(bool inside) override;
    /// Page Up and Down, the space bar, Home, End, Up and Down; used when the content can move that way.
    bool pressesBegan(const UIPress& press) override;

protected:
    /// Called after every change of the offset, also by the program. An override calls the base class first.
    virtual void contentOffsetDidChange();
    virtual void willBeginDragging() {}
    virtual void didEndDragging(bool /*willDecelerate*/) {}
    /// Extra inset at the top during a refresh, in points.
    virtual CGFloat extraTopInset() const { return 0; }
    /// Whether content that fits into the viewport can be dragged against the rubber band.
    virtual bool alwaysBounces() const { return false; }
    const std::shared_ptr<UIPanGestureRecognizer>& panRecognizer() const { return pan_; }
    /// Points a second, positive towards the end of the content; 0 while at rest.
    CGFloat scrollVelocity() const { return velocity_; }
    /// Whether neither a finger nor motion changes the offset.
    bool isAtRest() const;
    /// Adds `dy` to the offset because the content has moved by `dy`: the user sees no change, and a drag or
    /// a motion continues. `contentOffsetDidChange` is not called.
    void shiftContentOffset(CGFloat dy);
    /// Moves the content back within the limits when it is at rest outside of them.
    void settle(bool animated);

private:
    void handlePan(UIPanGestureRecognizer& pan);
    void endDrag(CGFloat velocity);
    bool moveTo(CGFloat y);
    void scrollTo(CGFloat y, ScrollMotion::Goal goal);
    void startMotion();
    bool step(double time);
    void motionEnded();
    void showIndicator();
    void placeIndicator();
    void fadeIndicatorAfter(double delay);
    bool canScroll() const;
    bool leavesDragToOuter() const;

    CGSize contentSize_;
    UIEdgeInsets contentInset_;
    bool scrollEnabled_ = true, scrollsToTop_ = true, showsIndicator_ = true;
    bool dragging_ = false, decelerating_ = false, tracking_ = false;
    std::shared_ptr<UIPanGestureRecognizer> pan_;
    std::weak_ptr<UIScrollViewDelegate> scrollDelegate_;
    CGFloat velocity_ = 0;

    ScrollMotion motion_;
    std::uint64_t motionNumber_ = 0;  // tells a frame callback whether a later motion has replaced its own
    double lastStep_ = 0;
    CGFloat dragOrigin_ = 0;  // the offset at which the drag began, without the rubber band
    // The lower limit when the drag began: a refresh that begins during the drag does not move the content.
    CGFloat dragLower_ = 0;

    class Indicator;
    std::shared_ptr<Indicator> indicator_;
    bool indicatorShown_ = false;
    double lastScroll_ = 0;
};

}  // namespace ostrel
