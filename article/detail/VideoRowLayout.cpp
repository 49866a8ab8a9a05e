#include "article/detail/VideoRowLayout.h"

#include "article/detail/DetailMetrics.h"

#include <algorithm>

namespace ostrel {

namespace {

constexpr float largestPortraitHeight = 300;

}  // namespace

float VideoRowLayout::captionWidth(CGFloat windowWidth) { return static_cast<float>(windowWidth - 2 * detailSpace); }

VideoRowLayout VideoRowLayout::make(CGFloat windowWidth, const Content& content) {
    const CGFloat width = windowWidth - 2 * detailSpace;
    VideoRowLayout layout;
    layout.ratio = content.videoWidth > 0 ? content.videoHeight / content.videoWidth : 1.0f;
    layout.thumbnailHeight = std::max(0.0f, static_cast<float>(static_cast<CGFloat>(layout.ratio) * width));
    if (isPortrait(content.videoWidth, content.videoHeight))
        layout.thumbnailHeight = std::min(layout.thumbnailHeight, largestPortraitHeight);
    layout.thumbnail = {0, 0, std::max(0.0, width), layout.thumbnailHeight};
    const float shownWidth = captionWidth(windowWidth);
    layout.caption = {0, layout.thumbnail.maxY(), shownWidth, content.captionHeight};
    layout.base = {detailSpace, detailSpace, shownWidth, content.captionHeight + layout.thumbnailHeight};
    return layout;
}

}  // namespace ostrel
