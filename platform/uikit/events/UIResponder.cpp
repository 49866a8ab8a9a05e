#include "platform/uikit/events/UIResponder.h"

namespace ostrel {

void UIResponder::touchesBegan(const UITouch& touch) {
    if (UIResponder* next = nextResponder()) next->touchesBegan(touch);
}

void UIResponder::touchesMoved(const UITouch& touch) {
    if (UIResponder* next = nextResponder()) next->touchesMoved(touch);
}

void UIResponder::touchesEnded(const UITouch& touch) {
    if (UIResponder* next = nextResponder()) next->touchesEnded(touch);
}

void UIResponder::touchesCancelled(const UITouch& touch) {
    if (UIResponder* next = nextResponder()) next->touchesCancelled(touch);
}

bool UIResponder::pressesBegan(const UIPress& press) {
    UIResponder* next = nextResponder();
    return next && next->pressesBegan(press);
}

bool UIResponder::pressesEnded(const UIPress& press) {
    UIResponder* next = nextResponder();
    return next && next->pressesEnded(press);
}

}  // namespace ostrel
