#include "platform/uikit/screens/UINavigationController.h"

#include "platform/foundation/runloop/NSLog.h"
#include "platform/uikit/view/UIDevice.h"
#include "platform/uikit/view/UIGestureRecognizer.h"
#include "platform/uikit/view/UIWindow.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace ostrel {

namespace {

constexpr double slideSeconds = 0.3;
constexpr double fadeSeconds = 0.18;
constexpr double leastSeconds = 0.1;
constexpr CGFloat parallax = 0.3;
constexpr CGFloat edgeGestureWidth = 24;
constexpr CGFloat backSwipeVelocity = 300;
constexpr CGFloat backDragThreshold = 0.5;

bool hasMacIdiom() { return UIDevice::currentDevice().userInterfaceIdiom() == UIUserInterfaceIdiom::mac; }

/// The distance of the laid-out view from the upper edge of its window, without the movement of an animation.
CGFloat distanceFromTop(const UIView& view) {
    CGFloat distance = 0;
    for (const UIView* each = &view; each->superview(); each = each->superview()) {
        distance += each->frame().minY() - each->superview()->bounds().minY();
    }
    return distance;
}

void resignWithin(const UIView& screen) {
    UIView* const responder = screen.window() ? screen.window()->firstResponder() : nullptr;
    if (responder && responder->isDescendantOfView(screen)) responder->resignFirstResponder();
}

}  // namespace

/// One screen taking the place of another at the top of the stack.
struct UINavigationController::Transition {
    std::shared_ptr<UIViewController> from, to;
    bool push = true;
    std::vector<std::shared_ptr<UIViewController>> leaving;  ///< leave the stack with it
    bool fades = hasMacIdiom();
    bool isInteractive = false;  ///< a finger is still deciding
    bool isCancelled = false;
    double progress = 0;
};

UINavigationController::UINavigationController(std::shared_ptr<UIViewController> root) {
    assert(root);
    if (!root) root = make<UIViewController>();
    stack_.push_back(std::move(root));
    bar_ = make<UINavigationBar>(*this);
}

UINavigationController::~UINavigationController() = default;

void UINavigationController::initialise() { addChildViewController(stack_.front()); }

void UINavigationController::loadView() {
    UIViewController::loadView();
    view()->setBackgroundColor(UIColor::groupedBackground());
}

void UINavigationController::viewDidLoad() {
    content_ = make<UIView>();
    content_->setClipsToBounds(true);
    view()->addSubview(content_);
    if (accessory_) view()->addSubview(accessory_);
    view()->addSubview(bar_);
    dim_ = make<UIView>();
    dim_->setBackgroundColor(UIColor::black().withAlpha(0.1f));
    dim_->setAutoresizingMask(flexibleWidth | flexibleHeight);
    edge_ = make<UIView>();
    edge_->setBackgroundColor(UIColor::separator());
    edge_->setShadow({.color = UIColor::black().withAlpha(0.2f), .radius = 8, .offset = {-2, 0}});
    edge_->setAutoresizingMask(flexibleHeight);

    const auto self = [weak = weak_from_this()] {
        return std::static_pointer_cast<UINavigationController>(weak.lock());
    };
    auto pan = make<UIPanGestureRecognizer>([self](UIGestureRecognizer& recognizer) {
        if (const auto owner = self()) owner->handlePan(static_cast<UIPanGestureRecognizer&>(recognizer));
    });
    pan->axis = UIPanGestureRecognizer::Axis::horizontal;
    pan->edgeWidth = edgeGestureWidth;
    pan->allowsPointer = !hasMacIdiom();
    pan->shouldBegin = [self](UIGestureRecognizer& recognizer) {
        const auto owner = self();
        const bool goesRight = static_cast<UIPanGestureRecognizer&>(recognizer).velocity().x >= 0;
        return owner && goesRight && owner->stack_.size() > 1 && !owner->transition_ && owner->isAppeared();
    };
    view()->addGestureRecognizer(pan);
    showBar();
}

