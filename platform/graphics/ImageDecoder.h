#pragma once

#include "platform/graphics/CGImage.h"

#include <functional>
#include <memory>

namespace ostrel {

/// Decodes the formats that this layer cannot decode itself (GIF, WebP): the first picture of the data, as it
/// is stored. Null when decoding fails. Any thread.
using ImageDecoder = std::function<std::shared_ptr<const CGImage>(const Data& data)>;

/// Installs the decoder that `CGImage::decode` uses for other formats; an empty function removes it. Called
/// by a backend.
void installImageDecoder(ImageDecoder decoder);
ImageDecoder installedImageDecoder();

}  // namespace ostrel
