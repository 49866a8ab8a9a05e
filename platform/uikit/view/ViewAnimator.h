#pragma once

#include "platform/uikit/view/UIView.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <unordered_map>
#include <variant>
#include <vector>

namespace ostrel {

/// The changes of one call of `UIView::animate`, including those of nested calls without a duration. The
/// completion runs exactly once, when the last of its animations has ended.
class AnimationGroup final : public std::enable_shared_from_this<AnimationGroup> {
public:
    AnimationGroup(double duration, UIViewAnimationCurve curve, std::function<void(bool)> completion);
    ~AnimationGroup();

    double duration() const { return duration_; }
    /// The progress after `elapsed` seconds, 0 to 1, by the group's curve.
    double progress(double elapsed) const;
    void animationBegan() { ++running_; }
    void animationEnded(bool finished);
    /// All changes have been made. When none of them animates, the completion runs in a later turn.
    void close();
    /// The group of the innermost running `animate`; null outside of `animate`.
    static AnimationGroup* current();

private:
    friend class ViewAnimator;
    void complete();
    double duration_;
    UIViewAnimationCurve curve_;
    std::function<void(bool)> completion_;
    int running_ = 0;
    bool closed_ = false;
    bool finished_ = true;
};

/// The running animations of one window: computes the presentation values that are shown until they reach the
/// model values in the views' states. Owned by the window. The time is that of the window's frames. Main
/// thread.
class ViewAnimator final {
public:
    /// Seconds after its planned end at which an animation ends without frames of the display (a hidden
    /// window).
    static constexpr double graceWithoutFrames = 0.5;

    enum class Property { frame, boundsOrigin, transform, alpha, backgroundColor };

    explicit ViewAnimator(UIWindow& window);
    ~ViewAnimator();

    /// `property` of `view` is about to change. Within `UIView::animate` an animation begins at the value
    /// that is shown now; otherwise a running animation of the property ends.
    void propertyWillChange(UIView& view, Property property);
    bool isAnimating() const { return !animations_.empty(); }
    bool isAnimating(const UIView& view) const { return animations_.contains(const_cast<UIView*>(&view)); }
    /// Replaces the animated values in `state`, a copy of the view's state, by their presentation values.
    void applyPresentation(const UIView& view, ViewState& state) const;
    /// Advances all animations to `time`.
    void frame(double time);
    /// Ends the animations of a view that has left the window.
    void viewLeft(UIView& view);

private:
    using Value = std::variant<CGRect, CGPoint, CGAffineTransform, double, UIColor>;
    struct Animation {
        Property property;
        Value from;
        std::shared_ptr<AnimationGroup> group;
        double start = -1;  ///< the first frame's time
        double progress = 0;
    };

    static Value modelValue(const ViewState& state, Property property);
    static Value presentationValue(const ViewState& state, const Animation& animation);
    static std::uint32_t changeOf(Property property);
    void endAll(const std::weak_ptr<AnimationGroup>& group);
    template <class Ends>
    void removeIf(bool finished, const Ends& ends);

    UIWindow& window_;
    std::unordered_map<UIView*, std::vector<Animation>> animations_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace ostrel
