#pragma once

#include <QImage>
#include <QSize>
#include <QVideoFrame>

namespace ostrel {

/// How the frames of a file have to be turned and mirrored to be upright.
struct VideoOrientation {
    /// Clockwise, 0 to 3.
    int quarterTurns = 0;
    /// Left and right are exchanged after turning.
    bool mirrored = false;
    /// Width of a pixel divided by its height, before turning.
    double pixelAspect = 1;
    friend bool operator==(const VideoOrientation&, const VideoOrientation&) = default;
};

/// The size of a frame once it is upright; empty for frames without a size.
QSize uprightSize(const QVideoFrame& frame, VideoOrientation orientation);

/// The largest size with the proportions of `size` that fits into `bounds`, in whole pixels, at least 1 by 1.
QSize fittingSize(QSize size, QSize bounds);

/// The frame as an upright picture of `size` pixels; libswscale converts and scales in one step. Colours follow the
/// frame's own matrix and range (ITU-R BT.601, BT.709, BT.2020); without a stated matrix, the frame's height decides.
/// Null when the frame cannot be read. Any thread.
QImage convertedFrame(const QVideoFrame& frame, QSize size, VideoOrientation orientation);

}  // namespace ostrel
