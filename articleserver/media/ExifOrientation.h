#pragma once

#include <string_view>

namespace articleserver {

// The orientation of a picture, 1 to 8 (Exif 2.32, tag 0x0112): where the first row and column of the stored pixels
// belong. 1 is upright.

/// Of the content of a JPEG's APP1 segment; 1 when it has none, is no Exif or is damaged.
int exifOrientationOf(std::string_view segment);

/// 5 to 8 lie on their side: shown, width and height are exchanged.
constexpr bool isSidewaysOrientation(int orientation) { return orientation >= 5; }

}  // namespace articleserver
