#include "article/detail/ImageRowLayout.h"
#include "article/detail/VideoRowLayout.h"

#include <gtest/gtest.h>

namespace ostrel {
namespace {

TEST(ImageRowLayoutTest, APictureIsAsWideAsTheWindowAndItsCaptionAsTheRow) {
    const CGRect former(0, 0, 70, 39);
    const struct {
        float width, height;
        CGFloat window, row, caption;
        CGSize shown;
    } cases[] = {
        {800, 600, 1000, 400, 0, {990, 742.5}},
        {2, 1, 500, 400, 31, {490, 245}},
        {3.9f, 1.9f, 310, 400, 31, {300, 100}},
        {1, 1, 320, 5, 0, {310, 310}},
        {1, 1, 5, 400, 0, {0, 0}},
        {30000, 30000, 320, 400, 0, {310, 310}},
        {1, 30000, 320, 400, 0, {310, 16384}},
        {1, 1e38f, 320, 400, 0, {310, 16384}},
        {1e30f, 1e30f, 320, 400, 0, {310, 310}},
        {0, 100, 320, 400, 31, former.size},
        {-4, 3, 320, 400, 0, former.size},
        {100, 0, 320, 400, 0, former.size},
        {0.9f, 5, 320, 400, 0, former.size},
    };
    for (const auto& [width, height, window, row, caption, shown] : cases) {
        const auto layout = ImageRowLayout::make(row, {.imageWidth = width,
                                                       .imageHeight = height,
                                                       .windowWidth = window,
                                                       .captionHeight = caption,
                                                       .formerImage = former});
        const testing::Message what = testing::Message() << width << " x " << height;
        EXPECT_EQ(layout.image, CGRect({0, 0}, shown)) << what;
        const CGFloat rowWidth = row > 10 ? row - 10 : 0;
        EXPECT_EQ(layout.caption, CGRect(0, shown.height, rowWidth, caption)) << what;
        EXPECT_EQ(layout.base, CGRect(5, 5, rowWidth, shown.height + caption)) << what;
    }
    EXPECT_EQ(ImageRowLayout::captionMeasureWidth(200), 190);
    EXPECT_EQ(ImageRowLayout::captionMeasureWidth(3), 0);
}

TEST(VideoRowLayoutTest, ARowTakesItsShapeFromTheVideoAndTheWindow) {
    const struct {
        float width, height;
        CGFloat window;
        float ratio;
        CGSize shown;
    } cases[] = {
        {1920, 1080, 1010, 0.5625f, {1000, 562.5}},
        {1080, 1920, 1010, 1920.0f / 1080.0f, {1000, 300}},
        {9, 16, 110, 16.0f / 9, {100, static_cast<float>(CGFloat{16.0f / 9} * 100)}},
        {500, 500, 1010, 1, {1000, 1000}},
        {0, 0, 1010, 1, {1000, 1000}},
        {0, 10, 1010, 1, {1000, 300}},
        {-5, -9, 1010, 1, {1000, 1000}},
        {1600, 0, 1010, 0, {1000, 0}},
        {1600, -900, 1010, -0.5625f, {1000, 0}},
        {1, 3e38f, 1010, 3e38f, {1000, 300}},
        {16, 9, 4, 0.5625f, {0, 0}},
    };
    for (const auto& [width, height, window, ratio, shown] : cases) {
        const auto layout =
            VideoRowLayout::make(window, {.videoWidth = width, .videoHeight = height, .captionHeight = 14});
        const testing::Message what = testing::Message() << width << " x " << height;
        EXPECT_EQ(layout.ratio, ratio) << what;
        EXPECT_EQ(layout.thumbnailHeight, shown.height) << what;
        EXPECT_EQ(layout.thumbnail, CGRect({0, 0}, shown)) << what;
        EXPECT_EQ(layout.caption, CGRect(0, shown.height, window - 10, 14)) << what;
        EXPECT_EQ(layout.base, CGRect(5, 5, window - 10, shown.height + 14)) << what;
    }
}

}  // namespace
}  // namespace ostrel
