#include "platform/uikit/events/TextInputClient.h"
#include "platform/uikit/view/UIScrollView.h"
#include "platform/uikit/view/UIWindow.h"
#include "platform/uikit/view/UIWindowImplementation.h"

#include <algorithm>

namespace ostrel {

namespace {

bool takesKeys(const UIView& view) {
    return !view.isHidden() && view.alpha() > 0.01 && view.isUserInteractionEnabled();
}

void collectFocusable(UIView& view, std::vector<UIView*>& result) {
    if (!takesKeys(view)) return;
    if (view.canBecomeFocused()) result.push_back(&view);
    for (const auto& child : view.subviews()) collectFocusable(*child, result);
}

/// The view of the frontmost controller in the tree of `view`, the deepest one; null when the tree has none.
UIView* frontmostControllerView(UIView& view) {
    if (view.isHidden()) return nullptr;
    const auto& children = view.subviews();
    for (auto child = children.rbegin(); child != children.rend(); ++child) {
        if (UIView* found = frontmostControllerView(**child)) return found;
    }
    return view.owner() ? &view : nullptr;
}

/// The frontmost scroll view at or below `view`; null when there is none.
UIScrollView* frontmostScrollView(UIView& view) {
    if (!takesKeys(view)) return nullptr;
    if (auto* const scroll = dynamic_cast<UIScrollView*>(&view)) return scroll;
    const auto& children = view.subviews();
    for (auto child = children.rbegin(); child != children.rend(); ++child) {
        if (UIScrollView* found = frontmostScrollView(**child)) return found;
    }
    return nullptr;
}

}  // namespace

// First responder and focus

bool UIWindow::makeFirstResponder(UIView* view) {
    if (view == firstResponder_) return true;
    if (view && view->window() != this) return false;
    const auto kept = view ? view->weak_from_this().lock() : nullptr;
    if (UIView* const old = std::exchange(firstResponder_, nullptr)) {
        const auto keptOld = old->weak_from_this().lock();
        old->firstResponderDidChange(false);
        if (!view && focused_ == old) setFocusedView(nullptr, false);
    }
    if (!view) return true;
    // The former first responder may have chosen another one when it was told.
    if (firstResponder_ || view->window() != this) return firstResponder_ == view;
    firstResponder_ = view;
    if (view->canBecomeFocused()) setFocusedView(view, false);
    if (firstResponder_ == view) view->firstResponderDidChange(true);
    return firstResponder_ == view;
}

void UIWindow::setFocusedView(UIView* view, bool byKeyboard) {
    if (view && view->window() != this) return;
    if (view == focused_ && (!view || byKeyboard == implementation_->focusByKeyboard)) return;
    const auto kept = view ? view->weak_from_this().lock() : nullptr;
    if (UIView* const old = std::exchange(focused_, nullptr); old && old != view) {
        const auto keptOld = old->weak_from_this().lock();
        old->focusDidChange(false, byKeyboard);
    }
    if (!view || focused_ || view->window() != this) return;
    focused_ = view;
    implementation_->focusByKeyboard = byKeyboard;
    view->focusDidChange(true, byKeyboard);
}

void UIWindow::moveFocus(bool forward) {
    std::vector<UIView*> chain;
    collectFocusable(keyRoot(), chain);
    if (chain.empty()) return;
    const auto present = std::find(chain.begin(), chain.end(), focused_);
    std::size_t next = forward ? 0 : chain.size() - 1;
    if (present != chain.end()) {
        const auto index = static_cast<std::size_t>(present - chain.begin());
        next = (index + (forward ? 1 : chain.size() - 1)) % chain.size();
    }
    setFocusedView(chain[next], true);
    revealFocus();
}

void UIWindow::revealFocus() {
    if (!focused_) return;
    for (UIView* view = focused_->superview(); view; view = view->superview()) {
        auto* const scroll = dynamic_cast<UIScrollView*>(view);
        if (scroll) scroll->scrollRectToVisible(focused_->convertRectToView(focused_->bounds(), scroll), true);
    }
}

// Presentations

void UIWindow::pushModalView(UIView* view) {
    if (!view) return;
    Implementation::Modal modal{.view = view->weak_from_this(), .firstResponder = {}, .focused = {}};
    if (focused_ && !focused_->isDescendantOfView(*view)) modal.focused = focused_->weak_from_this();
    if (firstResponder_ && !firstResponder_->isDescendantOfView(*view)) {
        modal.firstResponder = firstResponder_->weak_from_this();
    }
    implementation_->modals.push_back(modal);
    if (!modal.firstResponder.expired()) makeFirstResponder(nullptr);
    if (!modal.focused.expired()) setFocusedView(nullptr, false);
}

void UIWindow::popModalView(UIView* view) {
    auto& modals = implementation_->modals;
    const auto found =
        std::find_if(modals.begin(), modals.end(), [&](const auto& modal) { return modal.view.lock().get() == view; });
    if (found == modals.end()) return;
    const bool wasTop = found + 1 == modals.end();
    const Implementation::Modal modal = *found;
    modals.erase(found);
    if (!wasTop) return;
    if (view && firstResponder_ && firstResponder_->isDescendantOfView(*view)) makeFirstResponder(nullptr);
    if (view && focused_ && focused_->isDescendantOfView(*view)) setFocusedView(nullptr, false);
    const auto firstResponder = modal.firstResponder.lock();
    const auto focused = modal.focused.lock();
    if (firstResponder && !firstResponder_ && firstResponder->window() == this) {
        firstResponder->becomeFirstResponder();
    } else if (focused && !focused_ && focused->window() == this && focused->canBecomeFocused()) {
        setFocusedView(focused.get(), implementation_->focusByKeyboard);
    }
}

UIView& UIWindow::keyRoot() {
    auto& modals = implementation_->modals;
    std::erase_if(modals, [](const auto& modal) { return modal.view.expired(); });
    for (auto modal = modals.rbegin(); modal != modals.rend(); ++modal) {
        const auto view = modal->view.lock();
        if (view->window() == this) return *view;
    }
    return *this;
}

UIView* UIWindow::topControllerView() { return frontmostControllerView(keyRoot()); }

bool UIWindow::cancelTopmost() {
    const UIView* const root = &keyRoot();
    UIView* view = topControllerView();
    while (view) {
        const auto kept = view->weak_from_this().lock();
        if (view->owner() && view->owner()->cancelOperation()) return true;
        view = view == root ? nullptr : view->superview();
    }
    return false;
}

// Keys

bool UIWindow::sendKey(const UIPress& press) {
    const auto kept = weak_from_this().lock();
    UIResponder* responder = firstResponder_ ? firstResponder_ : focused_;
    std::shared_ptr<UIView> keptView = responder ? static_cast<UIView*>(responder)->weak_from_this().lock() : nullptr;
    std::shared_ptr<ViewOwner> keptOwner;
    if (!responder) {
        if (UIView* const view = topControllerView()) {
            keptView = view->weak_from_this().lock();
            keptOwner = view->owner()->sharedOwner();
            responder = view;
        }
    }
    if (responder && responder->pressesBegan(press)) return true;
    if (!firstResponder_ && !focused_) {
        // Without a first responder and a focused view, keys scroll the content of the topmost screen.
        UIView* const screen = topControllerView();
        UIScrollView* const scroll = screen ? frontmostScrollView(*screen) : nullptr;
        const auto keptScroll = scroll ? scroll->weak_from_this().lock() : nullptr;
        if (scroll && scroll != screen && scroll->pressesBegan(press)) return true;
    }
    // Some systems report Control with a letter as the ASCII control character.
    const std::string& typed = press.key.characters;
    const bool commands = press.key.modifiers & (modifierControl | modifierCommand);
    const auto selection = implementation_->selection.lock();
    if (commands && selection) {
        if ((typed == "c" || typed == "C" || typed == "\x03") && selection->copy()) return true;
        if ((typed == "a" || typed == "A" || typed == "\x01") && selection->selectAll()) return true;
    }
    constexpr unsigned others = modifierControl | modifierAlternate | modifierCommand;
    if (press.key.modifiers & others) return false;
    if (press.key.code == UIKeyCode::tab) {
        moveFocus(!(press.key.modifiers & modifierShift));
        return true;
    }
    return (press.key.code == UIKeyCode::escape || press.key.code == UIKeyCode::back) && cancelTopmost();
}

void UIWindow::setTextSelection(const std::shared_ptr<SelectableText>& selection) {
    const auto former = std::exchange(implementation_->selection, selection).lock();
    if (former && former != selection) former->clear();
}

// Text editors

void UIWindow::textInputChanged(ViewTag tag, const std::string& text) {
    const auto view = sharedViewWithTag(tag);
    if (auto* client = dynamic_cast<TextInputClient*>(view.get())) client->editorTextChanged(text);
}

void UIWindow::textInputFocusChanged(ViewTag tag, bool focused) {
    const auto view = sharedViewWithTag(tag);
    if (auto* client = dynamic_cast<TextInputClient*>(view.get())) client->editorFocusChanged(focused);
}

void UIWindow::textInputReturn(ViewTag tag) {
    const auto view = sharedViewWithTag(tag);
    if (auto* client = dynamic_cast<TextInputClient*>(view.get())) client->editorReturn();
}

void UIWindow::textInputSelectionChanged(ViewTag tag, NSRange selection, CGFloat height) {
    const auto view = sharedViewWithTag(tag);
    if (auto* client = dynamic_cast<TextInputClient*>(view.get())) client->editorSelectionChanged(selection, height);
}

std::shared_ptr<UIView> UIWindow::sharedViewWithTag(ViewTag tag) const {
    UIView* const view = viewWithTag(tag);
    return view ? view->weak_from_this().lock() : nullptr;
}

}  // namespace ostrel
