#pragma once

#include <string_view>

namespace articleserver {

// The orientation of a picture, 1 to 8 (Exif 2.32, tag 0x0112), says on which sides of the shown picture the
// first row and the first column of the stored pixels are. An upright picture has 1.

/// The orientation in the content of a JPEG's APP1 segment; 1 when the content is not Exif, has no
/// orientation or is damaged.
int exifOrientationOf(std::string_view segment);

/// True for the orientations that exchange width and height.
constexpr bool isSidewaysOrientation(int orientation) { return orientation >= 5; }

}  // namespace articleserver
