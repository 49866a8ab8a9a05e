#pragma once

#include "platform/graphics/CGImage.h"
#include "platform/graphics/Geometry.h"

#include <memory>
#include <string>

namespace ostrel {

/// The middle of a picture as a square of `side` pixels, upright (EXIF orientation); of one that is smaller, its whole
/// shorter side. A JPEG is reduced while it is decoded, a PNG row by row, so that what it takes does not grow with the
/// picture. Null with an English sentence in `error`, when given: no picture, damaged, or larger than
/// `CGImage::largestPixelCount`. Any thread.
std::shared_ptr<const CGImage> squareThumbnail(const Data& data, int side, std::string* error = nullptr);

/// The same of a bitmap that `transform` (turns by quarters, mirrored or not) shows as it is to be seen.
std::shared_ptr<const CGImage> squareThumbnail(const CGImage& image, const CGAffineTransform& transform,
                                               int side);

}  // namespace ostrel
