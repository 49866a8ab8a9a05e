#include "platform/uikit/view/UIScrollView.h"

#include "platform/foundation/runloop/Clock.h"
#include "platform/foundation/runloop/RunLoop.h"
#include "platform/uikit/view/UIDevice.h"
#include "platform/uikit/view/UIWindow.h"

namespace ostrel {

namespace {

constexpr CGFloat flingVelocity = 50;   // points a second; a faster release flings the content
constexpr CGFloat flyingVelocity = 60;  // points a second; above it a touch only stops the content
constexpr double glideDuration = 0.3;
constexpr double longestStep = 0.1;
constexpr CGFloat lineStep = 60;
constexpr CGFloat pageOverlap = 40;
constexpr double indicatorDelay = 0.8;
constexpr double indicatorFade = 0.25;
constexpr CGFloat shortestIndicator = 36;
constexpr CGFloat indicatorMargin = 3;

bool isMac() { return UIDevice::currentDevice().userInterfaceIdiom() == UIUserInterfaceIdiom::mac; }

/// Rounds to the grid of the row heights (1/64 point), so that a step of one point is exact at every offset.
CGFloat onGrid(CGFloat y) { return std::round(y * 64) / 64; }

}  // namespace

/// The thin bar at the right edge. On the Mac idiom the pointer drags it.
class UIScrollView::Indicator final : public UIView {
public:
    explicit Indicator(UIScrollView& owner) : owner_(owner) {
        setBackgroundColor(UIColor::black().withAlpha(0.35f));
        setUserInteractionEnabled(isMac());
        setAlpha(0);
    }
    CGFloat thickness() const { return isMac() ? (isHovered_ || isDragged_ ? 10 : 7) : 3; }
    bool isDragged() const { return isDragged_; }
    bool pointInside(CGPoint point) const override { return bounds().insetBy(-6, -2).contains(point); }
    void hoverDidChange(bool inside) override {
        isHovered_ = inside;
        owner_.showIndicator();
    }
    void touchesBegan(const UITouch& touch) override {
        owner_.stopScrolling();
        isDragged_ = true;
        startOffset_ = owner_.contentOffset().y;
        owner_.showIndicator();
        (void)touch;
    }
    void touchesMoved(const UITouch& touch) override {
        const CGFloat way = owner_.frame().height() - owner_.contentInset_.top - owner_.contentInset_.bottom -
                            2 * indicatorMargin - frame().height();
        if (!(way > 0)) return;
        const CGFloat lower = owner_.minimumOffsetY(), upper = owner_.maximumOffsetY();
        const CGFloat share = (touch.location.y - touch.startLocation.y) / way;
        owner_.moveTo(std::clamp(startOffset_ + share * (upper - lower), lower, upper));
        owner_.showIndicator();
    }
    void touchesEnded(const UITouch&) override { release(); }
    void touchesCancelled(const UITouch&) override { release(); }

private:
    void release() {
        isDragged_ = false;
        owner_.showIndicator();
    }
    UIScrollView& owner_;
    bool isHovered_ = false, isDragged_ = false;
    CGFloat startOffset_ = 0;
};

UIScrollView::UIScrollView(CGRect frame) : UIView(frame) { setClipsToBounds(true); }

UIScrollView::~UIScrollView() {
    // Another holder may keep the indicator alive for a moment after its scroll view has gone.
    if (indicator_) indicator_->removeFromSuperview();
}

void UIScrollView::initialise() {
    pan_ = std::make_shared<UIPanGestureRecognizer>(
        [this](UIGestureRecognizer& recognizer) { handlePan(static_cast<UIPanGestureRecognizer&>(recognizer)); });
    pan_->axis = UIPanGestureRecognizer::Axis::vertical;
    pan_->allowsPointer = !isMac();
    pan_->shouldBegin = [this](UIGestureRecognizer&) { return canScroll() && !leavesDragToOuter(); };
    addGestureRecognizer(pan_);
}

// Limits

// The limits are on the grid, so that content that ends at a limit has exactly its offset.
CGFloat UIScrollView::minimumOffsetY() const { return onGrid(-contentInset_.top - extraTopInset()); }

CGFloat UIScrollView::maximumOffsetY() const {
    return std::max(minimumOffsetY(), onGrid(contentSize_.height + contentInset_.bottom - frame().height()));
}

bool UIScrollView::canScroll() const {
    return scrollEnabled_ && (alwaysBounces() || maximumOffsetY() > minimumOffsetY());
}

/// A drag that this view cannot follow, because it is at a limit, belongs to the scroll view around it.
bool UIScrollView::leavesDragToOuter() const {
    if (alwaysBounces()) return false;
    const CGFloat way = pan_->translation().y != 0 ? pan_->translation().y : pan_->velocity().y;
    const CGFloat y = contentOffset().y;
    const bool isAtEnd = way > 0 ? y <= minimumOffsetY() : y >= maximumOffsetY();
    for (const UIView* above = superview(); isAtEnd && above; above = above->superview()) {
        const auto* const outer = dynamic_cast<const UIScrollView*>(above);
        if (outer && outer->canScroll()) return true;
    }
    return false;
}

void UIScrollView::setContentSize(CGSize size) {
    if (contentSize_ == size) return;
    contentSize_ = size;
    if (isAtRest() && contentOffset().y > maximumOffsetY()) moveTo(maximumOffsetY());
    placeIndicator();
}

void UIScrollView::setContentInset(UIEdgeInsets insets) {
    if (contentInset_ == insets) return;
    const bool isAtTop = isAtRest() && contentOffset().y == minimumOffsetY();
    contentInset_ = insets;
    if (isAtTop) moveTo(minimumOffsetY());
    settle(false);
    placeIndicator();
}

void UIScrollView::setScrollEnabled(bool enabled) {
    if (scrollEnabled_ == enabled) return;
    scrollEnabled_ = enabled;
    if (enabled) return;
    pan_->setEnabled(false);
    pan_->setEnabled(true);
    stopScrolling();
    settle(false);
}

void UIScrollView::setFrame(const CGRect& newFrame) {
    const CGSize old = frame().size;
    UIView::setFrame(newFrame);
    if (frame().size == old) return;
    if (isAtRest() && contentOffset().y > maximumOffsetY()) moveTo(maximumOffsetY());
    placeIndicator();
}

void UIScrollView::didMoveToWindow() {
    if (window()) return;
    if (motion_.kind() == ScrollMotion::Kind::gliding) moveTo(motion_.target());
    stopScrolling();
    dragging_ = tracking_ = false;
    settle(false);
}

// Moving

bool UIScrollView::moveTo(CGFloat y) {
    const CGPoint old = contentOffset();
    setBoundsOrigin({old.x, onGrid(y)});
    if (contentOffset() == old) return false;
    contentOffsetDidChange();
    if (const auto delegate = scrollDelegate_.lock()) delegate->scrollViewDidScroll(*this);
    return true;
}

void UIScrollView::setContentOffset(CGPoint offset, bool animated) {
    if (animated && !dragging_) {
        if (offset.x != contentOffset().x) setBoundsOrigin({offset.x, contentOffset().y});
        stopScrolling();
        scrollTo(offset.y, ScrollMotion::Goal::asGiven);
        return;
    }
    const CGPoint old = contentOffset();
    if (dragging_) {
        dragOrigin_ += offset.y - old.y;
    } else {
        stopScrolling();
    }
    setBoundsOrigin(offset);
    if (contentOffset() == old) return;
    contentOffsetDidChange();
    if (const auto delegate = scrollDelegate_.lock()) delegate->scrollViewDidScroll(*this);
}

void UIScrollView::contentOffsetDidChange() {
    if (indicatorShown_) placeIndicator();
}

void UIScrollView::shiftContentOffset(CGFloat dy) {
    if (dy == 0) return;
    setBoundsOrigin({contentOffset().x, contentOffset().y + dy});
    motion_.shift(dy);
    dragOrigin_ += dy;
    if (indicatorShown_) placeIndicator();
}

bool UIScrollView::isAtRest() const { return !dragging_ && !tracking_ && motion_.kind() == ScrollMotion::Kind::rest; }

void UIScrollView::settle(bool animated) {
    if (!isAtRest()) return;
    const CGFloat y = contentOffset().y, lower = minimumOffsetY(), upper = maximumOffsetY();
    if (y >= lower && y <= upper) return;
    if (animated) {
        scrollTo(y < lower ? lower : upper,
                 y < lower ? ScrollMotion::Goal::lowerLimit : ScrollMotion::Goal::upperLimit);
    } else {
        moveTo(y < lower ? lower : upper);
    }
}

void UIScrollView::scrollRectToVisible(const CGRect& rect, bool animated) {
    const CGFloat y = contentOffset().y;
    const CGFloat top = y + contentInset_.top, bottom = y + frame().height() - contentInset_.bottom;
    CGFloat target = y;
    if (rect.minY() < top || rect.height() > bottom - top) {
        target = rect.minY() - contentInset_.top;
    } else if (rect.maxY() > bottom) {
        target = rect.maxY() - frame().height() + contentInset_.bottom;
    }
    target = std::clamp(target, minimumOffsetY(), maximumOffsetY());
    if (target != y) setContentOffset({contentOffset().x, target}, animated);
}

void UIScrollView::scrollTo(CGFloat y, ScrollMotion::Goal goal) {
    motion_.glide(contentOffset().y, y, UIView::isReduceMotionEnabled() ? 0 : glideDuration, goal);
    startMotion();
}

void UIScrollView::startMotion() {
    const std::uint64_t number = ++motionNumber_;
    if (!window() || !window()->backend() || (UIView::isReduceMotionEnabled() && !decelerating_)) {
        // Without frames (no window) a motion with a goal jumps there.
        const bool hasTarget =
            motion_.kind() == ScrollMotion::Kind::gliding || motion_.kind() == ScrollMotion::Kind::following;
        const CGFloat end = hasTarget ? motion_.target() : contentOffset().y;
        motion_.stop();
        moveTo(end);
        motionEnded();
        settle(false);
        return;
    }
    lastStep_ = Clock::shared().monotonicSeconds();
    window()->requestFrames([weak = weak_from_this(), number](double time) {
        const auto view = std::static_pointer_cast<UIScrollView>(weak.lock());
        return view && view->motionNumber_ == number && view->step(time);
    });
    showIndicator();
}

bool UIScrollView::step(double time) {
    const double seconds = std::clamp(time - lastStep_, 0.0, longestStep);
    lastStep_ = time;
    const std::uint64_t number = motionNumber_;
    const bool goesOn = motion_.step(seconds, minimumOffsetY(), maximumOffsetY());
    velocity_ = motion_.velocity();
    moveTo(motion_.position());
    if (number != motionNumber_) return false;
    lastScroll_ = Clock::shared().monotonicSeconds();
    if (!goesOn) motionEnded();
    return goesOn;
}

void UIScrollView::stopScrolling() {
    motion_.stop();
    ++motionNumber_;
    motionEnded();
}

void UIScrollView::motionEnded() {
    velocity_ = 0;
    setNeedsLayout();
    if (!std::exchange(decelerating_, false)) return;
    if (const auto delegate = scrollDelegate_.lock()) delegate->scrollViewDidEndDecelerating(*this);
}

// By hand

void UIScrollView::handlePan(UIPanGestureRecognizer& pan) {
    using State = UIGestureRecognizerState;
    const State state = pan.state();
    if (state == State::began) {
        stopScrolling();
        dragging_ = tracking_ = true;
        dragLower_ = minimumOffsetY();
        dragOrigin_ = ScrollMotion::unbanded(contentOffset().y, dragLower_, std::max(dragLower_, maximumOffsetY()),
                                             frame().height());
        willBeginDragging();
        if (const auto delegate = scrollDelegate_.lock()) delegate->scrollViewWillBeginDragging(*this);
    }
    if (!dragging_) return;
    if (state == State::cancelled) return endDrag(0);
    velocity_ = -pan.velocity().y;
    moveTo(ScrollMotion::rubberBanded(dragOrigin_ - pan.translation().y, dragLower_,
                                      std::max(dragLower_, maximumOffsetY()), frame().height()));
    showIndicator();
    if (state == State::ended) endDrag(-pan.velocity().y);
}

void UIScrollView::endDrag(CGFloat velocity) {
    dragging_ = tracking_ = false;
    velocity_ = 0;
    const CGFloat y = contentOffset().y;
    const auto flies = [&] {
        return std::abs(velocity) > flingVelocity || y < minimumOffsetY() || y > maximumOffsetY();
    };
    const bool willDecelerate = flies();
    decelerating_ = willDecelerate;
    didEndDragging(willDecelerate);
    if (const auto delegate = scrollDelegate_.lock()) delegate->scrollViewDidEndDragging(*this, willDecelerate);
    if (!decelerating_ || dragging_) {
        setNeedsLayout();
        return;
    }
    velocity_ = velocity;
    motion_.fling(contentOffset().y, velocity, minimumOffsetY(), maximumOffsetY());
    startMotion();
}

UIView* UIScrollView::hitTest(CGPoint point) {
    UIView* const hit = UIView::hitTest(point);
    // During a fling the finger did not aim at the view that is under it by chance.
    return hit && decelerating_ && std::abs(velocity_) > flyingVelocity ? this : hit;
}

void UIScrollView::touchesBegan(const UITouch& touch) {
    if (touch.button == UIButtonMask::primary) {
        tracking_ = true;
        stopScrolling();
    }
    UIView::touchesBegan(touch);
}

void UIScrollView::touchesEnded(const UITouch& touch) {
    tracking_ = dragging_;
    settle(true);
    UIView::touchesEnded(touch);
}

void UIScrollView::touchesCancelled(const UITouch& touch) {
    tracking_ = dragging_;
    settle(true);
    UIView::touchesCancelled(touch);
}

bool UIScrollView::scrollBy(const UIScrollEvent& event) {
    if (!scrollEnabled_ || dragging_ || event.dy == 0 || !std::isfinite(event.dy)) return false;
    const CGFloat y = contentOffset().y;
    const bool follows = motion_.kind() == ScrollMotion::Kind::following;
    const CGFloat base = follows ? motion_.target() : y;
    const CGFloat target = std::clamp(base - event.dy, minimumOffsetY(), maximumOffsetY());
    if (target == y) {
        if (follows) stopScrolling();
        return follows;
    }
    if (!follows) stopScrolling();
    if (event.precise) {
        stopScrolling();
        moveTo(target);
        showIndicator();
    } else {
        motion_.follow(y, target);
        if (!follows) startMotion();
    }
    return true;
}

bool UIScrollView::pressesBegan(const UIPress& press) {
    constexpr unsigned others = modifierControl | modifierAlternate | modifierCommand;
    if (!scrollEnabled_ || (press.key.modifiers & others)) return UIView::pressesBegan(press);
    const CGFloat page = std::max(lineStep, frame().height() - contentInset_.top - contentInset_.bottom - pageOverlap);
    const bool isShifted = press.key.modifiers & modifierShift;
    auto goal = ScrollMotion::Goal::withinLimits;
    CGFloat distance = 0;
    switch (press.key.code) {
    case UIKeyCode::pageDown: distance = page; break;
    case UIKeyCode::pageUp: distance = -page; break;
    case UIKeyCode::space: distance = isShifted ? -page : page; break;
    case UIKeyCode::down: distance = lineStep; break;
    case UIKeyCode::up: distance = -lineStep; break;
    case UIKeyCode::home:
        goal = ScrollMotion::Goal::lowerLimit;
        distance = minimumOffsetY() - contentOffset().y;
        break;
    case UIKeyCode::end:
        goal = ScrollMotion::Goal::upperLimit;
        distance = maximumOffsetY() - contentOffset().y;
        break;
    default: return UIView::pressesBegan(press);
    }
    const bool isGliding = motion_.kind() == ScrollMotion::Kind::gliding && goal == ScrollMotion::Goal::withinLimits;
    const CGFloat base = isGliding ? motion_.target() : contentOffset().y;
    const CGFloat target = std::clamp(base + distance, minimumOffsetY(), maximumOffsetY());
    if (target == contentOffset().y) return UIView::pressesBegan(press);
    stopScrolling();
    scrollTo(target, goal);
    return true;
}

// Indicator

void UIScrollView::setShowsVerticalScrollIndicator(bool shows) {
    showsIndicator_ = shows;
    if (shows || !indicator_) return;
    indicatorShown_ = false;
    indicator_->setAlpha(0);
}

void UIScrollView::hoverDidChange(bool inside) {
    if (inside && isMac()) showIndicator();
}

void UIScrollView::showIndicator() {
    if (!showsIndicator_ || !window() || maximumOffsetY() <= minimumOffsetY()) return;
    lastScroll_ = Clock::shared().monotonicSeconds();
    if (!indicator_) indicator_ = std::make_shared<Indicator>(*this);
    if (indicator_->superview() != this || subviews().back() != indicator_) addSubview(indicator_);
    if (!indicatorShown_) {
        indicatorShown_ = true;
        indicator_->setAlpha(1);
        fadeIndicatorAfter(indicatorDelay);
    }
    placeIndicator();
}

void UIScrollView::placeIndicator() {
    if (!indicator_ || !indicatorShown_) return;
    const CGFloat lower = minimumOffsetY(), upper = maximumOffsetY();
    const CGFloat height = frame().height();
    const CGFloat track = std::max(0.0, height - contentInset_.top - contentInset_.bottom - 2 * indicatorMargin);
    const CGFloat content = std::max(1.0, upper - lower + height);
    const CGFloat length = std::min(track, std::max(shortestIndicator, track * height / content));
    const CGFloat share = upper > lower ? std::clamp((contentOffset().y - lower) / (upper - lower), 0.0, 1.0) : 0;
    const CGFloat thickness = indicator_->thickness();
    indicator_->setCornerRadius(thickness / 2);
    indicator_->setFrame({contentOffset().x + frame().width() - thickness - indicatorMargin,
                          contentOffset().y + contentInset_.top + indicatorMargin + share * (track - length), thickness,
                          length});
}

void UIScrollView::fadeIndicatorAfter(double delay) {
    RunLoop::main().performAfter(delay, [weak = weak_from_this()] {
        const auto view = std::static_pointer_cast<UIScrollView>(weak.lock());
        if (!view || !view->indicatorShown_) return;
        const double idle = Clock::shared().monotonicSeconds() - view->lastScroll_;
        const bool isUsed = !view->isAtRest() || view->indicator_->isDragged();
        if (isUsed || idle < indicatorDelay) {
            return view->fadeIndicatorAfter(isUsed ? indicatorDelay : std::max(0.05, indicatorDelay - idle));
        }
        view->indicatorShown_ = false;
        UIView::animate(indicatorFade, [&] { view->indicator_->setAlpha(0); });
    });
}

}  // namespace ostrel
