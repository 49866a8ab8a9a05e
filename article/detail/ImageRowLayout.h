#pragma once

#include "platform/graphics/Geometry.h"

namespace ostrel {

/// Where the parts of an image's row in the detail screen stand, in points. Three widths meet here, kept on
/// purpose, so that articles look as they always did: the image is as wide as the application's first window,
/// its caption is measured at the width of the main screen, and the caption is laid out at the width of the
/// row.
struct ImageRowLayout {
    /// What the row adds to the height of `base`: the margin above and 12 points below.
    static constexpr CGFloat heightBesideBase = 17;

    struct Content {
        /// What the record states, pixels; a number that is not above 0 after its fraction is dropped states
        /// nothing.
        float imageWidth = 0, imageHeight = 0;
        CGFloat windowWidth = 0;
        /// 0 without a caption.
        CGFloat captionHeight = 0;
        /// Where the image stands so far; it keeps its size when the record states none.
        CGRect formerImage;
    };

    /// In the row.
    CGRect base;
    /// In `base`.
    CGRect image, caption;

    static ImageRowLayout make(CGFloat rowWidth, const Content& content);
    /// The width at which the caption is measured.
    static CGFloat captionMeasureWidth(CGFloat screenWidth);
};

}  // namespace ostrel
