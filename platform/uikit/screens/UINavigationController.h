#pragma once

#include "platform/uikit/screens/UIViewController.h"

namespace ostrel {

/// The bar above a stack of screens: title, back button, the top screen's items. A surface. Height 44 points below the
/// safe area (52 on the Mac idiom).
class UINavigationBar : public UIView {
public:
    explicit UINavigationBar(UINavigationController& owner);
    void initialise();
    bool isTranslucent() const { return translucent_; }
    void setTranslucent(bool translucent);
    void setTintColor(UIColor color);
    /// Shows the items of `top`; `back` is the title of the screen below it, absent at the root.
    void show(UIViewController* top, const std::optional<std::string>& back);
    /// Begins to change to the items of `top`; `setChangeProgress` (0 to 1) moves between both, `endChange` keeps one.
    void beginChange(UIViewController* top, const std::optional<std::string>& back, bool forward);
    void setChangeProgress(double progress);
    void endChange(bool completed);
    /// The height of the part below the safe area, points.
    static CGFloat barHeight();
    void layoutSubviews() override;

private:
    void itemsDidChange();
    void watch(UIViewController& top);
    UINavigationController& owner_;
    bool translucent_ = true;
    struct Parts;
    std::shared_ptr<Parts> parts_;
};

/// A stack of screens of which the top is shown. Back by button, by a drag from the left edge, by Escape, Alt+Left,
/// Command+[ and the back key. One change at a time: a call during a change completes that one at once. Main thread.
class UINavigationController : public UIViewController {
public:
    explicit UINavigationController(std::shared_ptr<UIViewController> root);
    ~UINavigationController() override;
    void initialise();

    /// Logs a line and does nothing when `controller` is shown elsewhere already.
    void pushViewController(const std::shared_ptr<UIViewController>& controller, bool animated);
    /// The screen that left; null at the root.
    std::shared_ptr<UIViewController> popViewControllerAnimated(bool animated);
    void popToRootViewControllerAnimated(bool animated);
    const std::shared_ptr<UIViewController>& topViewController() const { return stack_.back(); }
    const std::vector<std::shared_ptr<UIViewController>>& viewControllers() const { return stack_; }
    const std::shared_ptr<UINavigationBar>& navigationBar() const { return bar_; }
    /// A view as wide as the bar and `height` points high that can be shown under it, above every screen of the stack;
    /// it begins hidden. Null removes it.
    void setAccessoryView(std::shared_ptr<UIView> view, CGFloat height);
    /// Shows or hides the accessory; the screens below move within `seconds`.
    void setAccessoryShown(bool shown, double seconds);

    void loadView() override;
    void viewDidLoad() override;
    void viewWillAppear(bool animated) override;
    void viewDidAppear(bool animated) override;
    void viewWillDisappear(bool animated) override;
    void viewDidDisappear(bool animated) override;
    void viewDidLayoutSubviews() override;
    bool shouldAutomaticallyForwardAppearanceMethods() const override { return false; }
    bool pressesBegan(const UIPress& press) override;
    /// Goes back; at the root it dismisses a popover. The top screen is asked before it.
    bool cancelOperation() override;

private:
    struct Transition;
    void layoutTop();
    /// The frame of a screen in the content view.
    CGRect screenFrame(const UIViewController& screen) const;
    void showBar();
    std::optional<std::string> backTitle() const;
    bool popTo(std::size_t count, bool animated);
    void transition(std::unique_ptr<Transition> change, bool animated);
    void install(Transition& change);
    void applyProgress(double progress);
    void animateRest(double from, double duration);
    void cancelTransition();
    void finishTransition();
    void handlePan(class UIPanGestureRecognizer& pan);
    std::vector<std::shared_ptr<UIViewController>> stack_;
    std::shared_ptr<UINavigationBar> bar_;
    std::shared_ptr<UIView> content_, dim_, edge_;
    std::shared_ptr<UIView> accessory_;
    CGFloat accessoryHeight_ = 0;
    bool isAccessoryShown_ = false;
    std::unique_ptr<Transition> transition_;
    /// Tells the end of an animation whether its change is still the present one.
    std::uint64_t generation_ = 0;
};

}  // namespace ostrel
