#include "article/list/ArticleListRowLayout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

namespace ostrel {
namespace {

using Layout = ArticleListRowLayout;

TEST(ArticleListRowLayoutTest, PartsFollowTheSizeOfTheRow) {
    const struct {
        CGSize size;
        CGFloat room, name, text, comment, share, y;
    } cases[] = {
        {{375, 200}, Layout::plainAccessoryRoom, 281, 269, 76 + 299 * 0.28, 76 + 299 * 0.56, 165},
        {{320, 88}, Layout::plainAccessoryRoom, 226, 214, 76 + 244 * 0.28, 76 + 244 * 0.56, 53},
        {{1000, 120}, Layout::plainAccessoryRoom, 906, 894, 76 + 924 * 0.28, 76 + 924 * 0.56, 85},
        {{375, 200}, Layout::ownersAccessoryRoom, 281, 234, 76 + 299 * 0.28, 76 + 299 * 0.56, 165},
        {{1000, 120}, Layout::ownersAccessoryRoom, 906, 859, 76 + 924 * 0.28, 76 + 924 * 0.56, 85},
        {{40, 10}, Layout::plainAccessoryRoom, 0, 0, 76 - 36 * 0.28, 76 - 36 * 0.56, -25},
    };
    for (const auto& [size, room, name, text, comment, share, y] : cases) {
        const auto layout = Layout::make(size, {.accessoryRoom = room, .textHeight = 50});
        EXPECT_EQ(layout.face, CGRect(20, 12, 56, 56));
        EXPECT_EQ(layout.name, CGRect(84, 12, name, 18)) << size.width;
        EXPECT_EQ(layout.text, CGRect(76, 32, text, 50)) << size.width;
        EXPECT_EQ(Layout::textWidth(size.width, room), text);
        EXPECT_EQ(layout.like, CGRect(76, y, 50, 30)) << size.width;
        EXPECT_EQ(layout.comment, CGRect(comment, y, 50, 30)) << size.width;
        EXPECT_EQ(layout.share, CGRect(share, y, 50, 30)) << size.width;
    }
    EXPECT_EQ(Layout::make({375, 200}, {.nameWidth = 30}).time, CGRect(119, 12, 256, 18)) << "behind the name";
    EXPECT_EQ(Layout::make({375, 200}, {.nameWidth = 500}).time.width(), 0) << "a long name leaves no room";
}

TEST(ArticleListRowLayoutTest, ATextIsALittleHigherThanMeasuredWithinItsLimits) {
    const std::pair<CGFloat, CGFloat> heights[] = {{0, 24},           {23, 24},   {25, 25 * 1.04},
                                                   {115, 115 * 1.04}, {116, 120}, {1e9, 120}};
    for (const auto& [measured, shown] : heights) EXPECT_EQ(Layout::shownTextHeight(measured), shown);
    for (const CGFloat line : {0.0, 0.5, 1.0, 11.9, 12.0, 14.4, 119.0, 121.0}) {
        const int lines = Layout::measuredLines(line);
        EXPECT_EQ(Layout::shownTextHeight(lines * std::max(1.0, line)), 120) << line << ": as high as can be";
        EXPECT_LE(lines, 121) << line;
    }
    EXPECT_EQ(Layout::measuredLines(14), 9) << "no more lines than needed";
}

}  // namespace
}  // namespace ostrel
