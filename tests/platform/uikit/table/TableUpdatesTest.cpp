#include "tests/platform/uikit/table/TableTestSupport.h"

#include "platform/uikit/text/UITextField.h"
#include "tests/support/LogCapture.h"

#include <random>

namespace ostrel {
namespace {

using Animation = UITableViewRowAnimation;

TEST_F(TableTest, RandomInsertsAndDeletesAgreeWithTheModel) {
    for (unsigned seed = 1; seed <= 8; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const auto upTo = [&](std::int64_t n) { return std::uniform_int_distribution<std::int64_t>(0, n)(random); };
        show(30);
        std::int64_t nextId = 1000;
        for (int step = 0; step < 150; ++step) {
            table->beginUpdates();
            // Deletes name sections as before, inserts as after: one range of each.
            const auto count = static_cast<std::int64_t>(source.items.size());
            const auto animation = upTo(1) ? Animation::fade : Animation::none;
            if (upTo(1) && count > 0) {
                const auto first = upTo(count - 1), number = std::min(count - first, 1 + upTo(3));
                source.items.erase(source.items.begin() + first, source.items.begin() + first + number);
                table->deleteSections(first, number, animation);
            }
            if (upTo(2) > 0) {
                const auto first = upTo(static_cast<std::int64_t>(source.items.size())), number = 1 + upTo(3);
                for (std::int64_t i = 0; i < number; ++i) {
                    source.items.insert(source.items.begin() + first,
                                        {nextId++, 40.0 + static_cast<CGFloat>(upTo(150))});
                }
                table->insertSections(first, number, animation);
            }
            table->endUpdates();
            if (upTo(3) == 0)
                table->setContentOffset(
                    {0, static_cast<CGFloat>(upTo(static_cast<std::int64_t>(table->maximumOffsetY())))});
            if (upTo(2) == 0) platform.advance(0.1 * static_cast<CGFloat>(upTo(4)));
            platform.settle();

            ASSERT_EQ(table->numberOfSections(), static_cast<std::int64_t>(source.items.size()));
            std::optional<CGFloat> expected;
            for (const NSIndexPath path : table->indexPathsForVisibleRows()) {
                const auto& item = source.items[static_cast<std::size_t>(path.section)];
                const auto cell = row(path.section);
                ASSERT_EQ(cell->textLabel()->text(), std::to_string(item.id)) << "step " << step;
                ASSERT_EQ(cell->frame().height(), item.height);
                if (expected) {
                    ASSERT_EQ(cell->frame().minY(), *expected);
                }
                expected = cell->frame().maxY() + 9;
            }
        }
        platform.advance(1);
        EXPECT_LE(table->liveCellCount(), 20 + UITableView::reusePoolLimit);
        EXPECT_EQ(rowsOnScreen(true).size() + (table->subviews().back()->alpha() == 1 ? 0 : 1),
                  table->subviews().size());
    }
}

TEST_F(TableTest, AnInsertAboveKeepsThePlaceAndAtTheTopItShows) {
    show(50);
    scrollTo(1000);
    const auto before = rowsOnScreen();
    const auto cell = row(12);
    insertItem(0, {999, 140});
    EXPECT_EQ(rowsOnScreen(), before);
    EXPECT_EQ(row(13), cell);

    scrollTo(0);
    platform.advance(1);
    insertItem(0, {1000, 140});
    EXPECT_EQ(table->contentOffset().y, 0);
    EXPECT_EQ(rowsOnScreen().at(1000), 8);
    EXPECT_EQ(rowsOnScreen().at(999), 8 + 140 + 9);
    const auto shownAt = [&](std::int64_t section) { return platform.backend().node(row(section)->tag())->state; };
    platform.advance(0.1);
    EXPECT_GT(shownAt(0)->alpha, 0);
    EXPECT_LT(shownAt(0)->alpha, 1);
    EXPECT_GT(shownAt(1)->frame.minY(), 8);
    EXPECT_LT(shownAt(1)->frame.minY(), 157);
    platform.advance(0.5);
    EXPECT_EQ(shownAt(0)->alpha, 1);
    EXPECT_EQ(shownAt(1)->frame.minY(), 157);
    EXPECT_FALSE(platform.backend().framesWanted());
}

TEST_F(TableTest, ADeletedRowFadesWhereItWasAndTakesNoTouches) {
    show(50);
    const auto gone = row(1), next = row(2);
    source.items.erase(source.items.begin() + 1);
    table->deleteSections(1, 1, Animation::fade);
    platform.settle();
    EXPECT_EQ(table->numberOfSections(), 49);
    EXPECT_EQ(gone->superview(), table.get());
    EXPECT_FALSE(table->indexPathForCell(*gone));
    EXPECT_EQ(row(1), next);
    platform.tap({100, 150});
    EXPECT_EQ(source.selected, (std::vector<NSIndexPath>{{1, 0}}));
    platform.advance(1);
    EXPECT_EQ(gone->superview(), nullptr);
    EXPECT_EQ(gone->alpha(), 1);
}

TEST_F(TableTest, AnUpdateThatDoesNotFitTheDataSourceIsLoggedAndReloaded) {
    show(10);
    const LogCapture log;
    source.items.pop_back();
    table->deleteSections(3, 2, Animation::fade);
    table->deleteSections(50, 1, Animation::none);
    platform.settle();
    EXPECT_EQ(log.lines().size(), 2U);
    EXPECT_EQ(table->numberOfSections(), 9);
    EXPECT_EQ(rowsOnScreen().size(), 7U);
}

TEST_F(TableTest, AnUpdateWithoutChangesAsksForTheHeightsAgainAndAReloadedRowForItself) {
    show(10);
    row(0)->wanted = 150;
    CGFloat fixed = 30;
    table->beginUpdates();
    table->endUpdates();
    platform.settle();
    EXPECT_EQ(table->rectForRowAtIndexPath({0, 0}).height(), 150);
    EXPECT_EQ(row(1)->frame().minY(), 8 + 150 + 9);
    source.heightOf = [&](NSIndexPath path) { return path.section == 1 ? fixed : UITableViewAutomaticDimension; };
    table->reloadRow({1, 0}, Animation::none);
    EXPECT_EQ(row(1)->frame().height(), 30);
    EXPECT_EQ(row(2)->frame().minY(), 167 + 30 + 9);

    source.items[2].id = 77;
    source.cellsAsked = 0;
    const auto cell = row(2);
    table->reloadRow({2, 0}, Animation::fade);
    platform.settle();
    platform.advance(0.5);
    EXPECT_EQ(source.cellsAsked, 1);
    EXPECT_EQ(row(2), cell);
    EXPECT_TRUE(platform.sees("77"));
}

TEST_F(TableTest, ARowThatTheDataSourceHoldsKeepsItsFocusWhenItsHeightIsAskedAgain) {
    show(30);
    source.held = make<NumberedRow>("held", source.cellsMade);
    CGFloat height = 150;
    source.heightOf = [&](NSIndexPath path) { return path.section == 1 ? height : UITableViewAutomaticDimension; };
    reload();
    const auto field = make<UITextField>(CGRect{0, 0, 100, 30});
    source.held->addSubview(field);
    field->becomeFirstResponder();
    for (const CGFloat next : {300.0, 40.0, 900.0}) {
        height = next;
        table->reloadRowsAtIndexPaths({{1, 0}}, Animation::none);
        EXPECT_TRUE(field->isFirstResponder());
        EXPECT_EQ(source.held->superview(), table.get());
        EXPECT_EQ(source.held->frame().height(), next);
        EXPECT_EQ(table->rectForRowAtIndexPath({2, 0}).minY(), table->rectForRowAtIndexPath({1, 0}).maxY() + 9);
        EXPECT_EQ(table->contentOffset().y, 0);
    }
}

}  // namespace
}  // namespace ostrel