void UINavigationController::layoutTop() {
    const CGSize size = view()->bounds().size;
    const UIWindow* const window = view()->window();
    const CGFloat covered = window ? std::max(0.0, window->safeAreaInsets().top - distanceFromTop(*view())) : 0;
    const CGFloat top = covered + UINavigationBar::barHeight();
    bar_->setFrame({0, 0, size.width, std::min(top, size.height)});
    const CGFloat extra = isAccessoryShown_ ? accessoryHeight_ : 0;
    // A hidden accessory lies behind the bar.
    if (accessory_) accessory_->setFrame({0, top + extra - accessoryHeight_, size.width, accessoryHeight_});
    content_->setFrame({0, top + extra, size.width, std::max(0.0, size.height - top - extra)});
    const auto& shown = topViewController()->view();
    if (!shown->superview()) content_->addSubview(shown);
    for (const auto& screen : content_->subviews()) {
        if (auto* const owner = dynamic_cast<UIViewController*>(screen->owner())) screen->setFrame(screenFrame(*owner));
    }
}

void UINavigationController::setAccessoryView(std::shared_ptr<UIView> view, CGFloat height) {
    if (accessory_) accessory_->removeFromSuperview();
    accessory_ = std::move(view);
    accessoryHeight_ = accessory_ ? height : 0;
    isAccessoryShown_ = false;
    if (accessory_) accessory_->setHidden(true);
    if (!isViewLoaded()) return;
    if (accessory_) this->view()->insertSubview(accessory_, 1);
    layoutTop();
}

void UINavigationController::setAccessoryShown(bool shown, double seconds) {
    if (!accessory_ || shown == std::exchange(isAccessoryShown_, shown)) return;
    if (shown) accessory_->setHidden(false);
    const auto hideAtEnd = [weak = weak_from_this()](bool) {
        const auto self = std::static_pointer_cast<UINavigationController>(weak.lock());
        if (self && self->accessory_ && !self->isAccessoryShown_) self->accessory_->setHidden(true);
    };
    if (!isViewLoaded() || !view()->window()) {
        if (isViewLoaded()) layoutTop();
        return hideAtEnd(true);
    }
    UIView::animate(
        seconds,
        [this] {
            layoutTop();
            view()->layoutIfNeeded();
        },
        hideAtEnd, UIViewAnimationCurve::easeOut);
}

CGRect UINavigationController::screenFrame(const UIViewController& screen) const {
    const CGSize size = content_->frame().size;
    // The part below the opaque bar is clipped, because it is invisible there.
    const CGFloat under = screen.extendsUnderNavigationBar ? content_->frame().minY() : 0;
    return {0, -under, size.width, size.height + under};
}

std::optional<std::string> UINavigationController::backTitle() const {
    if (stack_.size() < 2) return std::nullopt;
    UIViewController& below = *stack_[stack_.size() - 2];
    const std::string& own = below.navigationItem().title();
    return own.empty() ? below.title() : own;
}

void UINavigationController::showBar() { bar_->show(stack_.back().get(), backTitle()); }

void UINavigationController::pushViewController(const std::shared_ptr<UIViewController>& controller, bool animated) {
    if (!controller) return;
    const auto self = weak_from_this().lock();
    const auto pushed = controller;
    finishTransition();
    if (pushed->parentViewController() || pushed->presentingViewController() || pushed.get() == this) {
        return NSLog("Attempt to push a screen that is shown elsewhere already.");
    }
    auto change = std::make_unique<Transition>();
    change->from = stack_.back();
    change->to = pushed;
    stack_.push_back(pushed);
    addChildViewController(pushed);
    transition(std::move(change), animated);
}

std::shared_ptr<UIViewController> UINavigationController::popViewControllerAnimated(bool animated) {
    const auto self = weak_from_this().lock();
    finishTransition();
    auto left = stack_.back();
    return popTo(stack_.size() - 1, animated) ? left : nullptr;
}

void UINavigationController::popToRootViewControllerAnimated(bool animated) {
    const auto self = weak_from_this().lock();
    finishTransition();
    popTo(1, animated);
}

bool UINavigationController::popTo(std::size_t count, bool animated) {
    if (count < 1 || count >= stack_.size()) return false;
    auto change = std::make_unique<Transition>();
    change->push = false;
    change->from = stack_.back();
    change->leaving.assign(stack_.begin() + static_cast<std::ptrdiff_t>(count), stack_.end());
    stack_.resize(count);
    change->to = stack_.back();
    transition(std::move(change), animated);
    return true;
}

