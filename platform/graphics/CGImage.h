#pragma once

#include "platform/foundation/values/Data.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace ostrel {

/// A bitmap: 8 bits each of red, green, blue and alpha in this order, colours multiplied by alpha, sRGB, rows
/// from the top without gaps. Filled by its maker, immutable once it is shared as const; any thread.
class CGImage final {
public:
    static constexpr std::size_t bytesPerPixel = 4;
    /// Pixels of one picture: a bitmap of 400 MB, larger than those of cameras.
    static constexpr std::int64_t largestPixelCount = 100'000'000;

    /// A bitmap with undefined contents. Null when a side is not 1 to 65,500 pixels, the picture is larger
    /// than `largestPixelCount`, or memory is short.
    static std::shared_ptr<CGImage> make(int width, int height);
    /// Decodes a JPEG or PNG file as it is stored (without its EXIF orientation), or another format by the
    /// installed ImageDecoder. Null for other data, and for a damaged or too large picture.
    static std::shared_ptr<const CGImage> decode(const Data& data);

    int width() const { return width_; }
    int height() const { return height_; }
    std::size_t bytesPerRow() const { return static_cast<std::size_t>(width_) * bytesPerPixel; }
    const std::uint8_t* row(int y) const { return pixels_.get() + static_cast<std::size_t>(y) * bytesPerRow(); }
    std::uint8_t* row(int y) { return pixels_.get() + static_cast<std::size_t>(y) * bytesPerRow(); }
    /// Whether no pixel is transparent.
    bool isOpaque() const;

    /// The picture as a JPEG file. `quality`: 0 (smallest) to 1 (best), clamped. Transparent parts become
    /// black. Null data when memory is short.
    Data jpeg(double quality) const;
    Data png() const;

    /// The pixels' address is a multiple of this many bytes, for vector instructions.
    static constexpr std::size_t alignment = 64;
    struct FreePixels {
        void operator()(std::uint8_t* pixels) const;
    };
    using Pixels = std::unique_ptr<std::uint8_t[], FreePixels>;
    CGImage(int width, int height, Pixels pixels);

private:
    int width_, height_;
    Pixels pixels_;
};

}  // namespace ostrel
