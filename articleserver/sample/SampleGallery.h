#pragma once

#include "MediaFolder.h"
#include "SamplePainter.h"

#include <cstdint>
#include <string>
#include <vector>

namespace ostrel {

/// A picture to be painted and kept as a JPEG file with its thumbnail.
struct PaintOrder {
    SampleScene scene;
    int width;  ///< pixels, as shown
    int height;
    std::uint32_t seed;
    int orientation;  ///< Exif; how the pixels are stored
};

struct PaintedFiles {
    std::string file;  ///< media names
    std::string thumbnail;
};

struct Gallery {
    std::vector<PaintedFiles> pictures;  ///< in the order of the orders
    std::vector<std::string> files;      ///< all media names that were added, also beside a failure
    ServerResult<ServerDone> outcome = ServerDone{};
};

/// Paints on as many threads as the machine has processors, at most 8.
Gallery paintGallery(MediaFolder& media, const std::vector<PaintOrder>& orders);

}  // namespace ostrel
