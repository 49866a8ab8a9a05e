#include "article/editor/MediaLayout.h"

#include <algorithm>
#include <cmath>

namespace ostrel {

namespace {

constexpr float listTileHeight = 86;
constexpr CGFloat tilesInLine = 3;
constexpr CGFloat largeTileSide = 167;
constexpr CGSize listPicture{117, 86};
constexpr CGFloat placeholderHeight = 16;

/// The side of a tile, so that three tiles fill a line together with the space between and around them.
float gridSide(CGFloat width) { return static_cast<float>(width / tilesInLine - 10.0); }

}  // namespace

CGFloat mediaStripHeight(std::size_t count, std::int64_t style, CGFloat screenWidth) {
    const auto tiles = static_cast<float>(count) + 1;
    if (style == listStyle) return (tiles + 1) * mediaLineSpacing + tiles * listTileHeight;
    if (style != gridStyle) return 0;
    const auto lines = static_cast<float>(std::ceil((static_cast<double>(count) + 1) / tilesInLine));
    return lines * gridSide(screenWidth);
}

CGSize mediaTileSize(std::int64_t style, CGFloat stripWidth) {
    if (style == listStyle) return {std::max(0.0, stripWidth - 27), listTileHeight};
    if (style != gridStyle) return {largeTileSide, largeTileSide};
    const float side = std::max(0.0f, gridSide(stripWidth));
    return {side, side};
}

std::optional<MediaTileLayout> mediaTileLayout(std::int64_t style, CGSize tile, const MediaTileLayout& present) {
    if (style == gridStyle) return MediaTileLayout{{{0, 0}, present.picture.size}, {}, {}};
    if (style != listStyle) return std::nullopt;
    const CGFloat captionWidth = std::max(0.0, tile.width - 121);
    return MediaTileLayout{{{0, 0}, listPicture},
                           {119, 3, captionWidth, std::max(0.0, tile.height - 6)},
                           {8, present.placeholder.minY(), std::max(0.0, captionWidth - 9), placeholderHeight}};
}

}  // namespace ostrel
