#include "platform/uikit/screens/UIViewController.h"

#include "platform/foundation/runloop/NSLog.h"
#include "platform/foundation/runloop/RunLoop.h"
#include "platform/uikit/screens/PresentationController.h"
#include "platform/uikit/screens/UINavigationController.h"
#include "platform/uikit/view/UIDevice.h"
#include "platform/uikit/view/UIWindow.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace ostrel {

UIViewController::~UIViewController() {
    if (presentation_) presentation_->abandon();
    if (view_) view_->setOwner(nullptr);
    for (const auto& child : std::exchange(children_, {})) {
        child->parent_ = nullptr;
        child->didMoveToParentViewController(nullptr);
    }
}

const std::shared_ptr<UIView>& UIViewController::view() {
    if (!view_) {
        loadView();
        if (!view_) UIViewController::loadView();
        viewDidLoad();
    }
    return view_;
}

void UIViewController::loadView() {
    auto view = make<UIView>();
    view->setBackgroundColor(UIColor::systemBackground());
    setView(std::move(view));
}

void UIViewController::setView(std::shared_ptr<UIView> view) {
    assert(view);
    if (view_) view_->setOwner(nullptr);
    view_ = std::move(view);
    view_->setOwner(this);
}

void UIViewController::setTitle(std::string title) {
    title_ = title;
    navigationItem_->setTitle(std::move(title));
}

UINavigationController* UIViewController::navigationController() const {
    for (auto* parent = parent_; parent; parent = parent->parent_) {
        if (auto* navigation = dynamic_cast<UINavigationController*>(parent)) return navigation;
    }
    return nullptr;
}

void UIViewController::addChildViewController(const std::shared_ptr<UIViewController>& child) {
    assert(child && child.get() != this);
    if (child->parent_ == this) return;
    child->removeFromParentViewController();
    child->parent_ = this;
    children_.push_back(child);
    child->didMoveToParentViewController(this);
}

void UIViewController::removeFromParentViewController() {
    if (!parent_) return;
    auto& siblings = parent_->children_;
    parent_ = nullptr;
    const auto self = std::ranges::find(siblings, this, &std::shared_ptr<UIViewController>::get);
    if (self == siblings.end()) return;
    const auto keptAlive = *self;
    siblings.erase(self);
    didMoveToParentViewController(nullptr);
}

std::shared_ptr<UIViewController> UIWindow::rootViewController() const {
    return std::static_pointer_cast<UIViewController>(root_);
}

void UIWindow::setRootViewController(const std::shared_ptr<UIViewController>& controller) { setRootOwner(controller); }

void UIViewController::enterWindow(UIWindow& window) {
    const auto& view = this->view();
    view->setFrame({{0, 0}, window.frame().size});
    view->setAutoresizingMask(flexibleWidth | flexibleHeight);
    beginAppearanceTransition(true, false);
    window.insertSubview(view, 0);
    endAppearanceTransition();
}

void UIViewController::leaveWindow() {
    endPresentations();
    beginAppearanceTransition(false, false);
    if (view_) view_->removeFromSuperview();
    endAppearanceTransition();
}

void UIViewController::viewWillTransitionToSize(CGSize size) {
    const auto children = children_;
    for (const auto& child : children) child->viewWillTransitionToSize(size);
}

void UIViewController::forwardAppearance(const std::function<void(UIViewController&)>& call) {
    if (!shouldAutomaticallyForwardAppearanceMethods() || !view_) return;
    const auto children = children_;
    for (const auto& child : children) {
        if (child->view_ && child->view_->isDescendantOfView(*view_)) call(*child);
    }
}

void UIViewController::beginAppearanceTransition(bool appearing, bool animated) {
    const auto keptAlive = weak_from_this().lock();
    const auto under = appearing ? Appearance::appearing : Appearance::disappearing;
    const auto reached = appearing ? Appearance::appeared : Appearance::disappeared;
    if (appearance_ == under || appearance_ == reached) return;
    appearance_ = under;
    appearanceAnimated_ = animated;
    if (appearing) {
        view();
        viewWillAppear(animated);
    } else {
        viewWillDisappear(animated);
    }
    if (appearance_ != under) return;
    forwardAppearance([=](UIViewController& child) { child.beginAppearanceTransition(appearing, animated); });
}

