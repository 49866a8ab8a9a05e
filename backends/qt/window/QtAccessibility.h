#pragma once

#include "platform/uikit/mounting/Mounting.h"

namespace ostrel {

/// Lets screen readers and other assistive programs read what the windows show: the mounted views that have a role, with
/// their labels and places, as children of the window's item. Views without a role are passed over, those in them are
/// not. Pressing one is a tap in its middle. What is announced is an alert that stands in the active window for some
/// seconds. Once per application; nothing is made before somebody asks. Main thread.
void installAccessibility();

class QtWindowView;

/// The keyboard's focus has come to `tag`.
void tellAccessibleFocus(QtWindowView& item, ViewTag tag);

}  // namespace ostrel
