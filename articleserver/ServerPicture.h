#pragma once

#include "ServerResult.h"

#include <cairo.h>

#include <memory>
#include <string>
#include <string_view>

namespace ostrel {

/// A picture in memory: a cairo image surface, 32 bits a pixel. Used by one thread at a time.
class ServerPicture final {
public:
    /// A blank picture, sides in pixels.
    ServerPicture(int width, int height);

    /// Decodes JPEG or PNG. Unsupported for other bytes, TooLarge when a side exceeds `maximumSide` pixels,
    /// BadInput for a broken file. The size is judged before anything is decoded.
    static ServerResult<ServerPicture> decode(std::string_view bytes, int maximumSide);

    int width() const;
    int height() const;
    cairo_surface_t* surface() const { return surface_.get(); }

    /// Scaled so that the longer side is at most `side` pixels, or the same picture when it is small enough.
    ServerPicture fitted(int side) const;
    /// The middle square, scaled to `side` by `side` pixels.
    ServerPicture squared(int side) const;

    /// Transparency is shown on white. `quality` is 0 to 100.
    std::string jpeg(int quality) const;
    std::string png() const;

private:
    struct Destroy {
        void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
    };
    explicit ServerPicture(cairo_surface_t* surface) : surface_(surface) {}
    static ServerResult<ServerPicture> decodeJpeg(std::string_view bytes, int maximumSide);
    static ServerResult<ServerPicture> decodePng(std::string_view bytes, int maximumSide);

    std::unique_ptr<cairo_surface_t, Destroy> surface_;
};

}  // namespace ostrel
