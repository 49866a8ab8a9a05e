#pragma once

#include "platform/graphics/CGImage.h"
#include "platform/graphics/Geometry.h"

#include <memory>
#include <string>

namespace ostrel {

/// The middle square of a picture, reduced to `side` pixels a side, upright (EXIF orientation). A smaller
/// picture keeps its shorter side. A JPEG is reduced while it is decoded, a PNG row by row, so that the
/// memory does not grow with the picture. Null with an English sentence in `error`, when given, if the data
/// is no picture, is damaged, or is larger than `CGImage::largestPixelCount`. Any thread.
std::shared_ptr<const CGImage> squareThumbnail(const Data& data, int side, std::string* error = nullptr);

/// The same for a bitmap that `transform` (quarter turns, mirrored or not) makes upright.
std::shared_ptr<const CGImage> squareThumbnail(const CGImage& image, const CGAffineTransform& transform, int side);

}  // namespace ostrel
