#pragma once

#include "platform/graphics/Geometry.h"

#include <cstdint>
#include <string>

struct AVStream;

namespace ostrel {

/// Pixels.
struct PixelSize {
    int width = 0, height = 0;
    friend bool operator==(const PixelSize&, const PixelSize&) = default;
};

/// The display matrix of a video stream: how a player has to turn its pictures. Null when the file has none. Valid as
/// long as the stream.
const std::int32_t* displayMatrixOf(const AVStream& stream);

/// The transform of a display matrix (ISO/IEC 14496-12, tkhd: nine numbers, 16.16 but for the third of each row, which
/// is 2.30). Null gives the identity.
CGAffineTransform transformOfDisplayMatrix(const std::int32_t* matrix);

/// How encoded pixels are mirrored and turned to be upright: one of eight ways.
struct PictureTurn {
    /// Clockwise, 0 to 3, after mirroring.
    int quarters = 0;
    /// Left and right are exchanged first.
    bool isMirrored = false;

    /// The way that is nearest to `transform`; upright for a transform of zeros.
    static PictureTurn nearestTo(const CGAffineTransform& transform);
    bool exchangesSides() const { return quarters % 2 != 0; }
    /// The filters of libavfilter for the turn, with commas between; empty for upright pixels.
    std::string filters() const;
    friend bool operator==(const PictureTurn&, const PictureTurn&) = default;
};

/// The size to which encoded pixels are scaled before they are turned: square pixels, even sides, no side enlarged, and
/// the proportions kept as nearly as even sides allow. Landscape fits into `box`, portrait into the same box in
/// portrait. `pixelAspect`: width of an encoded pixel divided by its height; values outside of 1/16 to 16 count as 1.
PixelSize fittedSize(PixelSize encoded, double pixelAspect, PixelSize box);

}  // namespace ostrel
