#pragma once

#include "platform/uikit/events/UIEvent.h"

namespace ostrel {

/// Whoever can handle events. Events go to the first responder or the view hit, then along `nextResponder`.
class UIResponder {
public:
    virtual ~UIResponder() = default;

    virtual UIResponder* nextResponder() const { return nullptr; }
    virtual bool canBecomeFirstResponder() const { return false; }
    /// True when it is the first responder afterwards.
    virtual bool becomeFirstResponder() { return false; }
    virtual bool resignFirstResponder() { return true; }
    virtual bool isFirstResponder() const { return false; }

    /// The default passes the event on to the next responder.
    virtual void touchesBegan(const UITouch& touch);
    virtual void touchesMoved(const UITouch& touch);
    virtual void touchesEnded(const UITouch& touch);
    virtual void touchesCancelled(const UITouch& touch);

    /// True when the key was used. The default asks the next responder. Overrides call the base class for keys they do
    /// not use.
    virtual bool pressesBegan(const UIPress& press);
    virtual bool pressesEnded(const UIPress& press);
};

}  // namespace ostrel
