#include "platform/uikit/screens/PresentationController.h"

#include "platform/uikit/screens/UINavigationController.h"
#include "platform/uikit/view/UIDevice.h"
#include "platform/uikit/view/UIWindow.h"

#include <cassert>
#include <utility>

namespace ostrel {

namespace {

constexpr double presentationSlideSeconds = 0.32;
constexpr double presentationFadeSeconds = 0.2;
constexpr double smallScale = 0.94;
constexpr float dimAlpha = 0.28f;

bool isMacIdiom() { return UIDevice::currentDevice().userInterfaceIdiom() == UIUserInterfaceIdiom::mac; }

UIViewController* outermost(UIViewController* screen) {
    while (screen->parentViewController()) screen = screen->parentViewController();
    return screen;
}

/// The place of `rect` of `view` in the window after the layout of all its ancestors.
CGRect laidOutRect(UIView& view, const CGRect& rect) {
    UIView* top = &view;
    while (top->superview() && top->superview() != view.window()) top = top->superview();
    top->layoutIfNeeded();
    return view.convertRectToView(rect, nullptr);
}

struct CardLook {
    CGFloat radius = 0;
    bool dims = false, hasShadow = false, roundsBottom = true, isFilled = true;
};

CardLook lookOf(PresentationKind kind) {
    switch (kind) {
    case PresentationKind::cover: return {.isFilled = false};
    case PresentationKind::card: return {.radius = 12, .dims = true, .hasShadow = true};
    case PresentationKind::sheet: return {.radius = 14, .dims = true, .hasShadow = true, .roundsBottom = false};
    case PresentationKind::bareSheet: return {.dims = true, .isFilled = false};
    case PresentationKind::popover: return {.radius = 12, .hasShadow = true};
    case PresentationKind::alert: return {.radius = 14, .dims = true, .hasShadow = true};
    }
    return {};
}

bool slides(PresentationKind kind) {
    switch (kind) {
    case PresentationKind::cover:
    case PresentationKind::card: return !isMacIdiom();
    case PresentationKind::sheet:
    case PresentationKind::bareSheet: return true;
    case PresentationKind::popover:
    case PresentationKind::alert: return false;
    }
    return false;
}

}  // namespace

/// Covers the window, so that no touch reaches the views below, and holds the views of the presentation.
class PresentationController::Container final : public UIView {
public:
    explicit Container(PresentationController& owner) : owner_(&owner) {}

    void letGo() { owner_ = nullptr; }
    void setMoving(bool moving) { moving_ = moving; }

    void setFrame(const CGRect& frame) override {
        const bool resized = frame.size != this->frame().size;
        if (resized && owner_ && window()) owner_->presented_->viewWillTransitionToSize(frame.size);
        UIView::setFrame(frame);
        if (resized && owner_) owner_->layout();
    }
    void layoutSubviews() override {
        if (owner_) owner_->layout();
    }
    UIView* hitTest(CGPoint point) override {
        if (isHidden() || !pointInside(point)) return nullptr;
        UIView* const hit = moving_ ? nullptr : UIView::hitTest(point);
        return hit ? hit : this;
    }
    void touchesBegan(const UITouch&) override {}
    void touchesMoved(const UITouch&) override {}
    void touchesEnded(const UITouch& touch) override {
        if (!owner_ || moving_) return;
        const auto& card = owner_->card_->frame();
        if (!card.contains(touch.locationInView(*this)) &&
            !card.contains(convertPointFromWindow(touch.startLocation))) {
            owner_->tappedBeside();
        }
    }
    void touchesCancelled(const UITouch&) override {}
    /// Keys end here: no view below a presentation receives keys.
    bool pressesBegan(const UIPress&) override { return false; }
    bool pressesEnded(const UIPress&) override { return false; }

private:
    CGPoint convertPointFromWindow(CGPoint point) const {
        const CGPoint origin = convertPointToView({}, nullptr);
        return {point.x - origin.x, point.y - origin.y};
    }

