#pragma once

#include "platform/graphics/Geometry.h"

namespace ostrel {

/// The new frame of a subview with `frame` and `mask` (UIViewAutoresizing) when its superview's size changes
/// from `oldSize` to `newSize`. Along each axis the flexible parts share the difference in proportion to
/// their lengths, or equally when all of these lengths are 0. Without a flexible part the left or top margin
/// and the length stay. Lengths are at least 0.
CGRect autoresizedFrame(const CGRect& frame, unsigned mask, CGSize oldSize, CGSize newSize);

}  // namespace ostrel
