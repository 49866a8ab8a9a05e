#pragma once

#include "platform/uikit/events/UIEvent.h"

namespace ostrel {

/// An object that handles events. Keys go to the first responder, touches to the view hit; an event that is
/// not handled goes along the chain of `nextResponder`.
class UIResponder {
public:
    virtual ~UIResponder() = default;

    virtual UIResponder* nextResponder() const { return nullptr; }
    virtual bool canBecomeFirstResponder() const { return false; }
    /// True when this object is the first responder after the call.
    virtual bool becomeFirstResponder() { return false; }
    virtual bool resignFirstResponder() { return true; }
    virtual bool isFirstResponder() const { return false; }

    /// The default passes the event on to the next responder.
    virtual void touchesBegan(const UITouch& touch);
    virtual void touchesMoved(const UITouch& touch);
    virtual void touchesEnded(const UITouch& touch);
    virtual void touchesCancelled(const UITouch& touch);

    /// True when the key was used. The default asks the next responder. An override calls the base class for
    /// keys that it does not use.
    virtual bool pressesBegan(const UIPress& press);
    virtual bool pressesEnded(const UIPress& press);
};

}  // namespace ostrel
