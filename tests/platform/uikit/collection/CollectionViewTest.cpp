#include "backends/headless/HeadlessPlatform.h"
#include "platform/uikit/collection/UICollectionView.h"
#include "platform/uikit/controls/UIButton.h"
#include "platform/uikit/screens/UIViewController.h"
#include "platform/uikit/table/UITableView.h"
#include "platform/uikit/text/UILabel.h"

#include <gtest/gtest.h>

#include <numeric>
#include <ranges>

namespace ostrel {

namespace {

class NumberCell final : public UICollectionViewCell {
public:
    explicit NumberCell(CGRect frame) : UICollectionViewCell(frame), label(make<UILabel>(CGRect{0, 0, 60, 20})) {
        contentView()->addSubview(label);
        button = make<UIButton>();
        button->setFrame({frame.width() - 30, 0, 30, 30});
        button->addTarget([] { ++pressed; }, UIControlEvent::touchUpInside);
        contentView()->addSubview(button);
    }
    std::shared_ptr<UILabel> label;
    std::shared_ptr<UIButton> button;
    static inline int pressed = 0;  // of all
};

/// Numbers as items, in a collection view that fills a row of a table, as high as all its items.
class Strip final : public UITableViewDataSource,
                    public UITableViewDelegate,
                    public UICollectionViewDataSource,
                    public UICollectionViewDelegateFlowLayout,
                    public std::enable_shared_from_this<Strip> {
public:
    enum class Move { swaps, inserts };
    std::vector<int> items;
    Move move = Move::swaps;
    bool canMove = true;
    int asked = 0;
    std::vector<std::pair<std::int64_t, std::int64_t>> moves;
    std::vector<std::int64_t> selected;
    std::shared_ptr<UITableView> table;
    std::shared_ptr<UITableViewCell> row;
    std::shared_ptr<UICollectionView> view;

    void show(HeadlessPlatform& platform, int count) {
        items.resize(static_cast<std::size_t>(count));
        std::iota(items.begin(), items.end(), 0);
        const auto screen = make<UIViewController>();
        table = make<UITableView>(CGRect{0, 0, 375, 667}, UITableViewStyle::plain);
        table->setDataSource(this);
        table->setDelegate(this);
        screen->view()->addSubview(table);
        row = make<UITableViewCell>(UITableViewCellStyle::defaultStyle, "strip");
        view = make<UICollectionView>(row->bounds(), std::make_shared<UICollectionViewFlowLayout>());
        view->setAutoresizingMask(flexibleWidth | flexibleHeight);
        view->registerClassForCellWithReuseIdentifier<NumberCell>("cell");
        view->setDataSource(weak_from_this());
        view->setDelegate(weak_from_this());
        row->addSubview(view);
        platform.window().setRootViewController(screen);
        platform.settle();
    }
    std::int64_t tableViewNumberOfRowsInSection(UITableView&, std::int64_t) override { return 2; }
    CGFloat tableViewHeightForRowAtIndexPath(UITableView&, NSIndexPath path) override {
        return path.row == 0 ? 200 : static_cast<CGFloat>(items.size()) * 96 + 10;
    }
    std::shared_ptr<UITableViewCell> tableViewCellForRowAtIndexPath(UITableView&, NSIndexPath path) override {
        return path.row == 1 ? row : make<UITableViewCell>(UITableViewCellStyle::defaultStyle, "title");
    }
    std::int64_t collectionViewNumberOfItemsInSection(UICollectionView&, std::int64_t) override {
        return static_cast<std::int64_t>(items.size());
    }
    std::shared_ptr<UICollectionViewCell> collectionViewCellForItemAtIndexPath(UICollectionView& collection,
                                                                               NSIndexPath path) override {
        ++asked;
        auto cell = std::static_pointer_cast<NumberCell>(
            collection.dequeueReusableCellWithReuseIdentifierForIndexPath("cell", path));
        const int item = items.at(static_cast<std::size_t>(path.row));
        cell->label->setText(std::to_string(item));
        cell->setAccessibility(AccessibilityRole::listItem, "Item " + std::to_string(item));
        return cell;
    }
    bool collectionViewCanMoveItemAtIndexPath(UICollectionView&, NSIndexPath) override { return canMove; }
    void collectionViewMoveItemAtIndexPathToIndexPath(UICollectionView&, NSIndexPath from, NSIndexPath to) override {
        moves.emplace_back(from.row, to.row);
        const auto first = items.begin() + from.row, last = items.begin() + to.row;
        if (move == Move::swaps) return std::iter_swap(first, last);
        if (first < last) std::rotate(first, first + 1, last + 1);
        if (last < first) std::rotate(last, first, first + 1);
    }
    CGSize collectionViewLayoutSizeForItemAtIndexPath(UICollectionView&, NSIndexPath) override { return {348, 86}; }
    UIEdgeInsets collectionViewLayoutInsetForSectionAtIndex(UICollectionView&, std::int64_t) override {
        return {5, 5, 5, 5};
    }
    void collectionViewDidSelectItemAtIndexPath(UICollectionView&, NSIndexPath path) override {
        selected.push_back(path.row);
    }
    bool collectionViewRemoveItemAtIndexPath(UICollectionView& collection, NSIndexPath path) override {
        collection.performBatchUpdates([&] { remove(path.row); });
        return true;
    }
    void insert(std::int64_t at, int item) {
        items.insert(items.begin() + at, item);
        view->insertItemsAtIndexPaths({{0, at}});
    }
    void remove(std::int64_t at) {
        items.erase(items.begin() + at);
        view->deleteItemsAtIndexPaths({{0, at}});
    }
    /// The items that the cells show, from top to bottom; fails when two cells are in one place.
    std::vector<int> shown() const {
        std::map<CGFloat, int> found;
        for (const auto& child : view->subviews()) {
            const auto cell = std::dynamic_pointer_cast<NumberCell>(child);
            if (!cell || cell->alpha() <= 0.5) continue;
            EXPECT_TRUE(found.emplace(cell->frame().minY(), std::stoi(cell->label->text())).second);
        }
        const auto items = std::views::values(found);
        return {items.begin(), items.end()};
    }
    CGPoint middle(std::int64_t item) const {
        const CGRect frame = view->frameForItemAtIndexPath({0, item});
        return view->convertPointToView({frame.midX(), frame.midY()}, nullptr);
    }
};

class CollectionViewTest : public ::testing::Test {
protected:
    HeadlessPlatform platform;
    std::shared_ptr<Strip> strip;

