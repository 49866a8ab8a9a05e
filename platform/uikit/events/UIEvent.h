#pragma once

#include "platform/graphics/Geometry.h"

#include <cstdint>
#include <memory>
#include <string>

namespace ostrel {

class UIView;

enum class UITouchPhase { began, moved, stationary, ended, cancelled };
enum class UITouchType { direct, pointer };  ///< a finger, or a mouse or trackpad
enum class UIButtonMask { primary, secondary };

/// One finger, or the pressed pointer, from touching the window to leaving it.
struct UITouch {
    std::int64_t identifier = 0;
    UITouchPhase phase = UITouchPhase::began;
    UITouchType type = UITouchType::direct;
    UIButtonMask button = UIButtonMask::primary;
    CGPoint location;       ///< in the window
    CGPoint startLocation;  ///< in the window
    double timestamp = 0;   ///< monotonic seconds
    double startTimestamp = 0;
    int tapCount = 1;
    std::weak_ptr<UIView> view;  ///< the view hit when the touch began

    CGPoint locationInView(const UIView& view) const;
};

/// A scroll by wheel or trackpad, in points. Positive `dy` moves the content down, towards its beginning.
struct UIScrollEvent {
    CGPoint location;
    CGFloat dx = 0, dy = 0;
    bool precise = false;  ///< true: a trackpad's pixels; false: a wheel's notches
    double timestamp = 0;
};

enum class UIKeyCode {
    other,
    tab,
    enter,
    escape,
    space,
    left,
    right,
    up,
    down,
    pageUp,
    pageDown,
    home,
    end,
    deleteBackward,
    deleteForward,
    back,
    menu,
    f5
};

enum UIKeyModifier : unsigned {
    modifierNone = 0,
    modifierShift = 1,
    modifierControl = 2,
    modifierAlternate = 4,
    modifierCommand = 8
};

struct UIKey {
    UIKeyCode code = UIKeyCode::other;
    std::string characters;  ///< the text that the key types, UTF-8; may be empty
    unsigned modifiers = modifierNone;
};

struct UIPress {
    UIKey key;
    bool isRepeat = false;
    double timestamp = 0;
};

}  // namespace ostrel
