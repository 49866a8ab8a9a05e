#include "tests/platform/uikit/table/TableTestSupport.h"

#include "platform/uikit/controls/UIButton.h"

namespace ostrel {
namespace {

/// How grey a row is shown, 0 to 1.
double pressLook(const UITableViewCell& cell) {
    for (const auto& view : cell.subviews()) {
        if (view->backgroundColor() == UIColor::rgb(0xE8EAF0)) return view->alpha();
    }
    return 0;
}

TEST_F(TableTest, ATapSelectsAndOnlyAPressThatRestsShows) {
    show(30);
    platform.touch(UITouchPhase::began, {100, 150});
    EXPECT_EQ(pressLook(*row(1)), 0);
    platform.advance(0.1);
    EXPECT_EQ(pressLook(*row(1)), 1);
    platform.touch(UITouchPhase::ended, {100, 150});
    EXPECT_EQ(source.selected, (std::vector<NSIndexPath>{{1, 0}}));
    EXPECT_EQ(pressLook(*row(1)), 1);
    EXPECT_EQ(table->indexPathForSelectedRow(), (NSIndexPath{1, 0}));
    table->deselectRow({1, 0}, true);
    platform.advance(0.5);
    EXPECT_EQ(pressLook(*row(1)), 0);

    platform.drag({100, 400}, {100, 300});
    platform.advance(3);
    EXPECT_EQ(source.selected.size(), 1U);
    table->allowsSelection = false;
    platform.tap({100, 150});
    EXPECT_EQ(source.selected.size(), 1U);
}

TEST_F(TableTest, ATouchOnAFlingStopsItAndSelectsNothing) {
    show(300);
    platform.drag({100, 500}, {100, 200}, 0.1);
    platform.advance(0.1);
    ASSERT_TRUE(table->isDecelerating());
    platform.tap({100, 300});
    const CGFloat offset = table->contentOffset().y;
    EXPECT_FALSE(table->isDecelerating());
    platform.advance(2);
    EXPECT_EQ(table->contentOffset().y, offset);
    EXPECT_TRUE(source.selected.empty());
    EXPECT_FALSE(platform.backend().framesWanted());
}

TEST_F(TableTest, TheAccessoryButtonIsItsOwnTarget) {
    show(10);
    row(3)->setAccessoryType(UITableViewCellAccessoryType::detailDisclosureButton);
    platform.settle();
    const auto button = row(3)->accessoryButton();
    EXPECT_EQ(button->superview()->bounds().maxX() - 16 - 9, button->frame().maxX());
    platform.tap(*button);
    EXPECT_EQ(source.accessories, (std::vector<NSIndexPath>{{3, 0}}));
    EXPECT_TRUE(source.selected.empty());
}

TEST_F(TableTest, ArrowKeysMoveFromRowToRowAndReturnOpensOne) {
    show(40);
    source.canEdit = true;
    for (int i = 0; i < 12; ++i) ASSERT_TRUE(platform.key(UIKeyCode::down));
    EXPECT_EQ(platform.window().focusedView(), row(11).get());
    EXPECT_GE(row(11)->frame().minY(), table->bounds().minY());
    EXPECT_LE(row(11)->frame().maxY(), table->bounds().maxY());
    platform.key(UIKeyCode::up);
    EXPECT_TRUE(platform.key(UIKeyCode::enter));
    EXPECT_EQ(source.selected, (std::vector<NSIndexPath>{{10, 0}}));
    EXPECT_TRUE(platform.key(UIKeyCode::deleteForward));
    EXPECT_EQ(source.committed, (std::vector<NSIndexPath>{{10, 0}}));
    platform.key(UIKeyCode::end);
    platform.advance(1);
    EXPECT_EQ(table->contentOffset().y, table->maximumOffsetY());
    platform.key(UIKeyCode::home);
    platform.advance(1);
    EXPECT_EQ(table->contentOffset().y, 0);
    platform.key(UIKeyCode::space);
    platform.advance(1);
    EXPECT_EQ(table->contentOffset().y, 667 - 40);

    // The rows at the end are higher than their estimate.
    show(200, 130);
    platform.key(UIKeyCode::end);
    platform.advance(1);
    EXPECT_EQ(table->contentOffset().y, table->maximumOffsetY());
    EXPECT_EQ(rowsOnScreen().rbegin()->first, 199);
    EXPECT_EQ(rowsOnScreen().at(199), 667 - 130 - 1);
}

TEST_F(TableTest, TabVisitsTheRowsInTheirOrderAfterScrollingBack) {
    show(40);
    scrollTo(2000);
    scrollTo(1000);
    std::vector<std::int64_t> order;
    for (const auto& view : table->subviews()) {
        const auto cell = std::dynamic_pointer_cast<UITableViewCell>(view);
        if (cell) order.push_back(table->indexPathForCell(*cell)->section);
    }
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
    EXPECT_GE(order.size(), 7U);
}

}  // namespace
}  // namespace ostrel
