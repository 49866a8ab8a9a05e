#include "tests/platform/uikit/table/TableTestSupport.h"

#include "platform/uikit/controls/UIButton.h"
#include "platform/uikit/text/ContextMenu.h"

namespace ostrel {
namespace {

class RowActionsTest : public TableTest {
protected:
    void SetUp() override {
        source.canEdit = true;
        const auto log = [this](std::string name) {
            return [this, name](NSIndexPath path) { ran.push_back(name + " " + std::to_string(path.section)); };
        };
        source.actions = {{UITableViewRowAction::Style::normal, "Edit", log("edit")},
                          {UITableViewRowAction::Style::destructive, "Delete", log("delete")}};
        show(30);
    }
    std::shared_ptr<ContextMenu> menu() {
        for (const auto& view : platform.window().subviews()) {
            const auto found = std::dynamic_pointer_cast<ContextMenu>(view);
            if (found && found->isUserInteractionEnabled()) return found;
        }
        return nullptr;
    }
    void swipe(CGFloat y, CGFloat distance) {
        platform.drag({320, y}, {320 + distance, y}, 0.4, true);
        platform.advance(0.5);
    }
    std::vector<std::string> ran;
};

TEST_F(RowActionsTest, ASwipeUncoversTheActionsFromTheRightEdge) {
    swipe(150, -140);
    ASSERT_EQ(table->swipedRow(), (NSIndexPath{1, 0}));
    EXPECT_EQ(row(1)->frame().minX(), 16 - 149);
    const UIView* const edit = platform.viewWithText("Edit")->superview();
    const UIView* const remove = platform.viewWithText("Delete")->superview();
    EXPECT_EQ(edit->frame(), (CGRect{343 - 74, 0, 74, 88}));
    EXPECT_EQ(remove->frame(), (CGRect{343 - 149, 0, 75, 88}));
    EXPECT_EQ(remove->backgroundColor(), UIColor::destructive());
    platform.tapText("Delete");
    EXPECT_EQ(ran, (std::vector<std::string>{"delete 1"}));
    EXPECT_EQ(table->swipedRow(), std::nullopt);
    platform.advance(0.5);
    EXPECT_EQ(row(1)->frame().minX(), 16);
    EXPECT_FALSE(platform.sees("Delete"));
}

TEST_F(RowActionsTest, WhatClosesASwipedRow) {
    const std::pair<const char*, std::function<void()>> closers[] = {
        {"a tap elsewhere", [&] { platform.tap(CGPoint(100, 400)); }},
        {"a tap on the row", [&] { platform.tap(CGPoint(100, 150)); }},
        {"a drag", [&] { platform.drag(CGPoint(100, 500), CGPoint(100, 470)); }},
        {"the wheel", [&] { platform.scroll(CGPoint(100, 400), -60); }},
        {"a swipe back", [&] { swipe(150, 140); }},
        {"a reload", [&] { table->reloadData(); }},
        {"Escape", [&] { EXPECT_TRUE(platform.key(UIKeyCode::escape)); }},
    };
    for (const auto& [name, close] : closers) {
        scrollTo(0);
        table->setSwipedRow(NSIndexPath{1, 0}, false);
        platform.settle();
        ASSERT_TRUE(table->swipedRow());
        close();
        platform.advance(2);
        EXPECT_EQ(table->swipedRow(), std::nullopt) << name;
        EXPECT_FALSE(platform.sees("Delete")) << name;
    }
    EXPECT_TRUE(source.selected.empty());
    EXPECT_TRUE(ran.empty());
}

TEST_F(RowActionsTest, AShortSwipeOrOneToTheRightOpensNothing) {
    swipe(150, -40);
    EXPECT_EQ(table->swipedRow(), std::nullopt);
    platform.drag({100, 150}, {260, 150}, 0.3, true);
    EXPECT_EQ(table->swipedRow(), std::nullopt);
    source.canEdit = false;
    swipe(150, -140);
    EXPECT_EQ(table->swipedRow(), std::nullopt);
    EXPECT_EQ(row(1)->frame().minX(), 16);
}

TEST_F(RowActionsTest, TheActionMeansTheRowWhereverItIsByThen) {
    table->setSwipedRow(NSIndexPath{1, 0}, false);
    insertItem(0, {500, 88});
    platform.advance(1);
    EXPECT_EQ(table->swipedRow(), (NSIndexPath{2, 0}));
    platform.tapText("Edit");
    EXPECT_EQ(ran, (std::vector<std::string>{"edit 2"}));
}

TEST_F(RowActionsTest, ASecondaryClickOpensAMenuThatKeysCommand) {
    platform.touchType = UITouchType::pointer;
    platform.touchButton = UIButtonMask::secondary;
    platform.tap({200, 250});
    platform.advance(0.3);
    ASSERT_TRUE(menu());
    EXPECT_EQ(menu()->highlightedItem(), std::nullopt);
    platform.key(UIKeyCode::down);
    platform.key(UIKeyCode::down);
    platform.key(UIKeyCode::enter);
    EXPECT_EQ(ran, (std::vector<std::string>{"delete 2"}));
    platform.advance(0.3);
    EXPECT_FALSE(menu());

    platform.tap({200, 250});
    platform.key(UIKeyCode::escape);
    EXPECT_FALSE(menu());
    platform.tap({200, 250});
    platform.touchButton = UIButtonMask::primary;
    platform.advance(0.3);
    platform.tapText("Edit");
    EXPECT_EQ(ran.back(), "edit 2");
    EXPECT_TRUE(source.selected.empty());
}

TEST_F(RowActionsTest, ALongPressOrTheMenuKeyOpensTheMenuAndRowsWithoutActionsHaveNone) {
    platform.press({200, 250}, 0.7);
    ASSERT_TRUE(menu());
    EXPECT_TRUE(source.selected.empty());
    platform.tap({20, 600});
    EXPECT_FALSE(menu());
    platform.advance(0.3);
    platform.key(UIKeyCode::down);
    platform.key(UIKeyCode::menu);
    ASSERT_TRUE(menu());
    EXPECT_EQ(menu()->highlightedItem(), 0U);
    platform.key(UIKeyCode::escape);
    platform.advance(0.3);
    source.canEdit = false;
    platform.press({200, 250}, 0.7);
    EXPECT_FALSE(menu());
    // It was a long press on an ordinary row.
    EXPECT_EQ(source.selected.size(), 1U);
}

TEST(ContextMenu, ThePanelStaysWithinTheWindow) {
    const CGRect window{0, 0, 375, 667};
    const CGSize size{160, 90};
    EXPECT_EQ(ContextMenu::panelOrigin({100, 100}, size, window), (CGPoint{100, 100}));
    EXPECT_EQ(ContextMenu::panelOrigin({300, 100}, size, window), (CGPoint{140, 100}));
    EXPECT_EQ(ContextMenu::panelOrigin({100, 660}, size, window), (CGPoint{100, 570}));
    EXPECT_EQ(ContextMenu::panelOrigin({1, 1}, size, window), (CGPoint{8, 8})) << "never beyond the margin";
    EXPECT_EQ(ContextMenu::panelOrigin({100, 40}, {160, 640}, window), (CGPoint{100, 19}));
}

}  // namespace
}  // namespace ostrel
