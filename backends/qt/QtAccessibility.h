#pragma once

namespace ostrel {

/// Lets screen readers and other assistive programs read what the windows show: the mounted views that have a role, with
/// their labels and places, as children of the window's item. Views without a role are passed over, those in them are
/// not. Pressing one is a tap in its middle. Once per application; nothing is made before somebody asks. Main thread.
void installAccessibility();

}  // namespace ostrel
