#pragma once

#include "platform/graphics/CGImage.h"

#include <functional>
#include <memory>

namespace ostrel {

/// Decodes what this layer reads no pixels of (GIF, WebP): the first picture, as it is stored. Null when it cannot.
/// Any thread.
using ImageDecoder = std::function<std::shared_ptr<const CGImage>(const Data& data)>;

/// Set by a backend; an empty function takes it out. `CGImage::decode` asks it.
void installImageDecoder(ImageDecoder decoder);
ImageDecoder installedImageDecoder();

}  // namespace ostrel
