#include "article/editor/VideoCollectionViewCell.h"

#include <gtest/gtest.h>

#include <limits>

namespace ostrel {
namespace {

TEST(DurationText, SecondsReadAsTheClockTextsThatScreensShow) {
    const struct {
        float seconds;
        const char* text;
    } cases[] = {
        {0, "0:00"},
        {7, "0:07"},
        {9.4f, "0:09"},
        {9.6f, "0:010"},
        {10, "0:10"},
        {42, "0:42"},
        {59.5f, "0:60"},
        {59.7f, "0:60"},
        {60, "1:00"},
        {89, "1:29"},
        {90, "2:30"},
        {125, "2:05"},
        {150, "2:30"},
        {3599, "60:59"},
        {3600, "1:0:00"},
        {3605, "1:0:05"},
        {3725, "1:2:05"},
        {4200, "1:10:00"},
        {5400, "2:30:00"},
        {7199, "2:60:59"},
        {-5, "0:0-5"},
        {360000, "100:0:00"},
        {std::numeric_limits<float>::infinity(), "0:00"},
        {std::numeric_limits<float>::quiet_NaN(), "0:00"},
        {std::numeric_limits<float>::max(), "0:00"},
    };
    for (const auto& [seconds, text] : cases) {
        EXPECT_EQ(VideoCollectionViewCell::durationString(seconds), text) << seconds;
    }
}

}  // namespace
}  // namespace ostrel
