#include "platform/uikit/screens/PresentationLayout.h"

#include <gtest/gtest.h>

#include <vector>

namespace ostrel {
namespace {

bool isWithin(const CGRect& inner, const CGRect& outer) { return inner.intersection(outer) == inner; }

TEST(PresentationLayout, EveryFrameStaysWithinTheSafePartOfTheWindow) {
    const std::vector<CGSize> windows{{320, 480}, {375, 667}, {667, 375}, {834, 1112}, {1440, 900}, {120, 90}};
    const std::vector<CGSize> wishes{{}, {280, 188}, {320, 5000}, {5000, 200}, {1, 1}};
    const std::vector<UIEdgeInsets> safeAreas{{}, {44, 0, 34, 0}, {0, 44, 21, 44}};
    for (const CGSize window : windows) {
        const std::vector<std::optional<CGRect>> anchors{std::nullopt,
                                                         CGRect{0, 0, 44, 44},
                                                         CGRect{window.width - 44, 0, 44, 44},
                                                         CGRect{0, window.height - 30, 50, 30},
                                                         CGRect{window.width / 2, window.height / 2, 1, 1},
                                                         CGRect{-500, -500, 40, 40},
                                                         CGRect{20, window.height + 800, 50, 30},
                                                         CGRect{0, 0, window.width, window.height}};
        for (const CGSize wish : wishes) {
            for (const UIEdgeInsets& safeArea : safeAreas) {
                const CGRect whole{{}, window}, safe = whole.insetBy(safeArea);
                const bool isRoomy = window.width >= 320;
                for (const auto& anchor : anchors) {
                    const CGRect frame = presentationFrame(PresentationKind::popover, wish, {window, safeArea, anchor});
                    EXPECT_TRUE(isWithin(frame, isRoomy ? safe.insetBy(8, 8) : safe))
                        << window.width << " wide, wish " << wish.width << " at " << frame.minX();
                }
                for (const auto kind : {PresentationKind::card, PresentationKind::alert}) {
                    const CGRect frame = presentationFrame(kind, wish, {window, safeArea, {}});
                    EXPECT_TRUE(isWithin(frame, isRoomy ? safe.insetBy(20, 20) : safe));
                }
                const CGRect sheet = presentationFrame(PresentationKind::sheet, wish, {window, safeArea, {}});
                EXPECT_TRUE(isWithin(sheet, whole));
                EXPECT_EQ(sheet.maxY(), window.height);
                EXPECT_GE(sheet.minY(), safeArea.top);
            }
        }
    }
}

TEST(PresentationLayout, APopoverTakesTheFirstSideWithRoomAndLeavesItsAnchorFree) {
    const CGSize window{800, 600}, size{300, 200};
    const std::pair<CGRect, CGPoint> cases[] = {
        {{380, 100, 40, 20}, {250, 126}},    // below
        {{380, 550, 40, 20}, {250, 344}},    // above
        {{0, 100, 40, 20}, {8, 126}},        // below, kept in at the left
        {{760, 100, 40, 20}, {492, 126}},    // below, kept in at the right
        {{40, 150, 100, 300}, {146, 200}},   // neither above nor below: to the right
        {{600, 150, 100, 300}, {294, 200}},  // to the left
    };
    for (const auto& [anchor, origin] : cases) {
        const CGRect frame = presentationFrame(PresentationKind::popover, size, {window, {}, anchor});
        EXPECT_EQ(frame, (CGRect{origin.x, origin.y, 300, 200}));
        EXPECT_FALSE(frame.intersects(anchor));
    }
}

TEST(PresentationLayout, UsualSizesHoldWhereTheWindowHasRoom) {
    const PresentationSpace wide{{1440, 900}, {}, {}}, phone{{375, 667}, {20, 0, 34, 0}, {}};
    EXPECT_EQ(presentationFrame(PresentationKind::card, {}, wide), (CGRect{450, 140, 540, 620}));
    EXPECT_EQ(presentationFrame(PresentationKind::cover, {100, 100}, wide), (CGRect{0, 0, 1440, 900}));
    // A sheet stands on the lower edge and keeps its content clear of the strip there.
    EXPECT_EQ(presentationFrame(PresentationKind::sheet, {0, 300}, phone), (CGRect{0, 333, 375, 334}));
    EXPECT_EQ(presentationFrame(PresentationKind::sheet, {}, phone), (CGRect{0, 30, 375, 637}));
}

}  // namespace
}  // namespace ostrel
