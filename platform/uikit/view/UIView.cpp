#include "platform/uikit/view/UIView.h"

#include "platform/foundation/runloop/Clock.h"
#include "platform/foundation/runloop/RunLoop.h"
#include "platform/uikit/view/Autoresizing.h"
#include "platform/uikit/view/UIGestureRecognizer.h"
#include "platform/uikit/view/UIWindow.h"
#include "platform/uikit/view/ViewAnimator.h"
#include "platform/uikit/view/ViewOwner.h"

#include <algorithm>
#include <cassert>

namespace ostrel {

namespace {

ViewTag nextTag() {
    static ViewTag last = 0;
    return ++last;
}

/// Makes coordinates finite and lengths at least 0, so that no later code has to check them.
CGRect sane(CGRect frame) {
    const auto finite = [](CGFloat& value) {
        if (!std::isfinite(value)) value = 0;
    };
    finite(frame.origin.x);
    finite(frame.origin.y);
    finite(frame.size.width);
    finite(frame.size.height);
    frame.size.width = std::max(0.0, frame.size.width);
    frame.size.height = std::max(0.0, frame.size.height);
    return frame;
}

constexpr int layoutPassesOfOneView = 8;
constexpr CGFloat focusRingWidth = 2;
constexpr const char* rotationKeyPath = "transform.rotation";

}  // namespace

struct UIView::Animation {
    std::string key;
    CAKeyframeAnimation animation;
    std::shared_ptr<const LayerRotation> rotation;
};

UIView::UIView(CGRect frame) : tag_(nextTag()) { state_.frame = sane(frame); }

UIView::~UIView() {
    for (const auto& recognizer : recognizers_) recognizer->view_ = nullptr;
    for (const auto& child : subviews_) {
        child->superview_ = nullptr;
        child->moveToWindow(nullptr);
    }
}

// Geometry

template <class T>
void UIView::changeState(T& field, const T& value, std::uint32_t changes) {
    if (field == value) return;
    field = value;
    markChanged(changes);
}

void UIView::setFrame(const CGRect& newFrame) {
    const CGRect frame = sane(newFrame);
    const CGRect old = state_.frame;
    if (frame == old) return;
    if (window_) window_->animator().propertyWillChange(*this, ViewAnimator::Property::frame);
    state_.frame = frame;
    std::uint32_t changes = 0;
    if (frame.origin != old.origin) changes |= changedFrameOrigin;
    if (frame.size != old.size) {
        changes |= changedFrameSize;
        needsContent_ = true;
    }
    markChanged(changes);
    if (frame.size == old.size) return;
    resizeSubviews(old.size);
    setNeedsLayout();
    if (superview_) superview_->subviewSizeDidChange(*this);
}

void UIView::resizeSubviews(CGSize oldSize) {
    const auto children = subviews_;
    for (const auto& child : children) {
        if (child->autoresizingMask_ == autoresizingNone) continue;
        child->setFrame(autoresizedFrame(child->frame(), child->autoresizingMask_, oldSize, state_.frame.size));
    }
}

void UIView::subviewSizeDidChange(UIView&) {}

void UIView::setBoundsOrigin(CGPoint origin) {
    if (!std::isfinite(origin.x) || !std::isfinite(origin.y) || origin == state_.boundsOrigin) return;
    if (window_) window_->animator().propertyWillChange(*this, ViewAnimator::Property::boundsOrigin);
    changeState(state_.boundsOrigin, origin, changedBoundsOrigin);
}

void UIView::setCenter(CGPoint center) {
    const CGSize size = state_.frame.size;
    setFrame({{center.x - size.width / 2, center.y - size.height / 2}, size});
}

void UIView::setTransform(const CGAffineTransform& transform) {
    if (transform == state_.transform) return;
    if (window_) window_->animator().propertyWillChange(*this, ViewAnimator::Property::transform);
    changeState(state_.transform, transform, changedTransform);
}

CGPoint UIView::pointToSuperview(CGPoint point) const {
    CGPoint p{point.x - state_.boundsOrigin.x, point.y - state_.boundsOrigin.y};
    if (!state_.transform.isIdentity()) {
        const CGSize half{state_.frame.width() / 2, state_.frame.height() / 2};
        p = state_.transform.apply({p.x - half.width, p.y - half.height});
        p = {p.x + half.width, p.y + half.height};
    }
    return {p.x + state_.frame.origin.x, p.y + state_.frame.origin.y};
}

CGPoint UIView::pointFromSuperview(CGPoint point) const {
    CGPoint p{point.x - state_.frame.origin.x, point.y - state_.frame.origin.y};
    const CGAffineTransform& t = state_.transform;
    const CGFloat determinant = t.a * t.d - t.b * t.c;
    // A transform that flattens the view has no inverse; such a transform is ignored.
    if (!t.isIdentity() && determinant != 0) {
        const CGSize half{state_.frame.width() / 2, state_.frame.height() / 2};
        const CGPoint q{p.x - half.width - t.tx, p.y - half.height - t.ty};
        p = {(t.d * q.x - t.c * q.y) / determinant + half.width, (t.a * q.y - t.b * q.x) / determinant + half.height};
    }
    return {p.x + state_.boundsOrigin.x, p.y + state_.boundsOrigin.y};
}

CGPoint UIView::convertPointToView(CGPoint point, const UIView* view) const {
    // Up to the root, which is the window; the window's coordinates are those of its bounds.
    for (const UIView* v = this; v->superview_; v = v->superview_) {
        if (v == view) return point;
        point = v->pointToSuperview(point);
    }
    if (!view) return point;
    std::vector<const UIView*> path;
    for (const UIView* v = view; v->superview_; v = v->superview_) path.push_back(v);
    for (auto v = path.rbegin(); v != path.rend(); ++v) point = (*v)->pointFromSuperview(point);
    return point;
}

CGRect UIView::convertRectToView(const CGRect& rect, const UIView* view) const {
    const CGPoint corners[] = {
        convertPointToView(rect.origin, view), convertPointToView({rect.maxX(), rect.minY()}, view),
        convertPointToView({rect.minX(), rect.maxY()}, view), convertPointToView({rect.maxX(), rect.maxY()}, view)};
    CGPoint low = corners[0], high = corners[0];
    for (const CGPoint& corner : corners) {
        low = {std::min(low.x, corner.x), std::min(low.y, corner.y)};
        high = {std::max(high.x, corner.x), std::max(high.y, corner.y)};
    }
    return {low, {high.x - low.x, high.y - low.y}};
}

CGRect UIView::visibleRect() const {
    if (!window_) return {};
    CGRect rect = bounds();
    CGFloat dx = 0, dy = 0;  // from this view's coordinates to those of `view`
    for (const UIView* view = this; view->superview_; view = view->superview_) {
        if (view->state_.hidden) return {};
        const UIView& above = *view->superview_;
        dx += view->state_.frame.origin.x - view->state_.boundsOrigin.x;
        dy += view->state_.frame.origin.y - view->state_.boundsOrigin.y;
        if (above.state_.clipsToBounds || !above.superview_)
            rect = rect.intersection(above.bounds().offsetBy(-dx, -dy));
    }
    return rect;
}

CGSize UIView::sizeThatFits(CGSize) const { return state_.frame.size; }

void UIView::sizeToFit() { setFrame({state_.frame.origin, sizeThatFits(state_.frame.size)}); }

// Layer

void UIView::setBackgroundColor(UIColor color) {
    if (color == state_.backgroundColor) return;
    if (window_) window_->animator().propertyWillChange(*this, ViewAnimator::Property::backgroundColor);
    changeState(state_.backgroundColor, color, changedLayer);
}

void UIView::setAlpha(double alpha) {
    alpha = alpha > 0 ? std::min(alpha, 1.0) : 0;
    if (alpha == state_.alpha) return;
    if (window_) window_->animator().propertyWillChange(*this, ViewAnimator::Property::alpha);
    changeState(state_.alpha, alpha, changedAlpha);
}

void UIView::setHidden(bool hidden) { changeState(state_.hidden, hidden, changedAlpha); }
void UIView::setClipsToBounds(bool clips) { changeState(state_.clipsToBounds, clips, changedLayer); }
void UIView::setCornerRadius(CGFloat radius) { changeState(state_.cornerRadius, radius, changedLayer); }
void UIView::setBorderWidth(CGFloat width) { changeState(state_.borderWidth, width, changedLayer); }
void UIView::setBorderColor(UIColor color) { changeState(state_.borderColor, color, changedLayer); }
void UIView::setShadow(const LayerShadow& shadow) { changeState(state_.shadow, shadow, changedLayer); }
void UIView::setSurface(bool isSurface) { changeState(state_.isSurface, isSurface, changedLayer); }
void UIView::setCursor(CursorShape cursor) { changeState(state_.cursor, cursor, changedAccessibility); }

void UIView::setRoundedCorners(bool top, bool bottom) {
    changeState(state_.roundsTop, top, changedLayer);
    changeState(state_.roundsBottom, bottom, changedLayer);
}

void UIView::setAccessibility(AccessibilityRole role, std::string label) {
    accessibilityIsExplicit_ = true;
    changeState(state_.accessibility, AccessibilityState{role, std::move(label), state_.accessibility.disabled},
                changedAccessibility);
}

void UIView::setDefaultAccessibility(AccessibilityRole role, const std::string& label) {
    if (accessibilityIsExplicit_) return;
    changeState(state_.accessibility, AccessibilityState{role, label, state_.accessibility.disabled},
                changedAccessibility);
}

void UIView::setAccessibilityDisabled(bool disabled) {
    changeState(state_.accessibility.disabled, disabled, changedAccessibility);
}

// Animations of the layer

void UIView::addAnimationForKey(const CAKeyframeAnimation& animation, const std::string& key) {
    const bool isFinite = std::all_of(animation.values.begin(), animation.values.end(),
                                      [](double value) { return std::isfinite(value); });
    std::erase_if(animations_, [&](const Animation& other) { return other.key == key; });
    if (animation.keyPath != rotationKeyPath || animation.values.empty() || !isFinite) return updateRotation();
    auto rotation = std::make_shared<LayerRotation>();
    rotation->angles = animation.values;
    rotation->begin = Clock::shared().monotonicSeconds();
    if (animation.duration > 0 && animation.repeatCount > 0 && !isReduceMotionEnabled()) {
        rotation->duration = animation.duration;
        rotation->repeatCount = animation.repeatCount;
    } else {
        rotation->angles.resize(1);
    }
    rotation->staysAtEnd = !animation.removedOnCompletion && animation.fillMode == CAMediaTimingFillMode::forwards;
    animations_.push_back({key, animation, rotation});
    updateRotation();
    const double length = rotation->duration * rotation->repeatCount;
    constexpr double longest = 1e6;  // seconds; a longer animation stays until its caller removes it
    if (!animation.removedOnCompletion || !(length < longest) || !RunLoop::hasMain()) return;
    RunLoop::main().performAfter(length, [weak = weak_from_this(), key, ended = std::weak_ptr(rotation)] {
        const auto view = weak.lock();
        const auto present = ended.lock();
        if (!view || !present) return;
        const auto& all = view->animations_;
        if (std::any_of(all.begin(), all.end(), [&](const Animation& a) { return a.rotation == present; }))
            view->removeAnimationForKey(key);
    });
}

void UIView::removeAnimationForKey(const std::string& key) {
    if (std::erase_if(animations_, [&](const Animation& other) { return other.key == key; })) updateRotation();
}

void UIView::removeAllAnimations() {
    if (animations_.empty()) return;
    animations_.clear();
    updateRotation();
}

const CAKeyframeAnimation* UIView::animationForKey(const std::string& key) const {
    for (const Animation& other : animations_) {
        if (other.key == key) return &other.animation;
    }
    return nullptr;
}

void UIView::updateRotation() {
    changeState(state_.rotation, animations_.empty() ? nullptr : animations_.back().rotation, changedTransform);
}

// Tree

void UIView::addSubview(const std::shared_ptr<UIView>& view) { insertSubview(view, subviews_.size()); }

void UIView::insertSubview(const std::shared_ptr<UIView>& view, std::size_t index) {
    assert(view && !isDescendantOfView(*view) && "a view cannot be put into itself");
    if (!view || isDescendantOfView(*view)) return;
    const std::shared_ptr<UIView> kept = view;
    if (UIView* const old = kept->superview_) {
        std::erase(old->subviews_, kept);
        old->markChildrenChanged();
    }
    subviews_.insert(subviews_.begin() + static_cast<std::ptrdiff_t>(std::min(index, subviews_.size())), kept);
    markChildrenChanged();
    setNeedsLayout();
    if (kept->superview_ == this) return;
    kept->superview_ = this;
    kept->moveToWindow(window_);
    kept->didMoveToSuperview();
}

void UIView::bringSubviewToFront(const std::shared_ptr<UIView>& view) {
    if (!view || view->superview_ != this || subviews_.back() == view) return;
    insertSubview(view, subviews_.size());
}

void UIView::sendSubviewToBack(const std::shared_ptr<UIView>& view) {
    if (!view || view->superview_ != this || subviews_.front() == view) return;
    insertSubview(view, 0);
}

void UIView::removeFromSuperview() {
    if (!superview_) return;
    const auto kept = shared_from_this();
    if (window_) window_->viewWillLeave(*this);
    // A handler of the touch's end may have removed this view already.
    if (!superview_) return;
    std::erase(superview_->subviews_, kept);
    superview_->markChildrenChanged();
    superview_->setNeedsLayout();
    superview_ = nullptr;
    moveToWindow(nullptr);
    didMoveToSuperview();
}

bool UIView::isDescendantOfView(const UIView& view) const {
    for (const UIView* v = this; v; v = v->superview_) {
        if (v == &view) return true;
    }
    return false;
}

void UIView::moveToWindow(UIWindow* window) {
    if (window_ == window) return;
    if (UIWindow* const old = std::exchange(window_, nullptr)) old->viewLeft(*this);
    inDirtyList_ = false;
    window_ = window;
    if (window) window->viewEntered(*this);
    didMoveToWindow();
    const auto children = subviews_;
    for (const auto& child : children) {
        if (child->superview_ == this) child->moveToWindow(window_);
    }
}

void UIView::markChanged(std::uint32_t changes) {
    assert(!RunLoop::hasMain() || RunLoop::main().isMainThread());
    pendingChanges_ |= changes;
    if (window_ && !inDirtyList_) window_->viewChanged(*this);
}

void UIView::markChildrenChanged() {
    childrenChanged_ = true;
    markChanged(0);
}

void UIView::setNeedsDisplay() {
    needsContent_ = true;
    markChanged(changedContent);
}

// Layout

void UIView::setNeedsLayout() {
    if (needsLayout_) return;
    needsLayout_ = true;
    if (window_) window_->viewNeedsLayout(*this);
}

void UIView::layoutNow() {
    needsLayout_ = false;
    layoutSubviews();
    if (owner_) owner_->viewDidLayoutSubviews();
}

void UIView::layoutIfNeeded() {
    const auto kept = weak_from_this().lock();
    for (int pass = 0; needsLayout_ && pass < layoutPassesOfOneView; ++pass) layoutNow();
    const auto children = subviews_;
    for (const auto& child : children) child->layoutIfNeeded();
}

void UIView::addConstraint(const NSLayoutConstraint& constraint) { constraints_.push_back(constraint); }

std::optional<CGFloat> UIView::constrainedHeight() const {
    std::optional<CGFloat> height;
    for (const NSLayoutConstraint& constraint : constraints_) {
        const auto item = constraint.toItem.lock();
        if (!item) continue;
        const CGFloat wanted = constraint.multiplier * item->frame().height() + constraint.constant;
        height = std::max(height.value_or(wanted), wanted);
    }
    return height;
}

// Events

UIView* UIView::hitTest(CGPoint point) {
    if (state_.hidden || state_.alpha <= 0.01 || !userInteractionEnabled_ || !pointInside(point)) return nullptr;
    for (auto child = subviews_.rbegin(); child != subviews_.rend(); ++child) {
        if (UIView* hit = (*child)->hitTest((*child)->pointFromSuperview(point))) return hit;
    }
    return this;
}

void UIView::setUserInteractionEnabled(bool enabled) {
    if (userInteractionEnabled_ == enabled) return;
    userInteractionEnabled_ = enabled;
    // An editable text is shown by an editor, other text is painted.
    setNeedsDisplay();
}

void UIView::addGestureRecognizer(const std::shared_ptr<UIGestureRecognizer>& recognizer) {
    if (!recognizer || recognizer->view_ == this) return;
    if (recognizer->view_) recognizer->view_->removeGestureRecognizer(recognizer);
    recognizer->view_ = this;
    recognizers_.push_back(recognizer);
}

void UIView::removeGestureRecognizer(const std::shared_ptr<UIGestureRecognizer>& recognizer) {
    if (!recognizer || recognizer->view_ != this) return;
    const auto kept = recognizer;
    kept->setEnabled(false);
    std::erase(recognizers_, kept);
    kept->view_ = nullptr;
    kept->enabled_ = true;
}

UIResponder* UIView::nextResponder() const {
    if (owner_) return owner_;
    return superview_;
}

bool UIView::becomeFirstResponder() {
    return window_ && canBecomeFirstResponder() && window_->makeFirstResponder(this);
}

bool UIView::resignFirstResponder() {
    if (isFirstResponder()) window_->makeFirstResponder(nullptr);
    return true;
}

bool UIView::isFirstResponder() const { return window_ && window_->firstResponder() == this; }

void UIView::focusDidChange(bool focused, bool byKeyboard) {
    if (focused && byKeyboard) {
        if (focusRing_) return;
        focusRing_ = make<UIView>(CGRect{{0, 0}, state_.frame.size});
        focusRing_->setAutoresizingMask(flexibleWidth | flexibleHeight);
        focusRing_->setUserInteractionEnabled(false);
        focusRing_->setBorderWidth(focusRingWidth);
        focusRing_->setBorderColor(UIColor::tint());
        focusRing_->setCornerRadius(std::max(4.0, state_.cornerRadius));
        addSubview(focusRing_);
    } else if (focusRing_) {
        std::exchange(focusRing_, nullptr)->removeFromSuperview();
    }
}

}  // namespace ostrel
