#pragma once

#include "platform/uikit/view/UIDevice.h"
#include "platform/uikit/view/UIView.h"

#include <functional>
#include <memory>
#include <unordered_map>
#include <vector>

namespace ostrel {

class SelectableText;
class UIViewController;
class ViewAnimator;

/// The root of a view tree: events of the backend come in here, changes of the views go out to the backend. A
/// host makes one for each window of its backend. Main thread.
class UIWindow final : public UIView {
public:
    explicit UIWindow(CGSize size);
    ~UIWindow() override;
    void initialise();

    /// The backend is not owned; it must outlive the window or be reset. A new backend gets the whole tree
    /// with the next flush.
    void setBackend(MountingBackend* backend);
    MountingBackend* backend() const { return backend_; }
    /// Both are implemented in screens/UIViewController.cpp; the window itself knows controllers as
    /// ViewOwners only.
    std::shared_ptr<UIViewController> rootViewController() const;
    void setRootViewController(const std::shared_ptr<UIViewController>& controller);
    /// Resizes the window (also for a rotation): controllers are told, then views are laid out again.
    void setSize(CGSize size);
    /// The part of each edge that the system covers (a title bar drawn over the content, a notch), in points.
    UIEdgeInsets safeAreaInsets() const { return safeArea_; }
    void setSafeAreaInsets(UIEdgeInsets insets);

    // Out
    /// Lays out the views that need it, and mounts all changes since the last flush as one transaction.
    /// Without changes there is no transaction.
    void flush();
    using UIView::frame;
    /// The display refreshes at `time` (monotonic seconds): runs animations and frame callbacks, then
    /// flushes.
    void frame(double time);
    /// Calls `callback` with the time of every frame until it returns false. The window requests frames of
    /// the backend only while a callback or an animation needs them. Returns an id for `cancelFrames`.
    std::uint64_t requestFrames(std::function<bool(double time)> callback);
    void cancelFrames(std::uint64_t id);
    ViewAnimator& animator() { return *animator_; }
    /// Whether views have changed or need layout since the last flush.
    bool needsFlush() const;

    // In; locations are points in the window
    /// One step of a finger or of the pressed pointer. The view hit when the touch begins gets all its steps,
    /// after the gesture recognisers (see UIGestureRecognizer). The window fills in `startLocation`,
    /// `startTimestamp` and `view`.
    void sendTouch(UITouch touch);
    void sendScroll(const UIScrollEvent& event);
    /// The pointer moved without a pressed button; `inside` is false when it left the window.
    void sendHover(CGPoint point, bool inside);
    /// Sends a key to the first responder, else to the focused view, else to the view of the topmost
    /// controller, and from there up the chain of responders. Without first responder and focus it then goes
    /// to the frontmost scroll view of that controller. An unused key moves the focus (Tab) or asks
    /// the topmost controllers to cancel (Escape). True when the key was used.
    bool sendKey(const UIPress& press);
    /// Items are dragged over `location`. True when a target there accepts a drop of them.
    bool sendDrag(const UITransferItems& items, CGPoint location);
    /// The dragged items left the window, or were dropped elsewhere.
    void sendDragExited();
    /// True when a target took the items.
    bool sendDrop(const UITransferItems& items, CGPoint location);
    // From text editors of the backend
    void textInputChanged(ViewTag tag, const std::string& text);
    void textInputFocusChanged(ViewTag tag, bool focused);
    void textInputReturn(ViewTag tag);
    /// See `TextInputClient::editorSelectionChanged`.
    void textInputSelectionChanged(ViewTag tag, NSRange selection, CGFloat height);
    /// The window came to the front or left it.
    void setActive(bool active);
    bool isActive() const { return active_; }

    // First responder and keyboard focus
    UIView* firstResponder() const { return firstResponder_; }
    bool makeFirstResponder(UIView* view);
    UIView* focusedView() const { return focused_; }
    void setFocusedView(UIView* view, bool byKeyboard);
    void moveFocus(bool forward);
    /// While `view` is on top of the modal views, keys and Tab reach only `view` and its subviews. First
    /// responder and focus outside of it are saved, and restored when `view` is popped. Called by
    /// presentations.
    void pushModalView(UIView* view);
    void popModalView(UIView* view);
    UIView* viewWithTag(ViewTag tag) const;
    /// Makes `selection` the only selection of text at rest in this window and clears the former one. Command
    /// or Control with C copies it, unless a responder uses that key.
    void setTextSelection(const std::shared_ptr<SelectableText>& selection);

private:
    friend class UIView;
    friend class UIGestureRecognizer;
    friend class ViewAnimator;
    void setRootOwner(const std::shared_ptr<ViewOwner>& owner);
    void viewChanged(UIView& view);
    void sendAgain(UIView& view);
    void viewNeedsLayout(UIView& view);
    void viewEntered(UIView& view);
    void viewWillLeave(UIView& view);
    void viewLeft(UIView& view);
    void gestureDidBegin(UIGestureRecognizer& recognizer);
    void requestFlush();
    void updateFramesWanted();
    UIView& keyRoot();
    UIView* topControllerView();
    bool cancelTopmost();
    UIView* dropTargetAt(const UITransferItems& items, CGPoint location);
    void setDropTarget(UIView* view);
    void revealFocus();
    std::shared_ptr<UIView> sharedViewWithTag(ViewTag tag) const;
    MountingBackend* backend_ = nullptr;
    std::shared_ptr<ViewOwner> root_;
    std::unique_ptr<ViewAnimator> animator_;
    struct Implementation;
    std::unique_ptr<Implementation> implementation_;
    UIView* firstResponder_ = nullptr;
    UIView* focused_ = nullptr;
    UIEdgeInsets safeArea_;
    bool active_ = true;
};

}  // namespace ostrel
