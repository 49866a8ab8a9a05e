#include "tests/platform/uikit/table/TableTestSupport.h"

#include "platform/uikit/table/RowHeights.h"
#include "platform/uikit/view/UIDevice.h"

#include <random>

namespace ostrel {
namespace {

TEST_F(TableTest, MarginsAndCardsFollowStyleAndIdiom) {
    const std::tuple<UITableViewStyle, UIUserInterfaceIdiom, CGFloat, CGFloat, CGFloat> cases[] = {
        {UITableViewStyle::insetGrouped, UIUserInterfaceIdiom::phone, 16, 343, 10},
        {UITableViewStyle::insetGrouped, UIUserInterfaceIdiom::pad, 20, 335, 10},
        {UITableViewStyle::insetGrouped, UIUserInterfaceIdiom::mac, 20, 335, 10},
        {UITableViewStyle::grouped, UIUserInterfaceIdiom::phone, 0, 375, 0},
        {UITableViewStyle::plain, UIUserInterfaceIdiom::pad, 0, 375, 0},
    };
    source.rowsOf = [](std::int64_t) { return 3; };
    source.heightOf = [](NSIndexPath path) { return 30.0 + 10 * static_cast<CGFloat>(path.row); };
    for (const auto& [style, idiom, x, width, radius] : cases) {
        SCOPED_TRACE(testing::Message() << static_cast<int>(style) << " on " << static_cast<int>(idiom));
        UIDevice::currentDevice().setUserInterfaceIdiom(idiom);
        show(2, 88, style);
        EXPECT_EQ(table->rowWidth(), width);
        EXPECT_EQ(table->contentSize(), (CGSize{375, 2 * (8 + 30 + 40 + 50 + 1)}));
        EXPECT_EQ(table->rectForRowAtIndexPath({1, 1}), (CGRect{x, 129 + 8 + 30, width, 40}));
        for (std::int64_t r = 0; r < 3; ++r) {
            const auto cell = table->cellForRowAtIndexPath({1, r});
            EXPECT_EQ(cell->frame(), table->rectForRowAtIndexPath({1, r}));
            EXPECT_EQ(cell->cornerRadius(), r == 1 ? 0 : radius);
            EXPECT_EQ(cell->state().roundsTop, radius > 0 && r == 0);
            EXPECT_EQ(cell->state().roundsBottom, radius > 0 && r == 2);
        }
        EXPECT_EQ(table->indexPathForRowAtPoint({100, 129 + 8 + 29.9}), (NSIndexPath{1, 0}));
        EXPECT_EQ(table->indexPathForRowAtPoint({100, 129 + 4}), std::nullopt);
        EXPECT_EQ(table->indexPathForRowAtPoint({5, 20}).has_value(), x == 0);
    }
}

TEST_F(TableTest, WhatComesNextIsNamedOnceOnTheWay) {
    show(300, 91);
    const auto namedSections = [&] {
        std::vector<std::int64_t> sections;
        for (const NSIndexPath& path : std::exchange(source.prefetched, {})) sections.push_back(path.section);
        return sections;
    };
    EXPECT_TRUE(namedSections().empty()) << "nothing has moved";
    for (CGFloat offset = 40; offset <= 4000; offset += 40) scrollTo(offset);
    auto named = namedSections();
    ASSERT_FALSE(named.empty());
    for (std::size_t i = 1; i < named.size(); ++i) EXPECT_EQ(named[i], named[i - 1] + 1);
    EXPECT_GT(named.front(), 6) << "what is made already is not named";
    EXPECT_NEAR(static_cast<double>(named.back()), (4000 + 4 * 667 + 240) / 100, 3);
    for (CGFloat offset = 3960; offset >= 0; offset -= 40) scrollTo(offset);
    EXPECT_TRUE(namedSections().empty()) << "the way back has been seen";

    scrollTo(20'000);
    named = namedSections();
    ASSERT_FALSE(named.empty());
    EXPECT_GT(named.front(), 200);
    source.items.erase(source.items.begin() + 210);
    table->deleteSections(210, 1, UITableViewRowAnimation::none);
    scrollTo(20'010);
    EXPECT_FALSE(namedSections().empty()) << "they may be others now";
}

TEST_F(TableTest, TextHeadersHaveTheirStylesHeightAndPlainOnesStick) {
    source.header = source.footer = -1;
    source.titles = {"Uno", "", "Due"};
    source.rowsOf = [](std::int64_t) { return 20; };
    show(3, 50, UITableViewStyle::plain);
    EXPECT_EQ(table->rectForRowAtIndexPath({0, 0}).minY(), 28);
    EXPECT_EQ(table->rectForRowAtIndexPath({1, 0}).minY(), 28 + table->rectForRowAtIndexPath({0, 19}).maxY() - 28);
    scrollTo(300);
    const UIView* const title = platform.viewWithText("Uno");
    ASSERT_TRUE(title);
    EXPECT_EQ(title->superview()->frame().minY(), 300);
    EXPECT_FALSE(platform.sees("Due"));
    scrollTo(table->rectForRowAtIndexPath({0, 19}).maxY() - 10);
    EXPECT_EQ(platform.viewWithText("Uno")->superview()->frame().maxY(), table->rectForRowAtIndexPath({0, 19}).maxY());

    show(3, 50, UITableViewStyle::grouped);
    EXPECT_EQ(table->rectForRowAtIndexPath({0, 0}).minY(), 38);
}

TEST_F(TableTest, HeaderAndFooterViewsAreAboveAndBelowTheSections) {
    show(3);
    table->setTableFooterView(make<UIView>(CGRect{0, 0, 10, 50}));
    table->setTableHeaderView(make<UIView>(CGRect{0, 0, 10, 20}));
    platform.settle();
    EXPECT_EQ(table->rectForRowAtIndexPath({0, 0}).minY(), 28);
    EXPECT_EQ(table->tableFooterView()->frame(), (CGRect{0, 20 + 3 * 97, 375, 50}));
    EXPECT_EQ(table->contentSize().height, 20 + 3 * 97 + 50);
}

TEST_F(TableTest, AMillionRowsAreAskedOnceAndMoveExactlyOnePointAnywhere) {
    source.isUniform = true;
    source.rowNumbersAsked = 0;
    show(1'000'000);
    EXPECT_EQ(source.rowNumbersAsked, 1);
    EXPECT_EQ(table->contentSize().height, 97e6);
    std::mt19937 random(7);
    for (int i = 0; i < 40; ++i) {
        scrollTo(std::uniform_int_distribution<int>(0, 96'000'000)(random) + 0.25);
        const auto before = rowsOnScreen(true);
        ASSERT_GE(before.size(), 7U);
        const CGFloat offset = table->contentOffset().y;
        platform.window().sendScroll({.location = {100, 300}, .dx = 0, .dy = -1, .precise = true});
        platform.settle();
        ASSERT_EQ(table->contentOffset().y, offset + 1);
        expectMoved(before, rowsOnScreen(true), -1);
    }
    EXPECT_LE(table->liveCellCount(), 14 + UITableView::reusePoolLimit);
    EXPECT_LE(source.cellsMade, static_cast<int>(14 + UITableView::reusePoolLimit));
}

TEST_F(TableTest, AScrollStepTouchesNoRowThatStays) {
    show(1000);
    scrollTo(5000);
    table->setShowsVerticalScrollIndicator(false);
    scrollTo(5001);
    for (const Mutation& mutation : platform.backend().lastTransaction().mutations) {
        EXPECT_EQ(mutation.tag, table->tag());
        EXPECT_EQ(mutation.type, Mutation::Type::update);
        EXPECT_EQ(mutation.changes, std::uint32_t{changedBoundsOrigin});
    }
    EXPECT_EQ(platform.backend().lastTransaction().mutations.size(), 1U);
}

TEST_F(TableTest, RowsInReachKeepTheirPlaceWhateverHeightsTurnOut) {
    for (unsigned seed = 1; seed <= 10; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const auto height = [&](std::int64_t) { return std::uniform_real_distribution<CGFloat>(20, 300)(random); };
        show(600);
        setHeights(height);
        scrollTo(20'000);
        for (int step = 0; step < 120; ++step) {
            const auto before = rowsOnScreen();
            const CGFloat distance = std::uniform_int_distribution<int>(-400, 400)(random);
            const CGFloat offset = table->contentOffset().y;
            if (step % 10 == 3) {
                // A row tells a new height, as when its picture has come.
                const auto shown = table->indexPathsForVisibleRows();
                // Not the topmost, which may shrink until nothing of it is left on screen.
                const auto pick = std::uniform_int_distribution<std::size_t>(1, shown.size() - 1)(random);
                const auto cell = row(shown[pick].section);
                auto& item = source.items[static_cast<std::size_t>(shown[pick].section)];
                item.height = height(item.id);
                const auto first = *before.begin();
                cell->setWanted(item.height);
                platform.settle();
                ASSERT_EQ(rowsOnScreen().at(first.first), first.second);
                ASSERT_EQ(cell->frame().height(), roundedHeight(item.height));
                continue;
            }
            if (offset + distance < 2000 || offset + distance > table->maximumOffsetY() - 2000) continue;
            scrollTo(offset + distance);
            const auto after = rowsOnScreen();
            expectMoved(before, after, -distance);
            CGFloat expected = after.begin()->second;
            for (const auto& [id, y] : after) {
                ASSERT_EQ(y, expected) << "row " << id;
                expected += roundedHeight(source.items[static_cast<std::size_t>(id)].height) + 9;
            }
            ASSERT_GE(expected, 667);
        }
    }
}

TEST_F(TableTest, AFlingMeasuresRowsOnTheWayWithoutALeap) {
    show(500);
    setHeights([](std::int64_t id) { return 40 + static_cast<CGFloat>(id * 37 % 160); });
    scrollTo(10'000);
    platform.drag({180, 200}, {180, 500}, 0.1);
    ASSERT_TRUE(table->isDecelerating());
    for (int frame = 0; frame < 30; ++frame) {
        const auto before = rowsOnScreen();
        platform.advance(HeadlessPlatform::frameInterval);
        // All rows that stay move by the same distance, downwards and less than the fling's speed.
        const auto after = rowsOnScreen();
        const auto first = before.begin()->first;
        ASSERT_TRUE(after.contains(first));
        const CGFloat moved = after.at(first) - before.at(first);
        expectMoved(before, after, moved);
        ASSERT_GE(moved, 0);
        ASSERT_LT(moved, 60);
    }
}

TEST_F(TableTest, AnotherWidthMeasuresAgainAndKeepsThePlace) {
    show(300);
    scrollTo(9700.5);
    const auto first = *rowsOnScreen().begin();
    for (auto& item : source.items) item.height = 120;
    platform.window().setSize({667, 375});
    platform.settle();
    EXPECT_EQ(rowsOnScreen().at(first.first), first.second);
    EXPECT_EQ(row(first.first)->frame().size, (CGSize{635, 120}));
    EXPECT_EQ(source.lastWidthAsked, 635) << "a row used again measures at the new width";
}

TEST_F(TableTest, ReloadKeepsTheOffsetWhereItFitsAndUsesTheRowsAgain) {
    show(200);
    scrollTo(5000);
    const auto cell = row(52);
    const int made = source.cellsMade;
    for (std::int64_t i = 200; i < 220; ++i) source.items.push_back({i, 88});
    reload();
    EXPECT_EQ(table->contentOffset().y, 5000);
    EXPECT_EQ(row(52), cell);
    EXPECT_EQ(source.cellsMade, made);
    source.items.resize(10);
    reload();
    EXPECT_EQ(table->contentOffset().y, 10 * 97 - 667);
    source.items.clear();
    reload();
    EXPECT_EQ(table->contentOffset().y, 0);
    EXPECT_TRUE(rowsOnScreen(true).empty());
}

TEST_F(TableTest, ScrollToRowShowsItWhollyThoughTheHeightsWereEstimates) {
    show(400);
    setHeights([](std::int64_t id) { return 30 + static_cast<CGFloat>(id * 61 % 200); });
    for (const std::int64_t section : {300, 10, 399, 0, 150}) {
        table->scrollToRowAtIndexPath({section, 0}, false);
        const CGRect frame = row(section)->frame();
        EXPECT_GE(frame.minY(), table->bounds().minY()) << section;
        EXPECT_LE(frame.maxY(), table->bounds().maxY()) << section;
    }
}

}  // namespace
}  // namespace ostrel