void UINavigationController::transition(std::unique_ptr<Transition> change, bool animated) {
    if (!isViewLoaded()) {
        for (const auto& screen : change->leaving) screen->removeFromParentViewController();
        return;
    }
    const auto generation = ++generation_;
    const auto from = change->from, to = change->to;
    const bool push = change->push;
    transition_ = std::move(change);
    // Before this controller itself has appeared, the change of screens is invisible and needs no animation.
    const bool isSeen = isAppeared();
    const bool moves = isSeen && animated && view()->window();
    if (!isSeen) {
        if (appearance() == Appearance::appearing) {
            from->beginAppearanceTransition(false, false);
            if (generation == generation_) to->beginAppearanceTransition(true, false);
        }
        if (generation == generation_) finishTransition();
        return;
    }
    resignWithin(*from->view());
    if (generation != generation_) return;
    from->beginAppearanceTransition(false, moves);
    if (generation != generation_) return;
    to->beginAppearanceTransition(true, moves);
    if (generation != generation_) return;
    if (!moves) return finishTransition();
    install(*transition_);
    bar_->beginChange(to.get(), backTitle(), push);
    transition_->progress = 1;
    animateRest(0, transition_->fades ? fadeSeconds : slideSeconds);
}

void UINavigationController::install(Transition& change) {
    const CGRect bounds = content_->bounds();
    const auto& upper = change.push ? change.to->view() : change.from->view();
    const auto& lower = change.push ? change.from->view() : change.to->view();
    content_->setUserInteractionEnabled(false);
    change.to->view()->setFrame(screenFrame(*change.to));
    content_->addSubview(lower);
    if (!change.fades) {
        dim_->setFrame(bounds);
        edge_->setFrame({-0.5, 0, 0.5, bounds.height()});
        content_->addSubview(dim_);
        content_->addSubview(edge_);
    }
    content_->addSubview(upper);
    change.to->view()->layoutIfNeeded();
}

void UINavigationController::applyProgress(double progress) {
    const auto& upper = transition_->push ? transition_->to->view() : transition_->from->view();
    const auto& lower = transition_->push ? transition_->from->view() : transition_->to->view();
    const double covered = transition_->push ? progress : 1 - progress;
    if (transition_->fades) {
        upper->setAlpha(covered);
    } else {
        const CGFloat width = content_->bounds().width();
        const auto moved = CGAffineTransform::translation((1 - covered) * width, 0);
        upper->setTransform(moved);
        edge_->setTransform(moved);
        lower->setTransform(CGAffineTransform::translation(-parallax * width * covered, 0));
        dim_->setAlpha(covered);
    }
    bar_->setChangeProgress(progress);
}

void UINavigationController::animateRest(double from, double duration) {
    applyProgress(from);
    const double target = transition_->progress;
    UIView::animate(
        duration, [this, target] { applyProgress(target); },
        [weak = weak_from_this(), generation = generation_](bool) {
            const auto self = std::static_pointer_cast<UINavigationController>(weak.lock());
            if (self && self->generation_ == generation) self->finishTransition();
        },
        UIViewAnimationCurve::easeOut);
}

void UINavigationController::cancelTransition() {
    if (transition_->isCancelled) return;
    transition_->isCancelled = true;
    const auto from = transition_->from, to = transition_->to;
    stack_.push_back(from);
    const auto generation = generation_;
    to->beginAppearanceTransition(false, true);
    if (generation == generation_) from->beginAppearanceTransition(true, true);
}

