#include "backends/ffmpeg/convert/PictureGeometry.h"

#include <algorithm>
#include <array>
#include <cmath>

extern "C" {
#include <libavformat/avformat.h>
}

namespace ostrel {

const std::int32_t* displayMatrixOf(const AVStream& stream) {
    std::size_t size = 0;
    const std::uint8_t* matrix = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, &size);
    return size >= 9 * sizeof(std::int32_t) ? reinterpret_cast<const std::int32_t*>(matrix) : nullptr;
}

CGAffineTransform transformOfDisplayMatrix(const std::int32_t* matrix) {
    if (!matrix) return {};
    constexpr double one = 65536;
    return {matrix[0] / one, matrix[1] / one, matrix[3] / one, matrix[4] / one, matrix[6] / one, matrix[7] / one};
}

PictureTurn PictureTurn::nearestTo(const CGAffineTransform& transform) {
    const double scale = std::sqrt(std::abs(transform.a * transform.d - transform.b * transform.c));
    if (!(scale > 0)) return {};
    PictureTurn turn;
    turn.isMirrored = transform.a * transform.d - transform.b * transform.c < 0;
    // The direction of the x axis, (a, b), without the mirroring, which is done first.
    const double x = turn.isMirrored ? -transform.a : transform.a;
    const double y = turn.isMirrored ? -transform.b : transform.b;
    if (std::abs(y) > std::abs(x)) {
        turn.quarters = y > 0 ? 1 : 3;
    } else {
        turn.quarters = x > 0 ? 0 : 2;
    }
    return turn;
}

std::string PictureTurn::filters() const {
    constexpr std::array plain{"", "transpose=clock", "hflip,vflip", "transpose=cclock"};
    // One filter mirrors and turns; "cclock_flip" exchanges rows and columns.
    constexpr std::array mirrored{"hflip", "transpose=clock_flip", "vflip", "transpose=cclock_flip"};
    const auto index = static_cast<std::size_t>(quarters);
    return isMirrored ? mirrored[index] : plain[index];
}

PixelSize fittedSize(PixelSize encoded, double pixelAspect, PixelSize box) {
    constexpr double largestAspect = 16;
    if (!(pixelAspect >= 1 / largestAspect && pixelAspect <= largestAspect)) pixelAspect = 1;
    double width = encoded.width, height = encoded.height;
    // To make pixels square, their longer side is shortened, so that no side of the picture grows.
    if (pixelAspect > 1) height /= pixelAspect;
    if (pixelAspect < 1) width *= pixelAspect;
    const double longBox = std::max(box.width, box.height), shortBox = std::min(box.width, box.height);
    const double longSide = std::max(width, height), shortSide = std::min(width, height);
    const double factor = std::min({1.0, longBox / longSide, shortBox / shortSide});
    // Chroma is stored at half the size, so sides are rounded to the nearest even number, but not beyond the source's.
    const auto even = [](double side, int limit) {
        const int nearest = 2 * static_cast<int>(std::lround(side / 2));
        return std::max(2, nearest > limit ? nearest - 2 : nearest);
    };
    return {even(width * factor, encoded.width), even(height * factor, encoded.height)};
}

}  // namespace ostrel
