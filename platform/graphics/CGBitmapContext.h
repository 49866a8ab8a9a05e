#pragma once

#include "platform/graphics/CGImage.h"
#include "platform/graphics/Geometry.h"

namespace ostrel {

/// A canvas of pixels to draw pictures on, as `UIGraphicsBeginImageContext` opens one at scale 1: it starts transparent,
/// its origin is the upper left corner and y grows downwards until the transform is changed. One thread.
class CGBitmapContext final {
public:
    /// Pixels; null when `CGImage::make` cannot make a picture of this size.
    static std::unique_ptr<CGBitmapContext> make(int width, int height);

    /// Each changes the drawing that follows, and applies to it before what was there.
    void translateCTM(CGFloat x, CGFloat y) { concatenate(CGAffineTransform::translation(x, y)); }
    void scaleCTM(CGFloat x, CGFloat y) { concatenate(CGAffineTransform::scale(x, y)); }
    /// Radians, from the x axis to the y axis.
    void rotateCTM(CGFloat angle) { concatenate(CGAffineTransform::rotation(angle)); }

    /// Draws the whole picture into `rect` over what is there, with its lower edge at the rectangle's minimal y: upright
    /// where y grows upwards, as in Quartz. Turns by quarters at full size copy pixels; others are interpolated.
    void drawImage(const CGRect& rect, const CGImage& image);
    /// What has been drawn; the context must not be used afterwards.
    std::shared_ptr<const CGImage> takeImage() { return std::move(canvas_); }

    explicit CGBitmapContext(std::shared_ptr<CGImage> canvas);

private:
    void concatenate(const CGAffineTransform& change);
    bool drawByQuarters(const CGAffineTransform& toCanvas, const CGImage& image);
    void drawInterpolated(const CGAffineTransform& toCanvas, const CGImage& image);

    std::shared_ptr<CGImage> canvas_;
    /// From the drawing's coordinates to pixels of the canvas.
    CGAffineTransform transform_;
};

}  // namespace ostrel
