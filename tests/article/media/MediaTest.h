#pragma once

#include "backends/headless/VirtualTime.h"
#include "tests/support/LogCapture.h"
#include "tests/support/ScriptedMedia.h"

#include <gtest/gtest.h>

namespace ostrel {

using Lines = std::vector<std::string>;

/// The scripted media backend on virtual time, with a captured log.
class MediaTest : public testing::Test {
protected:
    MediaTest() { MediaBackend::install(media); }
    ~MediaTest() override { MediaBackend::install(nullptr); }

    /// A clip at "/clip.mov".
    ScriptedClip& clip() { return media->clips["/clip.mov"]; }
    const NSURL url{"file:///clip.mov"};

    VirtualTime time;
    LogCapture log;
    std::shared_ptr<ScriptedMediaBackend> media = std::make_shared<ScriptedMediaBackend>();
};

/// A bitmap whose pixels all differ: red is the column, green the row.
inline std::shared_ptr<const CGImage> numberedBitmap(int width, int height) {
    auto bitmap = CGImage::make(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            std::uint8_t* pixel = bitmap->row(y) + static_cast<std::size_t>(x) * CGImage::bytesPerPixel;
            pixel[0] = static_cast<std::uint8_t>(x);
            pixel[1] = static_cast<std::uint8_t>(y);
            pixel[2] = 7;
            pixel[3] = 255;
        }
    }
    return bitmap;
}

}  // namespace ostrel