    PresentationController* owner_;
    bool moving_ = false;
};

PresentationController::PresentationController(UIViewController& presenter, std::shared_ptr<UIViewController> presented)
    : presenter_(&presenter), presented_(std::move(presented)) {}

PresentationController::~PresentationController() {
    if (container_) container_->letGo();
}

void PresentationController::build(UIWindow& window) {
    kind_ = presented_->presentationKind();
    const auto& content = presented_->view();
    const CardLook look = lookOf(kind_);
    container_ = make<Container>(*this);
    container_->setAutoresizingMask(flexibleWidth | flexibleHeight);
    container_->setAccessibility(
        kind_ == PresentationKind::alert ? AccessibilityRole::alert : AccessibilityRole::window, presented_->title());
    dim_ = make<UIView>();
    dim_->setUserInteractionEnabled(false);
    if (look.dims) dim_->setBackgroundColor(UIColor::black().withAlpha(dimAlpha));
    card_ = make<UIView>();
    card_->setCornerRadius(look.radius);
    card_->setRoundedCorners(true, look.roundsBottom);
    if (look.isFilled) card_->setBackgroundColor(UIColor::systemBackground());
    if (look.hasShadow) {
        card_->setShadow({.color = UIColor::black().withAlpha(0.2f), .radius = 24, .offset = {0, 8}});
    }
    // The contents have a clipping view of their own, because the shadow lies outside of the rounded edge.
    clip_ = make<UIView>();
    clip_->setCornerRadius(look.radius);
    clip_->setRoundedCorners(true, look.roundsBottom);
    clip_->setClipsToBounds(look.radius > 0);
    clip_->addSubview(content);
    card_->addSubview(clip_);
    container_->addSubview(dim_);
    container_->addSubview(card_);
    container_->setFrame({{}, window.bounds().size});
    window.addSubview(container_);
    layout();
}

void PresentationController::present(UIWindow& window, bool animated, std::function<void()> completion) {
    const auto self = shared_from_this();
    if (completion) completions_.push_back(std::move(completion));
    build(window);
    container_->setMoving(true);
    const auto generation = ++generation_;
    const auto isCurrent = [&] { return phase_ == Phase::presenting && generation == generation_; };
    window.pushModalView(container_.get());
    if (!isCurrent()) return;

    UIViewController* const below = outermost(presenter_);
    if (presented_->modalPresentationStyle == UIModalPresentationStyle::fullScreen &&
        kind_ == PresentationKind::cover) {
        covered_ = below->weak_from_this();
        covers_ = true;
        ++below->coverCount_;
        below->beginAppearanceTransition(false, animated);
        if (!isCurrent()) return;
    }
    presented_->beginAppearanceTransition(true, animated);
    if (!isCurrent()) return;
    if (!animated) return finish();
    animate(true);
}

void PresentationController::dismiss(bool animated, std::function<void()> completion) {
    dismiss(animated, Uncovers::yes, std::move(completion));
}

void PresentationController::dismiss(bool animated, Uncovers uncovers, std::function<void()> completion) {
    const auto self = shared_from_this();
    if (phase_ == Phase::presenting) finish();
    if (completion) completions_.push_back(std::move(completion));
    if (phase_ == Phase::gone) return runCompletions();
    if (uncovers == Uncovers::no) uncovers_ = uncovers;
    if (phase_ == Phase::dismissing) return;
    phase_ = Phase::dismissing;
    const auto generation = ++generation_;
    const auto isCurrent = [&] { return phase_ == Phase::dismissing && generation == generation_; };
    container_->setMoving(true);
    if (UIWindow* const window = container_->window()) {
        UIView* const responder = window->firstResponder();
        if (responder && responder->isDescendantOfView(*container_)) responder->resignFirstResponder();
        if (!isCurrent()) return;
    }
    if (const auto above = presented_->presentation_) above->dismiss(animated, Uncovers::no, {});
    if (!isCurrent()) return;

    presented_->beginAppearanceTransition(false, animated);
    if (!isCurrent()) return;
    if (uncovers_ == Uncovers::yes && covers_) {
        const auto below = covered_.lock();
        releaseCover();
        if (below && below->coverCount_ == 0) below->beginAppearanceTransition(true, animated);
        if (!isCurrent()) return;
    }
    if (!animated) return finish();
    animate(false);
}

void PresentationController::animate(bool shown) {
    applyLook(!shown);
    const double seconds = slides(kind_) ? presentationSlideSeconds : presentationFadeSeconds;
    UIView::animate(
        seconds, [this, shown] { applyLook(shown); },
        [weak = weak_from_this(), generation = generation_](bool) {
            const auto self = weak.lock();
            if (self && self->generation_ == generation) self->finish();
        },
        shown ? UIViewAnimationCurve::easeOut : UIViewAnimationCurve::easeInOut);
}

void PresentationController::applyLook(bool shown) {
    dim_->setAlpha(shown ? 1 : 0);
    if (slides(kind_)) {
        const CGFloat way = container_->bounds().height() - card_->frame().minY();
        card_->setTransform(shown ? CGAffineTransform{} : CGAffineTransform::translation(0, way));
    } else {
        card_->setAlpha(shown ? 1 : 0);
        card_->setTransform(shown ? CGAffineTransform{} : CGAffineTransform::scale(smallScale, smallScale));
    }
}

void PresentationController::finish() {
    if (phase_ == Phase::presenting) {
        finishPresenting();
    } else if (phase_ == Phase::dismissing) {
        finishDismissing();
    }
}

void PresentationController::finishPresenting() {
    const auto self = shared_from_this();
    ++generation_;
    phase_ = Phase::presented;
    applyLook(true);
    container_->setMoving(false);
    // The second appearance call follows unless a callback of the first one ended the presentation.
    presented_->beginAppearanceTransition(true, false);
    const auto below = covered_.lock();
    if (below && covers_) {
        if (below->view_) below->view_->setHidden(true);
        below->endAppearanceTransition();
    }
    presented_->endAppearanceTransition();
    if (phase_ == Phase::presented) runCompletions();
}

void PresentationController::finishDismissing() {
    const auto self = shared_from_this();
    ++generation_;
    if (const auto above = presented_->presentation_) {
        // The screen above leaves too, unless a callback of this dismissal has just presented it.
        if (!above->isDismissing()) above->dismiss(false, Uncovers::no, {});
        above->finish();
    }
    if (phase_ != Phase::dismissing) return;
    phase_ = Phase::gone;
    presented_->beginAppearanceTransition(false, false);
    const auto below = covered_.lock();
    const bool uncovers = below && below->appearance_ == UIViewController::Appearance::appearing;
    takeDown();
    presented_->endAppearanceTransition();
    if (uncovers) below->endAppearanceTransition();
    runCompletions();
}

void PresentationController::abandon() {
    const auto self = shared_from_this();
    if (phase_ == Phase::gone) return;
    ++generation_;
    phase_ = Phase::gone;
    if (const auto above = presented_->presentation_) {
        above->uncovers_ = Uncovers::no;
        above->abandon();
    }
    presented_->beginAppearanceTransition(false, false);
    const auto below = covered_.lock();
    takeDown();
    presented_->endAppearanceTransition();
    if (below && below->coverCount_ == 0 && uncovers_ == Uncovers::yes) {
        below->beginAppearanceTransition(true, false);
        below->endAppearanceTransition();
    }
    runCompletions();
}

void PresentationController::takeDown() {
    releaseCover();
    presented_->presenting_ = nullptr;
    presenter_->presented_.reset();
    presenter_->presentation_.reset();
    container_->letGo();
    if (UIWindow* const window = container_->window()) window->popModalView(container_.get());
    container_->removeFromSuperview();
    if (presented_->view_) presented_->view_->removeFromSuperview();
}

void PresentationController::releaseCover() {
    if (!std::exchange(covers_, false)) return;
    const auto below = covered_.lock();
    if (!below) return;
    if (--below->coverCount_ == 0 && below->view_) below->view_->setHidden(false);
}

void PresentationController::runCompletions() {
    const auto completions = std::exchange(completions_, {});
    for (const auto& completion : completions) completion();
}

std::optional<CGRect> PresentationController::anchor() const {
    const auto& popover = presented_->popoverPresentationController;
    const auto item = popover.barButtonItem.lock();
    const auto button = item ? item->view().lock() : nullptr;
    if (button && button->window() == container_->window()) return laidOutRect(*button, button->bounds());
    const auto source = popover.sourceView.lock();
    if (!source || source->window() != container_->window()) return std::nullopt;
    return laidOutRect(*source, popover.sourceRect.isEmpty() ? source->bounds() : popover.sourceRect);
}

void PresentationController::layout() {
    if (!container_ || !container_->window()) return;
    const CGSize size = container_->bounds().size;
    PresentationSpace space{size, container_->window()->safeAreaInsets(), std::nullopt};
    if (kind_ == PresentationKind::popover) space.anchor = anchor();
    dim_->setFrame({{}, size});
    card_->setFrame(presentationFrame(kind_, presented_->preferredContentSize, space));
    clip_->setFrame({{}, card_->frame().size});
    presented_->view()->setFrame({{}, card_->frame().size});
}

void PresentationController::setNeedsLayout() {
    if (container_) container_->setNeedsLayout();
}

void PresentationController::tappedBeside() {
    const bool answers =
        kind_ == PresentationKind::popover || kind_ == PresentationKind::bareSheet ||
        (kind_ == PresentationKind::sheet && presented_->modalPresentationStyle == UIModalPresentationStyle::popover);
    if (!answers) return;
    const auto self = shared_from_this();
    // A tap beside a navigation stack closes the whole stack; Escape goes back by one screen.
    if (auto* navigation = dynamic_cast<UINavigationController*>(presented_.get())) {
        navigation->UIViewController::cancelOperation();
    } else {
        presented_->cancelOperation();
    }
}

}  // namespace ostrel