void UINavigationController::finishTransition() {
    const auto self = weak_from_this().lock();
    // An interrupted drag decides nothing: the screen that was shown stays.
    if (transition_ && transition_->isInteractive) cancelTransition();
    if (!transition_) return;
    const auto change = std::exchange(transition_, nullptr);
    ++generation_;
    for (const auto& screen : {change->from, change->to}) {
        if (!screen->isViewLoaded()) continue;
        screen->view()->setTransform({});
        if (change->fades) screen->view()->setAlpha(1);
    }
    dim_->removeFromSuperview();
    edge_->removeFromSuperview();
    content_->setUserInteractionEnabled(true);
    const auto& gone = change->isCancelled ? change->to : change->from;
    const auto& kept = change->isCancelled ? change->from : change->to;
    if (gone->isViewLoaded()) gone->view()->removeFromSuperview();
    layoutTop();
    bar_->endChange(!change->isCancelled);
    showBar();
    for (const auto& screen : change->leaving) {
        if (!change->isCancelled && screen != change->from) screen->removeFromParentViewController();
    }
    gone->endAppearanceTransition();
    // While this controller is still appearing, the end of its own appearance tells the top screen.
    if (isAppeared()) kept->endAppearanceTransition();
    if (!change->push && !change->isCancelled) change->from->removeFromParentViewController();
}

void UINavigationController::handlePan(UIPanGestureRecognizer& pan) {
    const auto self = weak_from_this().lock();
    if (pan.state() == UIGestureRecognizerState::began) {
        if (transition_ || stack_.size() < 2) return;
        transition_ = std::make_unique<Transition>();
        transition_->push = false;
        transition_->fades = false;
        transition_->isInteractive = true;
        const auto from = transition_->from = stack_.back();
        transition_->leaving = {from};
        stack_.pop_back();
        const auto to = transition_->to = stack_.back();
        const auto generation = ++generation_;
        resignWithin(*from->view());
        if (generation == generation_) from->beginAppearanceTransition(false, true);
        if (generation == generation_) to->beginAppearanceTransition(true, true);
        if (generation != generation_) return;
        install(*transition_);
        bar_->beginChange(to.get(), backTitle(), false);
    }
    if (!transition_ || !transition_->isInteractive) return;
    const CGFloat width = std::max(1.0, content_->bounds().width());
    const double progress = std::clamp(pan.translation().x / width, 0.0, 1.0);
    if (pan.state() == UIGestureRecognizerState::began || pan.state() == UIGestureRecognizerState::changed) {
        return applyProgress(progress);
    }
    const CGFloat velocity = pan.velocity().x;
    const bool completes = pan.state() == UIGestureRecognizerState::ended && velocity > -backSwipeVelocity &&
                           (velocity > backSwipeVelocity || progress > backDragThreshold);
    transition_->isInteractive = false;
    const auto generation = generation_;
    if (!completes) cancelTransition();
    if (generation != generation_) return;
    transition_->progress = completes ? 1 : 0;
    animateRest(progress, std::max(leastSeconds, slideSeconds * (completes ? 1 - progress : progress)));
}

void UINavigationController::viewWillAppear(bool animated) {
    UIViewController::viewWillAppear(animated);
    finishTransition();
    layoutTop();
    const auto top = topViewController();
    top->beginAppearanceTransition(true, animated);
}

void UINavigationController::viewDidAppear(bool animated) {
    UIViewController::viewDidAppear(animated);
    const auto top = topViewController();
    top->endAppearanceTransition();
}

void UINavigationController::viewWillDisappear(bool animated) {
    UIViewController::viewWillDisappear(animated);
    finishTransition();
    const auto top = topViewController();
    top->beginAppearanceTransition(false, animated);
}

void UINavigationController::viewDidDisappear(bool animated) {
    UIViewController::viewDidDisappear(animated);
    const auto top = topViewController();
    top->endAppearanceTransition();
}

void UINavigationController::viewDidLayoutSubviews() {
    UIViewController::viewDidLayoutSubviews();
    layoutTop();
}

bool UINavigationController::pressesBegan(const UIPress& press) {
    const UIKey& key = press.key;
    const bool goesBack = (key.code == UIKeyCode::left && key.modifiers == modifierAlternate) ||
                          (key.characters == "[" && key.modifiers == modifierCommand);
    if (goesBack && stack_.size() > 1) {
        popViewControllerAnimated(true);
        return true;
    }
    return UIViewController::pressesBegan(press);
}

bool UINavigationController::cancelOperation() {
    if (stack_.size() > 1) {
        popViewControllerAnimated(true);
        return true;
    }
    return UIViewController::cancelOperation();
}

}  // namespace ostrel
