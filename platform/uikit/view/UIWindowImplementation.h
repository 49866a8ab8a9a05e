#pragma once

#include "platform/uikit/mounting/ViewMounter.h"
#include "platform/uikit/view/SelectableText.h"
#include "platform/uikit/view/UIGestureRecognizer.h"
#include "platform/uikit/view/UIWindow.h"
#include "platform/uikit/view/ViewOwner.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <unordered_map>
#include <vector>

namespace ostrel {

/// The private state of a window, shared by its sources: UIWindow.cpp (changes that go out),
/// UIWindowTouches.cpp, UIWindowKeys.cpp and UIWindowDrops.cpp (events that come in).
struct UIWindow::Implementation {
    /// A finger or pressed pointer between its first and its last step.
    struct Touching {
        UITouch touch;
        std::vector<std::shared_ptr<UIGestureRecognizer>> recognizers;  ///< deepest first
        std::shared_ptr<UIGestureRecognizer> winner;
        bool viewTold = false;  ///< the view has got touchesBegan
        bool viewHasIt = true;  ///< false once a gesture has won the touch or the view has left
    };

    /// A modal view, with the first responder and the focus to restore when it is popped.
    struct Modal {
        std::weak_ptr<UIView> view;
        std::weak_ptr<UIView> firstResponder, focused;
    };

    // Out
    std::unordered_map<ViewTag, UIView*> views;  ///< every view in the window
    std::vector<ViewTag> dirty, layout;          ///< may name views that have left
    /// The views that observe their visible rectangle, with the rectangle they were last told of.
    std::vector<std::pair<UIView*, CGRect>> watched;
    ViewMounter mounter;
    bool flushing = false, flushRequested = false, framesWanted = false;
    std::map<std::uint64_t, std::function<bool(double)>> frameCallbacks;
    std::uint64_t nextFrameId = 1;

    // In
    std::map<std::int64_t, std::shared_ptr<Touching>> touches;
    std::vector<std::weak_ptr<UIView>> hovered;  ///< the view under the pointer and its ancestors
    std::vector<Modal> modals;
    bool focusByKeyboard = false;
    std::weak_ptr<UIView> dropTarget;  ///< the view over which items are dragged now
    std::weak_ptr<SelectableText> selection;

    /// Tells the views whose visible rectangle has changed.
    void checkVisibleRects();
    static bool isUnder(const std::weak_ptr<UIView>& view, const UIView& root);
    void cancelTouchOfView(Touching& touching);
};

}  // namespace ostrel
