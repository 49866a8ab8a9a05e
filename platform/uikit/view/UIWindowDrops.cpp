// The part of a window that passes drags and drops to their targets.

#include "platform/uikit/events/UITransfer.h"
#include "platform/uikit/view/UIWindowImplementation.h"

#include <utility>

namespace ostrel {

namespace {

/// The view itself, or its owner; null when neither accepts drops.
UIDropTarget* targetOf(UIView& view) {
    if (auto* target = dynamic_cast<UIDropTarget*>(&view)) return target;
    return dynamic_cast<UIDropTarget*>(view.owner());
}

}  // namespace

UIView* UIWindow::dropTargetAt(const UITransferItems& items, CGPoint location) {
    for (UIView* view = items.isEmpty() ? nullptr : hitTest(location); view; view = view->superview()) {
        UIDropTarget* const target = targetOf(*view);
        if (target && target->canTakeDrop(items, location)) return view;
    }
    return nullptr;
}

void UIWindow::setDropTarget(UIView* view) {
    const auto kept = view ? view->weak_from_this().lock() : nullptr;
    const auto former = std::exchange(implementation_->dropTarget, kept).lock();
    if (former == kept) return;
    if (UIDropTarget* const target = former ? targetOf(*former) : nullptr) target->dropHoverDidChange(false);
    if (UIDropTarget* const target = kept ? targetOf(*kept) : nullptr) target->dropHoverDidChange(true);
}

bool UIWindow::sendDrag(const UITransferItems& items, CGPoint location) {
    setDropTarget(dropTargetAt(items, location));
    return !implementation_->dropTarget.expired();
}

void UIWindow::sendDragExited() { setDropTarget(nullptr); }

bool UIWindow::sendDrop(const UITransferItems& items, CGPoint location) {
    setDropTarget(nullptr);
    UIView* const view = dropTargetAt(items, location);
    if (!view) return false;
    const auto kept = view->weak_from_this().lock();
    const auto keptOwner = view->owner() ? view->owner()->sharedOwner() : nullptr;
    targetOf(*view)->takeDrop(items, location);
    return true;
}

}  // namespace ostrel
