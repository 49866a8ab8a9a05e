#pragma once

#include "platform/uikit/mounting/ViewMounter.h"
#include "platform/uikit/view/UIGestureRecognizer.h"
#include "platform/uikit/view/UIWindow.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <unordered_map>
#include <vector>

namespace ostrel {

/// The parts of a window that only its own sources know: UIWindow.cpp (what goes out), UIWindowTouches.cpp and
/// UIWindowKeys.cpp (what comes in).
struct UIWindow::Implementation {
    /// A finger or pressed pointer on its way.
    struct Touching {
        UITouch touch;
        std::vector<std::shared_ptr<UIGestureRecognizer>> recognizers;  ///< deepest first
        std::shared_ptr<UIGestureRecognizer> winner;
        bool viewTold = false;  ///< the view has had touchesBegan
        bool viewHasIt = true;  ///< neither a gesture nor the view's end has taken it away
    };

    /// A presentation, and what had keys and focus when it came.
    struct Modal {
        std::weak_ptr<UIView> view;
        std::weak_ptr<UIView> firstResponder, focused;
    };

    // Out
    std::unordered_map<ViewTag, UIView*> views;  ///< every view in the window
    std::vector<ViewTag> dirty, layout;          ///< may name views that have left
    std::vector<std::pair<UIView*, CGRect>>
        watched;  ///< views that are told of their visible rectangle, with the last
    ViewMounter mounter;
    bool flushing = false, flushRequested = false, framesWanted = false;
    std::map<std::uint64_t, std::function<bool(double)>> frameCallbacks;
    std::uint64_t nextFrameId = 1;

    // In
    std::map<std::int64_t, std::shared_ptr<Touching>> touches;
    std::vector<std::weak_ptr<UIView>> hovered;  ///< the view under the pointer and its ancestors
    std::vector<Modal> modals;
    bool focusByKeyboard = false;
    std::weak_ptr<UIView> dropTarget;  ///< what is dragged is over it
    std::weak_ptr<TextSelection> selection;

    /// Tells the views whose visible rectangle has changed.
    void checkVisibleRects();
    static bool isUnder(const std::weak_ptr<UIView>& view, const UIView& root);
    void cancelTouchOfView(Touching& touching);
};

}  // namespace ostrel
