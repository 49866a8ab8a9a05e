#pragma once

#include "articleserver/common/ServerResult.h"

#include <cairo.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace articleserver {

/// A picture in memory: a cairo image surface of 32 bits a pixel. One thread at a time uses it.
class ServerPicture final {
public:
    /// A transparent picture; the sides are in pixels.
    ServerPicture(int width, int height);

    /// Decodes JPEG or PNG and applies the Exif orientation of a JPEG, so that the picture is upright.
    /// `unsupported` for other formats, `tooLarge` when a side exceeds `maximumSide` pixels, `badInput` for a
    /// broken file. The size is checked before any pixel is decoded.
    static ServerResult<ServerPicture> decode(std::string_view bytes, int maximumSide);

    /// Scales a JPEG file during its decoding. The result has the scaled picture and the size of the file's
    /// own picture, both upright. The whole file is read: `badInput` also when its end is missing.
    /// `unsupported` for other formats and for CMYK colours, `tooLarge` beyond ServerLimits::pictureSide,
    /// picturePixels and pictureMemory.
    struct Thumbnail;
    static ServerResult<Thumbnail> thumbnail(std::string_view jpeg, int side);

    int width() const;
    int height() const;
    cairo_surface_t* surface() const { return surface_.get(); }

    /// The picture scaled down so that its longer side has `side` pixels; a smaller picture stays as it is.
    ServerPicture fitted(int side) const;
    /// The square in the middle of the picture, scaled to `side` by `side` pixels.
    ServerPicture squared(int side) const;

    /// The picture rotated and mirrored as an Exif orientation, 1 to 8, says.
    ServerPicture oriented(int orientation) const;

    /// A JPEG file of the picture on a white ground. `quality` is 0 to 100.
    std::string jpeg(int quality) const;
    std::string png() const;

private:
    struct Destroy {
        void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
    };
    explicit ServerPicture(cairo_surface_t* surface) : surface_(surface) {}
    /// The limits for a picture, and the size that the caller needs.
    struct JpegWish {
        int maximumSide;
        std::int64_t maximumPixels;
        /// For the coefficients, in bytes.
        std::int64_t maximumMemory;
        /// The longer side of the result may shrink to this number of pixels; 0: the result has the full
        /// size.
        int side;
    };
    /// The result has the file's own size, too; both are upright.
    static ServerResult<Thumbnail> decodeJpeg(std::string_view bytes, const JpegWish& wish);
    static ServerResult<ServerPicture> decodePng(std::string_view bytes, int maximumSide);

    std::unique_ptr<cairo_surface_t, Destroy> surface_;
};

struct ServerPicture::Thumbnail {
    ServerPicture picture;
    int width;
    int height;
};

}  // namespace articleserver
