#pragma once

#include "platform/graphics/Geometry.h"

namespace ostrel {

/// Where the parts of a video's row in the detail screen stand, in points. A row follows the width of the
/// application's first window, not its own.
struct VideoRowLayout {
    /// What the row adds to the height of `base`: a margin above and below, and 12.5 points.
    static constexpr CGFloat heightBesideBase = 22.5;

    struct Content {
        /// What the record states, pixels.
        float videoWidth = 0, videoHeight = 0;
        /// 0 without a caption.
        CGFloat captionHeight = 0;
    };

    /// Height by width; 1 for a video without a width.
    float ratio = 1;
    /// Of the thumbnail, at most 300 when the video is higher than wide.
    float thumbnailHeight = 0;
    /// In the row.
    CGRect base;
    /// In `base`; the video plays where its thumbnail stands.
    CGRect thumbnail, caption;

    static VideoRowLayout make(CGFloat windowWidth, const Content& content);
    static bool isPortrait(float videoWidth, float videoHeight) { return videoHeight > videoWidth; }
    /// The width in which the caption is measured and shown; below 0 in a window that is too narrow.
    static float captionWidth(CGFloat windowWidth);
};

}  // namespace ostrel
