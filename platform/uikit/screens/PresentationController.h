#pragma once

#include "platform/uikit/screens/UIViewController.h"

#include <functional>
#include <memory>
#include <vector>

namespace ostrel {

/// One screen shown over another, from its presentation to the end of its dismissal: the views around it, its movement,
/// and the appearance calls of both screens. The window keeps keys and focus within it. Held by the presenting
/// screen. Main thread.
class PresentationController final : public std::enable_shared_from_this<PresentationController> {
public:
    PresentationController(UIViewController& presenter, std::shared_ptr<UIViewController> presented);
    ~PresentationController();

    /// Once. `completion` runs after the screen did appear.
    void present(UIWindow& window, bool animated, std::function<void()> completion);
    /// Dismisses the screen and everything that it presents itself. `completion` runs when the screen has left; a
    /// further call during the dismissal only adds its completion. Each completion runs exactly once.
    void dismiss(bool animated, std::function<void()> completion);
    /// Ends a running animation at once; does nothing without one.
    void finish();
    /// The presenting screen leaves: everything is removed without an animation.
    void abandon();

    bool isDismissing() const { return phase_ == Phase::dismissing; }
    PresentationKind kind() const { return kind_; }
    /// Places the screen for the present size of the window.
    void layout();
    /// Asks for a new layout of the presentation before the next flush.
    void setNeedsLayout();
    /// A touch ended outside of the presented screen.
    void tappedBeside();

private:
    enum class Phase { presenting, presented, dismissing, gone };
    enum class Uncovers { no, yes };
    class Container;

    void build(UIWindow& window);
    void dismiss(bool animated, Uncovers uncovers, std::function<void()> completion);
    void animate(bool shown);
    void applyLook(bool shown);
    void finishPresenting();
    void finishDismissing();
    void releaseCover();
    void takeDown();
    void runCompletions();
    std::optional<CGRect> anchor() const;

    UIViewController* presenter_;
    const std::shared_ptr<UIViewController> presented_;
    PresentationKind kind_ = PresentationKind::cover;
    Phase phase_ = Phase::presenting;
    /// Tells the end of an animation whether its movement is still the present one.
    std::uint64_t generation_ = 0;
    Uncovers uncovers_ = Uncovers::yes;        ///< no: the presenting screen is leaving too
    bool covers_ = false;                      ///< counted in the covered screen's `coverCount_`
    std::weak_ptr<UIViewController> covered_;  ///< the outermost screen that a full-screen presentation hides
    std::vector<std::function<void()>> completions_;
    std::shared_ptr<Container> container_;
    std::shared_ptr<UIView> dim_, card_, clip_;
};

}  // namespace ostrel
