#pragma once

#include "articleserver/common/ServerResult.h"

#include <cairo.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace articleserver {

/// A picture in memory: a cairo image surface, 32 bits a pixel. Used by one thread at a time.
class ServerPicture final {
public:
    /// A blank picture, sides in pixels.
    ServerPicture(int width, int height);

    /// Decodes JPEG or PNG, upright: the Exif orientation of a JPEG is carried out. Unsupported for other bytes, TooLarge when a side exceeds `maximumSide` pixels,
    /// BadInput for a broken file. The size is judged before anything is decoded.
    static ServerResult<ServerPicture> decode(std::string_view bytes, int maximumSide);

    /// A JPEG file scaled while it is decoded, and its size in pixels; both upright. The whole file is read, so that one
    /// that was cut short is found: BadInput. Unsupported for other bytes and other colours, TooLarge beyond
    /// ServerLimits::pictureSide, picturePixels and pictureMemory.
    struct Thumbnail;
    static ServerResult<Thumbnail> thumbnail(std::string_view jpeg, int side);

    int width() const;
    int height() const;
    cairo_surface_t* surface() const { return surface_.get(); }

    /// Scaled so that the longer side is at most `side` pixels, or the same picture when it is small enough.
    ServerPicture fitted(int side) const;
    /// The middle square, scaled to `side` by `side` pixels.
    ServerPicture squared(int side) const;

    /// The pixels turned and mirrored as the Exif orientation says, 1 to 8.
    ServerPicture oriented(int orientation) const;

    /// Transparency is shown on white. `quality` is 0 to 100.
    std::string jpeg(int quality) const;
    std::string png() const;

private:
    struct Destroy {
        void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
    };
    explicit ServerPicture(cairo_surface_t* surface) : surface_(surface) {}
    /// What a picture may have, and at which size it is wanted.
    struct JpegWish {
        int maximumSide;
        std::int64_t maximumPixels;
        std::int64_t maximumMemory;  ///< of coefficients, in bytes
        int side;                    ///< the longer side that is enough; 0: all there is
    };
    /// With the file's own size, upright.
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
