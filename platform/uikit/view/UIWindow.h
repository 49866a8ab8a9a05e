#pragma once

#include "platform/uikit/view/UIDevice.h"
#include "platform/uikit/view/UIView.h"

#include <functional>
#include <memory>
#include <unordered_map>
#include <vector>

namespace ostrel {

class TextSelection;
class ViewAnimator;

/// The root of a view tree and the one place where events come in and changes go out. Made by a host for each window of
/// its backend. Main thread.
class UIWindow final : public UIView {
public:
    explicit UIWindow(CGSize size);
    ~UIWindow() override;
    void initialise();

    /// Not owned; must outlive the window or be reset. Setting it sends the whole tree with the next flush.
    void setBackend(MountingBackend* backend);
    MountingBackend* backend() const { return backend_; }
    const std::shared_ptr<UIViewController>& rootViewController() const { return root_; }
    void setRootViewController(std::shared_ptr<UIViewController> controller);
    /// Resizes (also a rotation): controllers are told, views are laid out again.
    void setSize(CGSize size);
    /// Space at the edges that the system covers (a title bar drawn over the content, a notch).
    UIEdgeInsets safeAreaInsets() const { return safeArea_; }
    void setSafeAreaInsets(UIEdgeInsets insets);

    // Out
    /// Lays out what needs it and mounts all changes since the last flush as one transaction; nothing when none.
    void flush();
    using UIView::frame;
    /// One refresh of the display at `time` (monotonic seconds): runs animations and frame callbacks, then flushes.
    void frame(double time);
    /// Calls `callback` with the time of every frame until it returns false. The window asks the backend for frames only
    /// while somebody wants them. Returns an id for `cancelFrames`.
    std::uint64_t requestFrames(std::function<bool(double time)> callback);
    void cancelFrames(std::uint64_t id);
    ViewAnimator& animator() { return *animator_; }
    /// Whether `flush` would do something.
    bool needsFlush() const;

    // In: points in the window
    /// One step of a finger or the pressed pointer. The view hit at the beginning gets all of it (see
    /// UIGestureRecognizer for what comes before); `startLocation`, `startTimestamp` and `view` are filled in here.
    void sendTouch(UITouch touch);
    void sendScroll(const UIScrollEvent& event);
    /// The pointer moved without a button (for hover looks); `inside` false when it left the window.
    void sendHover(CGPoint point, bool inside);
    /// To the first responder, else the focused view, else the view of the topmost controller, and up from there; with
    /// neither responder nor focus then to the frontmost scroll view of that controller and up from there. Then Tab moves
    /// the focus and Escape asks the topmost controllers to cancel. True when the key was used.
    bool sendKey(const UIPress& press);
    /// Something is dragged over the window, at a point of it. True when it can be dropped there.
    bool sendDrag(const UITransferItems& items, CGPoint location);
    /// It left the window, or was dropped elsewhere.
    void sendDragExited();
    /// True when somebody took it.
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
    /// Keys and the Tab chain reach only views below the topmost presentation; set by presentation. First responder and
    /// focus outside of it are put aside and come back when it has gone.
    void pushModalView(UIView* view);
    void popModalView(UIView* view);
    UIView* viewWithTag(ViewTag tag) const;
    /// The one selection of text at rest in this window; the one before is cleared. Command+C and Control+C copy it
    /// when nobody else uses them.
    void setTextSelection(const std::shared_ptr<TextSelection>& selection);

private:
    friend class UIView;
    friend class UIGestureRecognizer;
    friend class ViewAnimator;
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
    std::shared_ptr<UIViewController> root_;
    std::unique_ptr<ViewAnimator> animator_;
    struct Implementation;
    std::unique_ptr<Implementation> implementation_;
    UIView* firstResponder_ = nullptr;
    UIView* focused_ = nullptr;
    UIEdgeInsets safeArea_;
    bool active_ = true;
};

}  // namespace ostrel
