#pragma once

#include <QImage>
#include <QSize>
#include <QVideoFrame>

namespace ostrel {

/// How the frames of a file have to be turned and mirrored to stand upright.
struct VideoOrientation {
    int quarterTurns = 0;    ///< clockwise, 0 to 3
    bool mirrored = false;   ///< from left to right, after turning
    double pixelAspect = 1;  ///< width of a pixel by its height, before turning
    friend bool operator==(const VideoOrientation&, const VideoOrientation&) = default;
};

/// The size of a frame when it stands upright; empty for frames without a size.
QSize uprightSize(const QVideoFrame& frame, VideoOrientation orientation);

/// `size` made as large as fits within `bounds`, in whole pixels, at least 1 by 1.
QSize fittingSize(QSize size, QSize bounds);

/// The frame as a picture of `size` pixels, upright, converted and scaled in one go by libswscale. Colours by the frame's
/// own matrix and range (ITU-R BT.601, BT.709, BT.2020), without a matrix by its height. Null when the frame cannot be
/// read. Any thread.
QImage convertedFrame(const QVideoFrame& frame, QSize size, VideoOrientation orientation);

}  // namespace ostrel
