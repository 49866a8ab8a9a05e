#pragma once

#include "platform/graphics/Geometry.h"

namespace ostrel {

/// The frame that springs and struts give a subview `frame` with `mask` (UIViewAutoresizing) when its superview's size
/// goes from `oldSize` to `newSize`. Along each axis the difference is shared by the flexible parts in proportion to
/// their lengths, equally when none has a length; without a flexible part the near margin and the length stay. Lengths
/// do not go below 0.
CGRect autoresizedFrame(const CGRect& frame, unsigned mask, CGSize oldSize, CGSize newSize);

}  // namespace ostrel
