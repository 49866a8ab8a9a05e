#include "article/editor/MediaLayout.h"
#include "article/editor/VideoCollectionViewCell.h"

#include <gtest/gtest.h>

#include <limits>

namespace ostrel {
namespace {

TEST(MediaLayout, StripsAndTilesHaveTheSizeOfTheStyle) {
    const float side = static_cast<float>(375 / 3.0 - 10.0);
    const struct {
        std::size_t items;
        std::int64_t style;
        CGFloat height;
    } cases[] = {{0, 0, 106},      {1, 0, 202},      {500, 0, 48106},      {0, 1, side}, {2, 1, side},
                 {3, 1, 2 * side}, {5, 1, 2 * side}, {500, 1, 167 * side}, {4, 2, 0},    {0, -1, 0}};
    for (const auto& c : cases)
        EXPECT_EQ(mediaStripHeight(c.items, c.style, 375), c.height) << c.items << " in style " << c.style;
    EXPECT_EQ(mediaTileSize(0, 343), CGSize(316, 86));
    EXPECT_EQ(mediaTileSize(0, 20), CGSize(0, 86));
    EXPECT_EQ(mediaTileSize(1, 375), CGSize(side, side));
    EXPECT_EQ(mediaTileSize(1, 20), CGSize(0, 0));
    EXPECT_EQ(mediaTileSize(2, 343), CGSize(167, 167));
}

TEST(MediaLayout, PartsOfATileStandWhereTheStylePutsThem) {
    const MediaTileLayout present{{0, 0, 167, 160}, {1, 2, 3, 4}, {5, 9, 7, 8}};
    const struct {
        std::int64_t style;
        CGSize tile;
        MediaTileLayout parts;
    } cases[] = {{0, {348, 86}, {{0, 0, 117, 86}, {119, 3, 227, 80}, {8, 9, 218, 16}}},
                 {0, {20, 5}, {{0, 0, 117, 86}, {119, 3, 0, 0}, {8, 9, 0, 16}}},
                 {1, {115, 115}, {{0, 0, 167, 160}, {}, {}}}};
    for (const auto& c : cases) {
        const auto layout = mediaTileLayout(c.style, c.tile, present);
        ASSERT_TRUE(layout);
        EXPECT_EQ(layout->picture, c.parts.picture);
        EXPECT_EQ(layout->caption, c.parts.caption);
        EXPECT_EQ(layout->placeholder, c.parts.placeholder);
    }
    EXPECT_FALSE(mediaTileLayout(2, {167, 167}, present));
}

TEST(DurationText, SecondsReadAsTheClockTextsThatScreensShow) {
    using Limits = std::numeric_limits<float>;
    const float cases[] = {0,
                           7,
                           9.4f,
                           9.6f,
                           10,
                           42,
                           59.5f,
                           60,
                           89,
                           90,
                           125,
                           150,
                           3599,
                           3600,
                           3605,
                           3725,
                           4200,
                           5400,
                           7199,
                           -5,
                           Limits::infinity(),
                           Limits::quiet_NaN(),
                           Limits::max(),
                           360000};
    std::string texts;
    for (const float seconds : cases) texts += VideoCollectionViewCell::durationString(seconds) + " ";
    EXPECT_EQ(texts, "0:00 0:07 0:09 0:010 0:10 0:42 0:60 1:00 1:29 2:30 2:05 2:30 60:59 1:0:00 1:0:05 1:2:05 1:10:00 "
                     "2:30:00 2:60:59 0:0-5 0:00 0:00 0:00 100:0:00 ");
}

}  // namespace
}  // namespace ostrel
