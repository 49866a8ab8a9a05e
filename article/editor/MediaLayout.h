#pragma once

#include "platform/graphics/Geometry.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace ostrel {

/// How the editor's strips show their items. Any other number than these two means large tiles.
enum ArticleEditStyle : std::int64_t {
    /// One item a line, with its caption.
    listStyle = 0,
    /// Three items a line, without captions.
    gridStyle = 1,
};

/// The space in points between the lines of a strip.
inline constexpr float mediaLineSpacing = 10;

/// The height in points of a strip that shows `count` items and the add tile, computed in 32-bit arithmetic. Kept on
/// purpose: a grid's height depends on the width of the screen, although the grid's tiles depend on the width of the
/// strip; and large tiles get the height 0.
CGFloat mediaStripHeight(std::size_t count, std::int64_t style, CGFloat screenWidth);

/// The size in points of each tile in a strip of the width `stripWidth`.
CGSize mediaTileSize(std::int64_t style, CGFloat stripWidth);

/// Where the parts of a tile are, in points. The placeholder is a subview of the caption.
struct MediaTileLayout {
    CGRect picture, caption, placeholder;
};

/// The layout of a tile of the size `tile` whose parts are at `present`. None for large tiles: all parts stay where
/// they are. In the grid the picture keeps its size, and the smaller tile clips it.
std::optional<MediaTileLayout> mediaTileLayout(std::int64_t style, CGSize tile, const MediaTileLayout& present);

}  // namespace ostrel