    /// A new strip of `count` items on a new screen.
    void show(int count) {
        strip = std::make_shared<Strip>();
        strip->show(platform, count);
    }
    /// Drags as a recogniser of the module would.
    void attachDrag(double seconds) {
        drag = std::make_shared<UILongPressGestureRecognizer>([this](UIGestureRecognizer& recognizer) {
            UICollectionView& view = *strip->view;
            const CGPoint point = recognizer.locationInView(&view);
            if (recognizer.state() == UIGestureRecognizerState::began) {
                const auto path = view.indexPathForItemAtPoint(point);
                if (path) view.beginInteractiveMovementForItemAtIndexPath(*path);
            } else if (recognizer.state() == UIGestureRecognizerState::changed) {
                view.updateInteractiveMovementTargetPosition(point);
            } else {
                view.endInteractiveMovement();
            }
        });
        drag->minimumPressDuration = seconds;
        strip->view->addGestureRecognizer(drag);
    }
    std::shared_ptr<UILongPressGestureRecognizer> drag;
};

}  // namespace

TEST(FlowSectionTest, LinesFillTheWidthAndTheLastKeepsTheirSpacing) {
    const auto third = static_cast<CGFloat>(static_cast<float>(343 / 3.0 - 10));
    const std::tuple<const char*, CGSize, std::vector<CGPoint>, CGFloat> cases[] = {
        {"nothing", {100, 80}, {}, 10},
        {"one column is centred, its last item too", {316, 86}, {{13.5, 5}, {13.5, 101}}, 192},
        {"wider than the view", {400, 50}, {{5, 5}}, 60},
        {"a share in single precision", {third, third}, {{5, 5}, {119.33, 5}, {233.67, 5}}, 114.33},
        {"the last of two lines", {100, 80}, {{5, 5}, {121.5, 5}, {238, 5}, {5, 95}, {121.5, 95}}, 180},
        {"an only line that is not full", {100, 80}, {{5, 5}, {115, 5}}, 90},
        {"sizes that are none", {-5, NAN}, {{5, 5}}, 10},
    };
    for (const auto& [what, size, origins, height] : cases) {
        SCOPED_TRACE(what);
        const FlowSection flow({343, {5, 5, 5, 5}, 10, 10}, std::vector<CGSize>(origins.size(), size));
        ASSERT_EQ(flow.count(), origins.size());
        for (std::size_t i = 0; i < origins.size(); ++i) {
            EXPECT_NEAR(flow.frame(i).minX(), origins[i].x, 0.01) << i;
            EXPECT_NEAR(flow.frame(i).minY(), origins[i].y, 0.01) << i;
        }
        EXPECT_NEAR(flow.height(), height, 0.01);
    }
}

TEST_F(CollectionViewTest, OnlyCellsNearTheViewportExistThoughTheStripIsAsHighAsAllItems) {
    show(500);
    EXPECT_EQ(strip->view->frame().height(), 48010);
    EXPECT_LE(strip->asked, 9);
    EXPECT_EQ(strip->shown().front(), 0);
    for (int i = 0; i < 40; ++i) {
        platform.scroll({100, 300}, -600);
        platform.advance(0.5);
    }
    const auto seen = strip->shown();
    ASSERT_FALSE(seen.empty());
    const CGFloat top = strip->table->contentOffset().y - 200;
    EXPECT_LE(seen.front() * 96, top);
    EXPECT_GE(seen.back() * 96 + 91, top + 667);
    EXPECT_LE(strip->view->liveCellCount(), 12 + UICollectionView::reusePoolLimit);
    platform.scroll({100, 300}, 1e6);
    platform.advance(2);
    EXPECT_EQ(strip->shown().front(), 0);
}

TEST_F(CollectionViewTest, ReloadKeepsTheCellOfAnItemAndItsFocus) {
    show(4);
    const auto before = strip->view->cellForItemAtIndexPath({0, 2});
    platform.window().setFocusedView(before.get(), true);
    strip->items = {7, 8, 9};
    strip->view->reloadData();
    platform.settle();
    EXPECT_EQ(strip->view->cellForItemAtIndexPath({0, 2}), before);
    EXPECT_EQ(platform.window().focusedView(), before.get());
    EXPECT_EQ(strip->shown(), (std::vector<int>{7, 8, 9}));
}

TEST_F(CollectionViewTest, UpdatesEndAtWhatTheDataSourceHolds) {
    const std::tuple<const char*, std::function<void(Strip&)>, std::vector<int>> cases[] = {
        {"nothing", [](Strip&) {}, {0, 1, 2, 3}},
        {"insert at the end", [](Strip& s) { s.insert(4, 9); }, {0, 1, 2, 3, 9}},
        {"insert at the front", [](Strip& s) { s.insert(0, 9); }, {9, 0, 1, 2, 3}},
        {"delete one", [](Strip& s) { s.remove(1); }, {0, 2, 3}},
        {"delete all", [](Strip& s) { s.remove(3), s.remove(2), s.remove(1), s.remove(0); }, {}},
        {"both", [](Strip& s) { s.remove(3), s.remove(0), s.insert(1, 9); }, {1, 9, 2}},
        {"reloaded within", [](Strip& s) { s.items = {5}, s.view->reloadData(); }, {5}},
        {"the row is measured within",
         [](Strip& s) {
             s.remove(0), s.table->reloadRow({0, 1}, UITableViewRowAnimation::none);
         },
         {1, 2, 3}},
    };
    for (const auto& [what, change, items] : cases) {
        SCOPED_TRACE(what);
        show(4);
        int completed = 0;
        strip->view->performBatchUpdates([&] { change(*strip); }, [&](bool) { ++completed; });
        EXPECT_EQ(completed, 0) << "not within the update";
        platform.advance(0.1);
        // The user changes the strip again while the cells still move.
        strip->view->performBatchUpdates({}, [&](bool) { ++completed; });
        platform.advance(2);
        EXPECT_EQ(completed, 2);
        EXPECT_EQ(strip->shown(), items);
        EXPECT_EQ(strip->view->visibleCells().size(), items.size());
    }
}

#ifndef NDEBUG
TEST_F(CollectionViewTest, AnInsertWithoutANewItemInTheDataSourceAsserts) {
    show(4);
    EXPECT_DEATH(strip->view->insertItemsAtIndexPaths({{0, 1}}), "batch update");
}
#endif

TEST_F(CollectionViewTest, ADraggedCellMovesOnceAndTheDataSourceDecidesTheOrder) {
    const std::tuple<const char*, Strip::Move, int, int, std::vector<int>> cases[] = {
        {"down, swapping", Strip::Move::swaps, 0, 3, {3, 1, 2, 0, 4}},
        {"up, swapping", Strip::Move::swaps, 2, 0, {2, 1, 0, 3, 4}},
        {"down, inserting", Strip::Move::inserts, 0, 3, {1, 2, 3, 0, 4}},
        {"up, inserting", Strip::Move::inserts, 3, 1, {0, 3, 1, 2, 4}},
        {"to where it was", Strip::Move::swaps, 1, 1, {0, 1, 2, 3, 4}},
    };
    for (const auto& [what, move, first, last, order] : cases) {
        for (const UITouchType type : {UITouchType::direct, UITouchType::pointer}) {
            SCOPED_TRACE(what);
            show(5);
            strip->move = move;
            attachDrag(0);
            platform.touchType = type;
            const CGPoint from = strip->middle(first), to = strip->middle(last);
            platform.touch(UITouchPhase::began, from);
            for (int step = 0; step <= 10; ++step) {
                platform.touch(UITouchPhase::moved, {from.x, from.y + (to.y - from.y) * step / 10});
                platform.advance(0.02);
            }
            const auto lifted = strip->view->cellForItemAtIndexPath({0, first});
            ASSERT_TRUE(lifted);
            EXPECT_EQ(strip->view->subviews().back(), lifted);
            EXPECT_NEAR(lifted->center().y + 200, to.y, 0.01);
            EXPECT_TRUE(strip->moves.empty());
            platform.touch(UITouchPhase::ended, to);
            platform.advance(1);
            EXPECT_EQ(strip->moves.size(), first == last ? 0u : 1u);
            EXPECT_EQ(strip->items, order);
            EXPECT_EQ(strip->shown(), order);
            for (const auto& cell : strip->view->visibleCells()) {
                EXPECT_TRUE(cell->transform().isIdentity());
                EXPECT_TRUE(cell->state().shadow.color.isClear());
            }
        }
    }
}

TEST_F(CollectionViewTest, MovementsThatEndOtherwiseMoveNothing) {
    const std::pair<const char*, std::function<void(Strip&)>> cases[] = {
        {"cancelled", [](Strip& s) { s.view->cancelInteractiveMovement(); }},
        {"reloaded", [](Strip& s) { s.view->reloadData(); }},
        {"an item is removed", [](Strip& s) { s.remove(4); }},
        {"the screen goes", [](Strip& s) { s.table->removeFromSuperview(); }},
    };
    for (const auto& [what, ending] : cases) {
        SCOPED_TRACE(what);
        show(5);
        strip->view->endInteractiveMovement();
        strip->view->updateInteractiveMovementTargetPosition({10, 10});
        ASSERT_TRUE(strip->view->beginInteractiveMovementForItemAtIndexPath({0, 0}));
        strip->view->updateInteractiveMovementTargetPosition({100, 250});
        ending(*strip);
        EXPECT_FALSE(strip->view->isInteractiveMovementUnderWay());
        strip->view->endInteractiveMovement();
        platform.advance(1);
        EXPECT_TRUE(strip->moves.empty());
    }
    strip->canMove = false;
    EXPECT_FALSE(strip->view->beginInteractiveMovementForItemAtIndexPath({0, 0}));
    EXPECT_FALSE(strip->view->beginInteractiveMovementForItemAtIndexPath({0, 77}));
}

TEST_F(CollectionViewTest, TheTableScrollsUnderAFingerThatRestsAtItsEdge) {
    show(100);
    attachDrag(0);
    const CGPoint from = strip->middle(1);
    platform.touch(UITouchPhase::began, from);
    platform.touch(UITouchPhase::moved, {from.x, 660});
    platform.advance(3);
    EXPECT_GT(strip->table->contentOffset().y, 1000);
    const auto lifted = strip->view->cellForItemAtIndexPath({0, 1});
    ASSERT_TRUE(lifted);
    EXPECT_NEAR(platform.middleOf(*lifted).y, 660, 1);
    EXPECT_TRUE(platform.backend().framesWanted());
    platform.touch(UITouchPhase::moved, {from.x, 300});
    platform.advance(0.5);
    const CGFloat rest = strip->table->contentOffset().y;
    platform.advance(1);
    EXPECT_EQ(strip->table->contentOffset().y, rest);
    EXPECT_FALSE(platform.backend().framesWanted());
    platform.touch(UITouchPhase::ended, {from.x, 300});
    platform.advance(1);
    ASSERT_EQ(strip->moves.size(), 1u);
    EXPECT_EQ(strip->moves[0].second, static_cast<std::int64_t>((rest + 300 - 205) / 96));
}

TEST_F(CollectionViewTest, ButtonsSelectionDragsAndScrollingShareTheTouches) {
    show(20);
    attachDrag(0.5);
    const auto tapButton = [&] {
        platform.tap(*std::static_pointer_cast<NumberCell>(strip->view->cellForItemAtIndexPath({0, 1}))->button);
    };
    NumberCell::pressed = 0;
    tapButton();
    EXPECT_EQ(NumberCell::pressed, 1);
    EXPECT_TRUE(strip->selected.empty());
    platform.tap(strip->middle(1));
    EXPECT_EQ(strip->selected, std::vector<std::int64_t>{1});
    platform.drag({100, 500}, {100, 300});
    platform.advance(2);
    EXPECT_GT(strip->table->contentOffset().y, 150) << "a quick drag on the strip scrolls the table";
    strip->table->setContentOffset({0, 0});

    drag->minimumPressDuration = 0;
    tapButton();
    EXPECT_EQ(NumberCell::pressed, 1) << "the gesture has every touch on the strip";
    platform.drag({100, 100}, {100, 20}, 0.2, true);
    EXPECT_GT(strip->table->contentOffset().y, 50) << "beside the strip the table scrolls";
    strip->view->removeGestureRecognizer(drag);
    strip->table->setContentOffset({0, 0});
    tapButton();
    EXPECT_EQ(NumberCell::pressed, 2);
}

TEST_F(CollectionViewTest, ItemsAreReachedMovedAndRemovedByTheKeyboard) {
    std::string said;
    UIApplication::sharedApplication().announce = [&](const std::string& text) { said = text; };
    show(30);
    const auto focused = [&] {
        UIView* view = platform.window().focusedView();
        const auto cell = view ? std::dynamic_pointer_cast<NumberCell>(view->shared_from_this()) : nullptr;
        return cell ? std::stoi(cell->label->text()) : -1;
    };
    platform.tap(strip->middle(0));
    EXPECT_FALSE(platform.key(UIKeyCode::deleteBackward)) << "no ring shows what would go";
    EXPECT_TRUE(platform.key(UIKeyCode::down));
    EXPECT_EQ(focused(), 1);
    EXPECT_TRUE(platform.key(UIKeyCode::down, modifierAlternate));
    EXPECT_EQ(strip->items[1], 2);
    EXPECT_EQ(strip->items[2], 1);
    EXPECT_EQ(focused(), 1) << "the focus goes with the item";
    EXPECT_NE(said.find("Item 1"), std::string::npos) << said;
    EXPECT_TRUE(platform.key(UIKeyCode::deleteBackward));
    platform.advance(1);
    EXPECT_EQ(strip->items.size(), 29u);
    EXPECT_EQ(focused(), 3);
    for (int i = 0; i < 20; ++i) platform.key(UIKeyCode::right);
    EXPECT_EQ(focused(), 23);
    EXPECT_TRUE(platform.backend().isVisible(platform.window().focusedView()->tag()));
    platform.key(UIKeyCode::tab);
    EXPECT_EQ(focused(), -1) << "the button within";
    platform.key(UIKeyCode::tab);
    EXPECT_EQ(focused(), 24);
    platform.key(UIKeyCode::enter);
    EXPECT_EQ(strip->selected, (std::vector<std::int64_t>{0, 23}));
    UIApplication::sharedApplication().announce = nullptr;
}

}  // namespace ostrel
