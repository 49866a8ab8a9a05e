#pragma once

#include "platform/graphics/Geometry.h"

#include <cstdint>
#include <string>

namespace ostrel {

/// Pixels.
struct PixelSize {
    int width = 0, height = 0;
    friend bool operator==(const PixelSize&, const PixelSize&) = default;
};

/// The transform of a display matrix (ISO/IEC 14496-12, tkhd: nine numbers, 16.16 but for the third of each row, which is
/// 2.30). Null gives the identity.
CGAffineTransform transformOfDisplayMatrix(const std::int32_t* matrix);

/// How encoded pixels are turned and mirrored to be seen upright: the one of the eight ways that is nearest to the
/// transform. A transform that says nothing (all zero) is upright.
struct PictureTurn {
    int quarters = 0;         ///< clockwise, 0 to 3, after mirroring
    bool isMirrored = false;  ///< left and right exchanged first

    static PictureTurn nearestTo(const CGAffineTransform& transform);
    bool exchangesSides() const { return quarters % 2 != 0; }
    /// The filters of libavfilter that do it, with commas between; empty when there is nothing to do.
    std::string filters() const;
    friend bool operator==(const PictureTurn&, const PictureTurn&) = default;
};

/// The size to scale encoded pixels to, before they are turned: square pixels, inside `box` (lying) or the same box
/// standing once turned, even sides, no side enlarged, the proportions kept as nearly as even sides allow.
/// `pixelAspect`: width of an encoded pixel by its height; what is not within 1/16 to 16 is taken as 1.
PixelSize fittedSize(PixelSize encoded, double pixelAspect, PixelSize box);

}  // namespace ostrel
