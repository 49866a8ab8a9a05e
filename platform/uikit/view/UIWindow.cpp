#include "platform/uikit/view/UIWindow.h"

#include "platform/foundation/runloop/RunLoop.h"
#include "platform/uikit/view/UIWindowImplementation.h"
#include "platform/uikit/view/ViewAnimator.h"

#include <algorithm>
#include <cassert>

namespace ostrel {

namespace {

/// A limit for layouts that invalidate each other without end; the remaining passes follow with the next
/// flush.
constexpr int maximumLayoutPasses = 32;

int depthOf(const UIView& view) {
    int depth = 0;
    for (const UIView* v = view.superview(); v; v = v->superview()) ++depth;
    return depth;
}

}  // namespace

UIWindow::UIWindow(CGSize size)
    : UIView({{0, 0}, size}),
      animator_(std::make_unique<ViewAnimator>(*this)),
      implementation_(std::make_unique<Implementation>()) {
    setBackgroundColor(UIColor::systemBackground());
    moveToWindow(this);
    UIApplication::sharedApplication().windows_.push_back(this);
}

UIWindow::~UIWindow() {
    backend_ = nullptr;
    std::erase(UIApplication::sharedApplication().windows_, this);
    setRootOwner(nullptr);
    while (!subviews().empty()) subviews().back()->removeFromSuperview();
    moveToWindow(nullptr);
}

void UIWindow::initialise() { setAccessibility(AccessibilityRole::window, {}); }

void UIWindow::setBackend(MountingBackend* backend) {
    if (backend_ && implementation_->framesWanted) backend_->setFramesWanted(false);
    backend_ = backend;
    implementation_->framesWanted = false;
    implementation_->flushRequested = false;
    implementation_->mounter.reset();
    implementation_->dirty.clear();
    sendAgain(*this);
    requestFlush();
    updateFramesWanted();
}

/// Sends parents before children, because a backend takes the first created view as its root.
void UIWindow::sendAgain(UIView& view) {
    view.inDirtyList_ = false;
    viewChanged(view);
    for (const auto& child : view.subviews_) sendAgain(*child);
}

void UIWindow::setRootOwner(const std::shared_ptr<ViewOwner>& owner) {
    if (owner == root_) return;
    const auto entering = owner;
    if (const auto old = std::exchange(root_, nullptr)) old->leaveWindow();
    root_ = entering;
    if (entering) entering->enterWindow(*this);
}

void UIWindow::setSize(CGSize size) {
    if (size == frame().size) return;
    if (root_) root_->viewWillTransitionToSize(size);
    setFrame({{0, 0}, size});
}

void UIWindow::setSafeAreaInsets(UIEdgeInsets insets) {
    if (insets == safeArea_) return;
    safeArea_ = insets;
    for (const auto& [tag, view] : implementation_->views) view->setNeedsLayout();
}

UIView* UIWindow::viewWithTag(ViewTag tag) const {
    const auto found = implementation_->views.find(tag);
    return found == implementation_->views.end() ? nullptr : found->second;
}

// Called by views

void UIWindow::viewChanged(UIView& view) {
    if (!view.inDirtyList_) {
        view.inDirtyList_ = true;
        implementation_->dirty.push_back(view.tag());
    }
    requestFlush();
}

void UIWindow::viewNeedsLayout(UIView& view) {
    implementation_->layout.push_back(view.tag());
    requestFlush();
}

void UIWindow::viewEntered(UIView& view) {
    implementation_->views.emplace(view.tag(), &view);
    if (view.observesVisibleRect_) implementation_->watched.emplace_back(&view, CGRect{});
    viewChanged(view);
    if (view.needsLayout_) viewNeedsLayout(view);
}

void UIWindow::viewLeft(UIView& view) {
    implementation_->views.erase(view.tag());
    if (view.observesVisibleRect_)
        std::erase_if(implementation_->watched, [&](const auto& entry) { return entry.first == &view; });
    animator_->viewLeft(view);
    if (firstResponder_ == &view) {
        firstResponder_ = nullptr;
        view.firstResponderDidChange(false);
    }
    if (focused_ == &view) {
        focused_ = nullptr;
        view.focusDidChange(false, false);
    }
}

// Out

bool UIWindow::needsFlush() const { return !implementation_->dirty.empty() || !implementation_->layout.empty(); }

void UIWindow::requestFlush() {
    if (!backend_ || implementation_->flushRequested || implementation_->flushing) return;
    implementation_->flushRequested = true;
    backend_->setNeedsFlush();
}

void UIWindow::Implementation::checkVisibleRects() {
    const auto present = watched;
    for (const auto& [view, last] : present) {
        const auto entry = std::find_if(watched.begin(), watched.end(),
                                        [view = view](const auto& other) { return other.first == view; });
        if (entry == watched.end()) continue;
        const CGRect rect = view->visibleRect();
        if (rect == entry->second) continue;
        entry->second = rect;
        view->visibleRectDidChange();
    }
}

void UIWindow::flush() {
    Implementation& self = *implementation_;
    if (self.flushing) return;
    const auto kept = weak_from_this().lock();
    self.flushing = true;
    self.flushRequested = false;

    struct Waiting {
        int depth;
        std::shared_ptr<UIView> view;
    };
    for (int pass = 0; pass < maximumLayoutPasses; ++pass) {
        if (self.layout.empty()) self.checkVisibleRects();
        if (self.layout.empty()) break;
        std::vector<Waiting> waiting;
        for (const ViewTag tag : std::exchange(self.layout, {})) {
            UIView* const view = viewWithTag(tag);
            if (view && view->needsLayout_) waiting.push_back({depthOf(*view), view->weak_from_this().lock()});
        }
        std::stable_sort(waiting.begin(), waiting.end(),
                         [](const Waiting& a, const Waiting& b) { return a.depth < b.depth; });
        for (const Waiting& entry : waiting) {
            // A window on the stack has no shared pointer.
            UIView* const view = entry.view ? entry.view.get() : this;
            if (view->window() == this && view->needsLayout_) view->layoutNow();
        }
    }

    if (backend_) {
        std::vector<ViewMounter::Change> changes;
        for (const ViewTag tag : std::exchange(self.dirty, {})) {
            UIView* const view = viewWithTag(tag);
            if (!view || !view->inDirtyList_) continue;
            view->inDirtyList_ = false;
            const bool isNew = !self.mounter.isMounted(tag);
            if (view->needsContent_) {
                view->needsContent_ = false;
                view->pendingChanges_ &= ~std::uint32_t{changedContent};
                ViewContent content = view->makeContent();
                if (content != view->state_.content) {
                    view->state_.content = std::move(content);
                    view->pendingChanges_ |= changedContent;
                }
            }
            ViewMounter::Change change{.tag = tag, .state = nullptr, .children = std::nullopt};
            change.changes = std::exchange(view->pendingChanges_, 0);
            if (isNew || change.changes) {
                auto state = std::make_shared<ViewState>(view->state_);
                animator_->applyPresentation(*view, *state);
                if (isNew || *self.mounter.mountedState(tag) != *state) change.state = std::move(state);
            }
            if (isNew || view->childrenChanged_) {
                view->childrenChanged_ = false;
                auto& children = change.children.emplace();
                children.reserve(view->subviews_.size());
                for (const auto& child : view->subviews_) children.push_back(child->tag());
            }
            if (change.state || change.children) changes.push_back(std::move(change));
        }
        const MountingTransaction transaction =
            self.mounter.transaction(changes, [&](ViewTag tag) { return self.views.contains(tag); });
        if (!transaction.mutations.empty()) backend_->mount(transaction);
    }
    self.flushing = false;
    if (needsFlush()) requestFlush();
}

void UIWindow::frame(double time) {
    const auto kept = weak_from_this().lock();
    animator_->frame(time);
    std::vector<std::uint64_t> ids;
    for (const auto& [id, callback] : implementation_->frameCallbacks) ids.push_back(id);
    for (const std::uint64_t id : ids) {
        const auto found = implementation_->frameCallbacks.find(id);
        if (found == implementation_->frameCallbacks.end()) continue;
        const auto callback = found->second;
        if (!callback(time)) implementation_->frameCallbacks.erase(id);
    }
    flush();
    updateFramesWanted();
}

std::uint64_t UIWindow::requestFrames(std::function<bool(double time)> callback) {
    const std::uint64_t id = implementation_->nextFrameId++;
    implementation_->frameCallbacks.emplace(id, std::move(callback));
    updateFramesWanted();
    return id;
}

void UIWindow::cancelFrames(std::uint64_t id) {
    implementation_->frameCallbacks.erase(id);
    updateFramesWanted();
}

void UIWindow::updateFramesWanted() {
    const bool wanted = animator_->isAnimating() || !implementation_->frameCallbacks.empty();
    if (!backend_ || wanted == implementation_->framesWanted) return;
    implementation_->framesWanted = wanted;
    backend_->setFramesWanted(wanted);
}

}  // namespace ostrel
