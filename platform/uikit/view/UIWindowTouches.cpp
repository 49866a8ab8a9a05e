#include "platform/uikit/view/UIControl.h"
#include "platform/uikit/view/UIWindow.h"
#include "platform/uikit/view/UIWindowImplementation.h"

#include <algorithm>

namespace ostrel {

namespace {

bool isOver(UIGestureRecognizerState state) {
    return state == UIGestureRecognizerState::failed || state == UIGestureRecognizerState::ended ||
           state == UIGestureRecognizerState::cancelled;
}

/// The recognisers that see a touch on `hit`, the deepest first.
template <class IsFree>
std::vector<std::shared_ptr<UIGestureRecognizer>> recognizersFor(UIView& hit, const IsFree& isFree) {
    std::vector<std::shared_ptr<UIGestureRecognizer>> result;
    bool aboveControl = false;
    for (UIView* view = &hit; view; view = view->superview()) {
        for (const auto& recognizer : view->gestureRecognizers()) {
            // A press on a control is not also a tap on the view behind the control.
            const bool isControls = aboveControl && dynamic_cast<UITapGestureRecognizer*>(recognizer.get());
            if (recognizer->isEnabled() && !isControls && isFree(*recognizer)) result.push_back(recognizer);
        }
        const auto* control = dynamic_cast<const UIControl*>(view);
        aboveControl = aboveControl || (control && control->isEnabled());
    }
    return result;
}

}  // namespace

bool UIWindow::Implementation::isUnder(const std::weak_ptr<UIView>& view, const UIView& root) {
    const auto locked = view.lock();
    return locked && locked->isDescendantOfView(root);
}

void UIWindow::Implementation::cancelTouchOfView(Touching& touching) {
    if (!std::exchange(touching.viewHasIt, false) || !touching.viewTold) return;
    UITouch touch = touching.touch;
    touch.phase = UITouchPhase::cancelled;
    if (const auto view = touch.view.lock()) view->touchesCancelled(touch);
}

void UIWindow::gestureDidBegin(UIGestureRecognizer& recognizer) {
    const auto touches = implementation_->touches;
    for (const auto& [id, touching] : touches) {
        const auto& all = touching->recognizers;
        const auto found = std::find_if(all.begin(), all.end(), [&](const auto& r) { return r.get() == &recognizer; });
        if (found == all.end() || touching->winner) continue;
        touching->winner = *found;
        implementation_->cancelTouchOfView(*touching);
        const auto others = all;
        for (const auto& other : others) {
            if (other != touching->winner && !isOver(other->state())) other->touchesCancelled(touching->touch);
        }
    }
}

void UIWindow::viewWillLeave(UIView& view) {
    const auto touches = implementation_->touches;
    for (const auto& [id, touching] : touches) {
        if (touching->viewHasIt && Implementation::isUnder(touching->touch.view, view)) {
            implementation_->cancelTouchOfView(*touching);
        }
        const auto recognizers = touching->recognizers;
        for (const auto& recognizer : recognizers) {
            if (!recognizer->view() || !recognizer->view()->isDescendantOfView(view)) continue;
            if (!isOver(recognizer->state())) recognizer->touchesCancelled(touching->touch);
        }
    }
}

void UIWindow::sendTouch(UITouch touch) {
    const auto kept = weak_from_this().lock();
    auto& touches = implementation_->touches;
    if (touch.phase == UITouchPhase::began) {
        if (const auto former = touches.find(touch.identifier); former != touches.end()) {
            UITouch cancelled = former->second->touch;
            cancelled.phase = UITouchPhase::cancelled;
            sendTouch(cancelled);
        }
        UIView* const hit = hitTest(touch.location);
        const auto selection = implementation_->selection.lock();
        if (selection && (!hit || !hit->isDescendantOfView(selection->view()))) setTextSelection(nullptr);
        if (!hit) return;
        touch.startLocation = touch.location;
        touch.startTimestamp = touch.timestamp;
        touch.view = hit->weak_from_this();
        auto touching = std::make_shared<Implementation::Touching>();
        touching->touch = touch;
        touching->recognizers = recognizersFor(*hit, [&](const UIGestureRecognizer& recognizer) {
            return std::none_of(touches.begin(), touches.end(), [&](const auto& entry) {
                const auto& busy = entry.second->recognizers;
                return std::any_of(busy.begin(), busy.end(), [&](const auto& r) { return r.get() == &recognizer; });
            });
        });
        for (const auto& recognizer : touching->recognizers) recognizer->reset();
        touches[touch.identifier] = touching;

        // A press moves the focus, without a ring. It does not end the editing of a text: a pressed button
        // leaves the first responder as it is. A text view takes the focus itself, when no gesture has won
        // the touch.
        if (!firstResponder_) {
            UIView* focusable = hit;
            while (focusable && !focusable->canBecomeFocused()) focusable = focusable->superview();
            if (!focusable || !focusable->canBecomeFirstResponder()) setFocusedView(focusable, false);
        }
    }
    const auto found = touches.find(touch.identifier);
    if (found == touches.end() || touch.phase == UITouchPhase::stationary) return;
    const auto touching = found->second;
    UITouch& current = touching->touch;
    current.phase = touch.phase;
    current.location = touch.location;
    current.timestamp = touch.timestamp;
    const UITouch event = current;

    const auto deliver = [&event](auto& receiver) {
        switch (event.phase) {
        case UITouchPhase::began: return receiver.touchesBegan(event);
        case UITouchPhase::moved: return receiver.touchesMoved(event);
        case UITouchPhase::ended: return receiver.touchesEnded(event);
        case UITouchPhase::cancelled: return receiver.touchesCancelled(event);
        case UITouchPhase::stationary: return;
        }
    };
    const auto recognizers = touching->recognizers;
    for (const auto& recognizer : recognizers) {
        const bool hasChance = !touching->winner || touching->winner == recognizer;
        if (hasChance && recognizer->view() && recognizer->isEnabled() && !isOver(recognizer->state()))
            deliver(*recognizer);
    }
    if (touching->viewHasIt) {
        touching->viewTold = true;
        if (const auto view = event.view.lock()) deliver(*view);
    }
    if (event.phase == UITouchPhase::ended || event.phase == UITouchPhase::cancelled) {
        for (const auto& recognizer : recognizers) recognizer->reset();
        const auto present = touches.find(event.identifier);
        if (present != touches.end() && present->second == touching) touches.erase(present);
    }
}

void UIWindow::sendScroll(const UIScrollEvent& event) {
    const auto kept = weak_from_this().lock();
    for (UIView* view = hitTest(event.location); view; view = view->superview()) {
        const auto keptView = view->weak_from_this().lock();
        if (view->scrollBy(event)) return;
    }
}

void UIWindow::sendHover(CGPoint point, bool inside) {
    const auto kept = weak_from_this().lock();
    std::vector<std::weak_ptr<UIView>> now;
    for (UIView* view = inside ? hitTest(point) : nullptr; view; view = view->superview())
        now.push_back(view->weak_from_this());
    const auto before = std::exchange(implementation_->hovered, now);
    const auto contains = [](const std::vector<std::weak_ptr<UIView>>& views, const std::shared_ptr<UIView>& view) {
        return std::any_of(views.begin(), views.end(), [&](const auto& other) { return other.lock() == view; });
    };
    for (const auto& weak : before) {
        if (const auto view = weak.lock(); view && !contains(now, view)) view->hoverDidChange(false);
    }
    for (const auto& weak : now) {
        if (const auto view = weak.lock(); view && !contains(before, view)) view->hoverDidChange(true);
    }
}

void UIWindow::setActive(bool active) {
    if (active_ == active) return;
    active_ = active;
    if (active) return;
    const auto touches = implementation_->touches;
    for (const auto& [id, touching] : touches) {
        UITouch touch = touching->touch;
        touch.phase = UITouchPhase::cancelled;
        sendTouch(touch);
    }
    sendHover({}, false);
}

}  // namespace ostrel
