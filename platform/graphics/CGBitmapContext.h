#pragma once

#include "platform/graphics/CGImage.h"
#include "platform/graphics/Geometry.h"

namespace ostrel {

/// A canvas of pixels on which pictures are drawn, at scale 1: initially transparent, with the origin in the
/// upper left corner and y growing downwards until the transform changes. One thread at a time.
class CGBitmapContext final {
public:
    /// Sizes in pixels. Null when `CGImage::make` cannot make a picture of this size.
    static std::unique_ptr<CGBitmapContext> make(int width, int height);

    /// Each of these three changes the transform of later drawing; it applies before the transform so far.
    void translateCTM(CGFloat x, CGFloat y) { concatenate(CGAffineTransform::translation(x, y)); }
    void scaleCTM(CGFloat x, CGFloat y) { concatenate(CGAffineTransform::scale(x, y)); }
    /// `angle` in radians, from the x axis towards the y axis.
    void rotateCTM(CGFloat angle) { concatenate(CGAffineTransform::rotation(angle)); }

    /// Draws the whole picture into `rect`, over the canvas so far, with the picture's lower edge at the
    /// rectangle's smallest y: the picture is upright where y grows upwards. Quarter turns at full size copy
    /// pixels; other transforms interpolate.
    void drawImage(const CGRect& rect, const CGImage& image);
    /// The finished picture; the context must not be used afterwards.
    std::shared_ptr<const CGImage> takeImage() { return std::move(canvas_); }

    explicit CGBitmapContext(std::shared_ptr<CGImage> canvas);

private:
    void concatenate(const CGAffineTransform& change);
    bool drawByQuarters(const CGAffineTransform& toCanvas, const CGImage& image);
    void drawInterpolated(const CGAffineTransform& toCanvas, const CGImage& image);

    std::shared_ptr<CGImage> canvas_;
    /// From drawing coordinates to pixels of the canvas.
    CGAffineTransform transform_;
};

}  // namespace ostrel
