#pragma once

#include "platform/graphics/Geometry.h"
#include "platform/uikit/events/UIResponder.h"

#include <memory>

namespace ostrel {

class UIWindow;

/// The object that a view and its window ask about the screen which the view fills: UIViewController, of
/// which views know no more than this. Comes after its view in the chain of responders; may also be a
/// UIDropTarget. Main thread.
class ViewOwner : public UIResponder {
public:
    /// Keeps the owner alive while one of its operations runs; null when nothing shares it.
    virtual std::shared_ptr<ViewOwner> sharedOwner() = 0;
    /// The owned view has laid out its subviews.
    virtual void viewDidLayoutSubviews() {}
    /// Escape or the back key asks this screen to close. True when the key was used.
    virtual bool cancelOperation() { return false; }
    /// The window is about to change its size.
    virtual void viewWillTransitionToSize(CGSize /*size*/) {}

protected:
    friend class UIWindow;
    /// The window shows this owner's view as its root from now on, or no longer.
    virtual void enterWindow(UIWindow& window) = 0;
    virtual void leaveWindow() = 0;
};

}  // namespace ostrel
