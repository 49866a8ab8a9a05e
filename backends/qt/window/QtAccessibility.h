#pragma once

#include "platform/uikit/mounting/Mounting.h"

namespace ostrel {

/// Lets assistive programs, such as screen readers, read the windows: the mounted views that have a role are the
/// children of the window's item, with their labels and frames. A view without a role is skipped, the views in it are
/// not. The press action is a tap in the middle of the view. An announcement is an alert among the children of the
/// active window for five seconds. Call this once per application; no interface is made before an assistive program
/// asks. Main thread.
void installAccessibility();

class QtWindowView;

/// Reports to assistive programs that the view `tag` has the keyboard's focus now.
void tellAccessibleFocus(QtWindowView& item, ViewTag tag);

}  // namespace ostrel
