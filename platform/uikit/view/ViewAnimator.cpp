#include "platform/uikit/view/ViewAnimator.h"

#include "platform/foundation/runloop/RunLoop.h"
#include "platform/uikit/view/UIWindow.h"

#include <algorithm>
#include <cassert>

namespace ostrel {

namespace {

AnimationGroup* currentGroup = nullptr;
bool reduceMotion = false;

CGFloat mix(CGFloat a, CGFloat b, double t) { return a + (b - a) * t; }

CGPoint mix(CGPoint a, CGPoint b, double t) { return {mix(a.x, b.x, t), mix(a.y, b.y, t)}; }

CGRect mix(const CGRect& a, const CGRect& b, double t) {
    return {mix(a.origin, b.origin, t), {mix(a.size.width, b.size.width, t), mix(a.size.height, b.size.height, t)}};
}

CGAffineTransform mix(const CGAffineTransform& a, const CGAffineTransform& b, double t) {
    return {mix(a.a, b.a, t), mix(a.b, b.b, t),   mix(a.c, b.c, t),
            mix(a.d, b.d, t), mix(a.tx, b.tx, t), mix(a.ty, b.ty, t)};
}

UIColor mix(const UIColor& a, const UIColor& b, double t) {
    // A clear colour takes the components of the other one, so that a fade does not pass through grey.
    const UIColor start = a.isClear() ? b.withAlpha(0) : a, end = b.isClear() ? a.withAlpha(0) : b;
    const auto component = [t](float x, float y) { return static_cast<float>(mix(double{x}, double{y}, t)); };
    return {component(start.red, end.red), component(start.green, end.green), component(start.blue, end.blue),
            component(start.alpha, end.alpha)};
}

}  // namespace

AnimationGroup::AnimationGroup(double duration, UIViewAnimationCurve curve, std::function<void(bool)> completion)
    : duration_(duration), curve_(curve), completion_(std::move(completion)) {}

AnimationGroup::~AnimationGroup() = default;

AnimationGroup* AnimationGroup::current() { return currentGroup; }

double AnimationGroup::progress(double elapsed) const {
    if (!(elapsed < duration_)) return 1;
    const double t = std::max(0.0, elapsed / duration_);
    switch (curve_) {
    case UIViewAnimationCurve::linear: return t;
    case UIViewAnimationCurve::easeOut: return 1 - (1 - t) * (1 - t) * (1 - t);
    case UIViewAnimationCurve::easeInOut: return t * t * (3 - 2 * t);
    case UIViewAnimationCurve::spring: {
        // A critically damped spring that has moved all but 0.05 % of the way at the end of the duration.
        constexpr double stiffness = 10;
        const auto position = [](double x) { return 1 - (1 + stiffness * x) * std::exp(-stiffness * x); };
        return position(t) / position(1);
    }
    }
    return t;
}

void AnimationGroup::animationEnded(bool finished) {
    assert(running_ > 0);
    finished_ = finished_ && finished;
    if (--running_ == 0 && closed_) complete();
}

void AnimationGroup::close() {
    closed_ = true;
    if (running_ == 0) complete();
}

void AnimationGroup::complete() {
    if (!completion_ || !RunLoop::hasMain()) return;
    // In a later turn, because the caller that interrupted the animation is in the middle of a change.
    RunLoop::main().perform(
        [completion = std::exchange(completion_, {}), finished = finished_] { completion(finished); });
}

void UIView::animate(double duration, const std::function<void()>& changes,
                     std::function<void(bool finished)> completion, UIViewAnimationCurve curve) {
    const auto group = std::make_shared<AnimationGroup>(reduceMotion ? 0 : duration, curve, std::move(completion));
    AnimationGroup* const outer = std::exchange(currentGroup, group.get());
    if (changes) changes();
    currentGroup = outer;
    group->close();
}

bool UIView::isReduceMotionEnabled() { return reduceMotion; }

void UIView::setReduceMotionEnabled(bool reduce) { reduceMotion = reduce; }

ViewAnimator::ViewAnimator(UIWindow& window) : window_(window) {}

ViewAnimator::~ViewAnimator() {
    *alive_ = false;
    for (auto& [view, animations] : animations_) {
        for (Animation& animation : animations) animation.group->animationEnded(false);
    }
}

ViewAnimator::Value ViewAnimator::modelValue(const ViewState& state, Property property) {
    switch (property) {
    case Property::frame: return state.frame;
    case Property::boundsOrigin: return state.boundsOrigin;
    case Property::transform: return state.transform;
    case Property::alpha: return state.alpha;
    case Property::backgroundColor: return state.backgroundColor;
    }
    return state.alpha;
}

ViewAnimator::Value ViewAnimator::presentationValue(const ViewState& state, const Animation& animation) {
    return std::visit(
        [&]<class T>(const T& from) -> Value {
            return mix(from, std::get<T>(modelValue(state, animation.property)), animation.progress);
        },
        animation.from);
}

std::uint32_t ViewAnimator::changeOf(Property property) {
    switch (property) {
    case Property::frame: return changedFrameOrigin | changedFrameSize;
    case Property::boundsOrigin: return changedBoundsOrigin;
    case Property::transform: return changedTransform;
    case Property::alpha: return changedAlpha;
    case Property::backgroundColor: return changedLayer;
    }
    return changedAll;
}

void ViewAnimator::propertyWillChange(UIView& view, Property property) {
    AnimationGroup* const group = AnimationGroup::current();
    const bool animates = group && group->duration() > 0 && window_.backend();
    if (!animates && animations_.empty()) return;

    const auto found = animations_.find(&view);
    Animation* present = nullptr;
    if (found != animations_.end()) {
        for (Animation& animation : found->second) {
            if (animation.property == property) present = &animation;
        }
    }
    if (!animates) {
        if (!present) return;
        const auto ended = present->group;
        std::erase_if(found->second, [&](const Animation& animation) { return animation.property == property; });
        if (found->second.empty()) animations_.erase(found);
        view.markChanged(changeOf(property));
        ended->animationEnded(false);
        window_.updateFramesWanted();
        return;
    }
    if (present && present->group.get() == group) return;

    Animation animation{.property = property,
                        .from = present ? presentationValue(view.state_, *present) : modelValue(view.state_, property),
                        .group = group->shared_from_this()};
    group->animationBegan();
    if (present) {
        const auto ended = std::exchange(*present, std::move(animation)).group;
        ended->animationEnded(false);
    } else {
        animations_[&view].push_back(std::move(animation));
    }
    view.markChanged(changeOf(property));
    if (group->running_ == 1) {
        RunLoop::main().performAfter(group->duration() + graceWithoutFrames,
                                     [this, alive = alive_, ending = group->weak_from_this()] {
                                         if (*alive) endAll(ending);
                                     });
    }
    window_.updateFramesWanted();
}

void ViewAnimator::applyPresentation(const UIView& view, ViewState& state) const {
    const auto found = animations_.find(const_cast<UIView*>(&view));
    if (found == animations_.end()) return;
    for (const Animation& animation : found->second) {
        const Value value = presentationValue(state, animation);
        switch (animation.property) {
        case Property::frame: state.frame = std::get<CGRect>(value); break;
        case Property::boundsOrigin: state.boundsOrigin = std::get<CGPoint>(value); break;
        case Property::transform: state.transform = std::get<CGAffineTransform>(value); break;
        case Property::alpha: state.alpha = std::get<double>(value); break;
        case Property::backgroundColor: state.backgroundColor = std::get<UIColor>(value); break;
        }
    }
}

template <class Ends>
void ViewAnimator::removeIf(bool finished, const Ends& ends) {
    std::vector<std::shared_ptr<AnimationGroup>> ended;
    for (auto entry = animations_.begin(); entry != animations_.end();) {
        std::erase_if(entry->second, [&](const Animation& animation) {
            if (!ends(*entry->first, animation)) return false;
            entry->first->markChanged(changeOf(animation.property));
            ended.push_back(animation.group);
            return true;
        });
        entry = entry->second.empty() ? animations_.erase(entry) : std::next(entry);
    }
    for (const auto& group : ended) group->animationEnded(finished);
}

void ViewAnimator::frame(double time) {
    if (animations_.empty()) return;
    for (auto& [view, animations] : animations_) {
        for (Animation& animation : animations) {
            if (animation.start < 0) animation.start = time;
            animation.progress = animation.group->progress(time - animation.start);
            view->markChanged(changeOf(animation.property));
        }
    }
    // The sum of the frames' steps has rounding errors.
    constexpr double tolerance = 1e-6;
    removeIf(true, [time](const UIView&, const Animation& animation) {
        return time - animation.start + tolerance >= animation.group->duration();
    });
}

void ViewAnimator::endAll(const std::weak_ptr<AnimationGroup>& group) {
    const auto ending = group.lock();
    if (!ending) return;
    removeIf(true, [&](const UIView&, const Animation& animation) { return animation.group == ending; });
    window_.updateFramesWanted();
}

void ViewAnimator::viewLeft(UIView& view) {
    const auto found = animations_.find(&view);
    if (found == animations_.end()) return;
    const std::vector<Animation> ended = std::move(found->second);
    animations_.erase(found);
    for (const Animation& animation : ended) {
        // The view may come back before the next flush, while the backend still shows a value of the
        // animation.
        view.markChanged(changeOf(animation.property));
        animation.group->animationEnded(false);
    }
    window_.updateFramesWanted();
}

}  // namespace ostrel