void UIViewController::endAppearanceTransition() {
    const auto keptAlive = weak_from_this().lock();
    if (appearance_ == Appearance::appearing) {
        appearance_ = Appearance::appeared;
        viewDidAppear(appearanceAnimated_);
    } else if (appearance_ == Appearance::disappearing) {
        appearance_ = Appearance::disappeared;
        viewDidDisappear(appearanceAnimated_);
    } else {
        return;
    }
    forwardAppearance([](UIViewController& child) { child.endAppearanceTransition(); });
}

PresentationKind UIViewController::presentationKind() const {
    const bool isPhone = UIDevice::currentDevice().userInterfaceIdiom() == UIUserInterfaceIdiom::phone;
    switch (modalPresentationStyle) {
    case UIModalPresentationStyle::fullScreen:
    case UIModalPresentationStyle::overFullScreen: return PresentationKind::cover;
    case UIModalPresentationStyle::formSheet: return isPhone ? PresentationKind::sheet : PresentationKind::card;
    case UIModalPresentationStyle::popover: return isPhone ? PresentationKind::sheet : PresentationKind::popover;
    }
    return PresentationKind::cover;
}

void UIViewController::presentViewController(const std::shared_ptr<UIViewController>& controller, bool animated,
                                             std::function<void()> completion) {
    if (!controller) return NSLog("Attempt to present no screen.");
    const auto keptAlive = weak_from_this().lock();
    // A screen that is being dismissed ends its animation at once in favour of the new one.
    if (presentation_ && presentation_->isDismissing()) presentation_->finish();
    if (controller->presenting_ && controller->presenting_->presentation_->isDismissing()) {
        controller->presenting_->presentation_->finish();
    }
    if (presented_) return NSLog("Attempt to present a screen over one that presents another already.");
    UIWindow* const window = view_ ? view_->window() : nullptr;
    if (!window) return NSLog("Attempt to present a screen over one that is in no window.");
    if (controller.get() == this || controller->presenting_ || controller->parent_ ||
        (controller->view_ && controller->view_->window())) {
        return NSLog("Attempt to present a screen that is shown elsewhere already.");
    }
    // The view is loaded first, because `viewDidLoad` may itself present or dismiss a screen.
    controller->view();
    if (presented_ || controller->presenting_) return;
    presented_ = controller;
    controller->presenting_ = this;
    presentation_ = std::make_shared<PresentationController>(*this, controller);
    const auto presentation = presentation_;
    presentation->present(*window, animated, std::move(completion));
}

void UIViewController::dismissViewControllerAnimated(bool animated, std::function<void()> completion) {
    const auto keptAlive = weak_from_this().lock();
    if (presentation_) {
        const auto presentation = presentation_;
        return presentation->dismiss(animated, std::move(completion));
    }
    for (auto* screen = this; screen; screen = screen->parent_) {
        if (!screen->presenting_) continue;
        const auto presentation = screen->presenting_->presentation_;
        return presentation->dismiss(animated, std::move(completion));
    }
    // The screen was dismissed already; the completion still runs.
    if (completion && RunLoop::hasMain()) RunLoop::main().perform(std::move(completion));
}

void UIViewController::endPresentations() {
    if (const auto presentation = presentation_) {
        presentation->dismiss(false, {});
        presentation->finish();
    }
    const auto children = children_;
    for (const auto& child : children) child->endPresentations();
}

UIViewController* UIViewController::presentingViewController() const {
    for (const auto* screen = this; screen; screen = screen->parent_) {
        if (screen->presenting_) return screen->presenting_;
    }
    return nullptr;
}

void UIViewController::preferredContentSizeDidChange() {
    if (presenting_) presenting_->presentation_->setNeedsLayout();
}

bool UIViewController::cancelOperation() {
    if (!presenting_ || modalPresentationStyle != UIModalPresentationStyle::popover || !isDismissableByUser()) {
        return false;
    }
    dismissViewControllerAnimated(true);
    return true;
}

UIResponder* UIViewController::nextResponder() const { return view_ ? view_->superview() : nullptr; }

}  // namespace ostrel
