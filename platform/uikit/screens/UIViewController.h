#pragma once

#include "platform/uikit/screens/PresentationLayout.h"
#include "platform/uikit/screens/UIBarButtonItem.h"
#include "platform/uikit/view/UIView.h"
#include "platform/uikit/view/ViewOwner.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace ostrel {

class UINavigationController;

enum class UIModalPresentationStyle { fullScreen, overFullScreen, formSheet, popover };

/// Where a popover points to. Without a source view it is shown in the middle.
struct UIPopoverPresentation {
    std::weak_ptr<UIView> sourceView;
    CGRect sourceRect;
    std::weak_ptr<UIBarButtonItem> barButtonItem;
};

/// Owns a screen: a view, its life on screen, and the screens presented over it. Held by the navigation controller, the
/// window or the presenting controller. Main thread.
class UIViewController : public ViewOwner, public std::enable_shared_from_this<UIViewController> {
public:
    UIViewController() = default;
    ~UIViewController() override;

    /// The view, made on first need by `loadView`, followed by `viewDidLoad`.
    const std::shared_ptr<UIView>& view();
    bool isViewLoaded() const { return view_ != nullptr; }
    virtual void loadView();
    virtual void viewDidLoad() {}
    virtual void viewWillAppear(bool /*animated*/) {}
    virtual void viewDidAppear(bool /*animated*/) {}
    virtual void viewWillDisappear(bool /*animated*/) {}
    virtual void viewDidDisappear(bool /*animated*/) {}
    void viewDidLayoutSubviews() override {}
    /// The window is about to change its size; the default tells the children.
    void viewWillTransitionToSize(CGSize size) override;

    const std::string& title() const { return title_; }
    void setTitle(std::string title);
    UINavigationItem& navigationItem() { return *navigationItem_; }
    /// The navigation controller this screen is in; null when it is in none.
    UINavigationController* navigationController() const;
    UIViewController* parentViewController() const { return parent_; }
    const std::vector<std::shared_ptr<UIViewController>>& childViewControllers() const { return children_; }
    void addChildViewController(const std::shared_ptr<UIViewController>& child);
    void removeFromParentViewController();
    /// This screen became a child of `parent`; null when it was removed or its parent was destroyed.
    virtual void didMoveToParentViewController(UIViewController* /*parent*/) {}
    /// Sends the appearance calls: will and did appear (or disappear), each once per change; a call that changes
    /// nothing is ignored. A change that is taken back before its end is reported as such: will disappear, will appear,
    /// did appear.
    void beginAppearanceTransition(bool appearing, bool animated);
    void endAppearanceTransition();
    bool isAppeared() const { return appearance_ == Appearance::appeared; }
    /// Whether the children whose views are within this screen's get its appearance calls, after it. False for a
    /// container that sends them itself.
    virtual bool shouldAutomaticallyForwardAppearanceMethods() const { return true; }

    /// Whether a navigation controller lays this screen out over its whole view, under its bar too. Set before it is
    /// shown.
    bool extendsUnderNavigationBar = false;

    // Presentation
    UIModalPresentationStyle modalPresentationStyle = UIModalPresentationStyle::fullScreen;
    UIPopoverPresentation popoverPresentationController;
    /// The size a popover or form sheet takes; 0 by 0: the platform's.
    CGSize preferredContentSize;
    /// To be called after a change of `preferredContentSize` while this screen is presented.
    void preferredContentSizeDidChange();
    /// Shows `controller` over this screen. Logs a line and does nothing when this screen presents one already, is in
    /// no window, or `controller` is presented elsewhere.
    void presentViewController(const std::shared_ptr<UIViewController>& controller, bool animated,
                               std::function<void()> completion = {});
    /// Dismisses the presented screen; without one, this screen or the presented screen that contains it, with all
    /// screens above. `completion` runs exactly once: after the last screen has disappeared, or in a later turn of the
    /// run loop when no screen can be dismissed.
    void dismissViewControllerAnimated(bool animated, std::function<void()> completion = {});
    const std::shared_ptr<UIViewController>& presentedViewController() const { return presented_; }
    /// The screen that presented this one or its outermost parent; null when none did.
    UIViewController* presentingViewController() const;
    /// Whether Escape, the back key or a tap beside a popover may close it (a form sheet and full screen: the key only,
    /// through `cancelOperation`).
    virtual bool isDismissableByUser() const { return true; }
    /// Escape was pressed, or a tap ended outside of the screen: the default dismisses a popover.
    bool cancelOperation() override;

    UIResponder* nextResponder() const override;
    std::shared_ptr<ViewOwner> sharedOwner() override { return weak_from_this().lock(); }

protected:
    enum class Appearance { disappeared, appearing, appeared, disappearing };
    Appearance appearance() const { return appearance_; }
    void setView(std::shared_ptr<UIView> view);
    /// How this screen is shown when presented; the default follows `modalPresentationStyle` and the idiom.
    virtual PresentationKind presentationKind() const;

private:
    friend class PresentationController;
    void enterWindow(UIWindow& window) override;
    void leaveWindow() override;
    /// Takes down at once what this screen and its children present, for it leaves its window.
    void endPresentations();
    void forwardAppearance(const std::function<void(UIViewController&)>& call);

    std::shared_ptr<UIView> view_;
    std::string title_;
    std::unique_ptr<UINavigationItem> navigationItem_ = std::make_unique<UINavigationItem>();
    UIViewController* parent_ = nullptr;
    std::vector<std::shared_ptr<UIViewController>> children_;
    std::shared_ptr<UIViewController> presented_;
    UIViewController* presenting_ = nullptr;
    std::shared_ptr<class PresentationController> presentation_;
    Appearance appearance_ = Appearance::disappeared;
    bool appearanceAnimated_ = false;
    int coverCount_ = 0;  ///< full-screen presentations that hide this outermost screen
};

}  // namespace ostrel
