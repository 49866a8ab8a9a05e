#include "article/detail/ImageRowLayout.h"

#include "article/detail/DetailMetrics.h"

#include <algorithm>

namespace ostrel {

CGFloat ImageRowLayout::captionMeasureWidth(CGFloat screenWidth) {
    return std::max(0.0, screenWidth - 2 * detailSpace);
}

ImageRowLayout ImageRowLayout::make(CGFloat rowWidth, const Content& content) {
    ImageRowLayout layout;
    layout.image = content.formerImage;
    const std::int64_t w = truncated(content.imageWidth), h = truncated(content.imageHeight);
    if (w > 0 && h > 0) {
        const auto width = static_cast<float>(std::max(0.0, content.windowWidth - 2 * detailSpace));
        const float height = static_cast<float>(h) * width / static_cast<float>(w);
        layout.image.size = {width, std::min(height, largestPictureHeight)};
    }
    const CGFloat width = std::max(0.0, rowWidth - 2 * detailSpace);
    layout.caption = {0, layout.image.maxY(), width, content.captionHeight};
    layout.base = {detailSpace, detailSpace, width, layout.image.height() + content.captionHeight};
    return layout;
}

}  // namespace ostrel
