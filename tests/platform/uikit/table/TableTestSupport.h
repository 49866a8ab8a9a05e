#pragma once

#include "backends/headless/HeadlessPlatform.h"
#include "platform/uikit/screens/UIViewController.h"
#include "platform/uikit/table/UITableView.h"

#include <gtest/gtest.h>

#include <deque>

namespace ostrel {

/// A row that shows its item's name and takes the height it is told.
class NumberedRow final : public UITableViewCell {
public:
    NumberedRow(std::string identifier, int& made)
        : UITableViewCell(UITableViewCellStyle::defaultStyle, std::move(identifier)) {
        ++made;
    }
    CGFloat automaticHeight() const override { return wanted; }
    void setWanted(CGFloat height) {
        wanted = height;
        if (heightDidChange) heightDidChange();
    }
    CGFloat wanted = 44;
};

/// Sections of one row each, or as many as `rowsOf` says.
class ListSource final : public UITableViewDataSource, public UITableViewDelegate {
public:
    struct Item {
        std::int64_t id = 0;
        CGFloat height = 88;
    };

    std::deque<Item> items;
    bool isUniform = false;
    CGFloat header = 8, footer = 1;
    bool canEdit = false;
    std::vector<std::string> titles;
    std::function<std::int64_t(std::int64_t)> rowsOf = [](std::int64_t) { return 1; };
    std::function<CGFloat(NSIndexPath)> heightOf = [](NSIndexPath) { return UITableViewAutomaticDimension; };
    std::vector<UITableViewRowAction> actions;
    /// The row of section 1 when not null: always the same one, never one that was dequeued.
    std::shared_ptr<NumberedRow> held;

    CGFloat lastWidthAsked = 0;  ///< of a row before it is filled
    int cellsMade = 0, rowNumbersAsked = 0, cellsAsked = 0;
    std::vector<NSIndexPath> selected, accessories, committed, prefetched;

    std::int64_t numberOfSectionsInTableView(UITableView&) override { return static_cast<std::int64_t>(items.size()); }
    std::int64_t tableViewNumberOfRowsInSection(UITableView&, std::int64_t section) override {
        ++rowNumbersAsked;
        return rowsOf(section);
    }
    std::shared_ptr<UITableViewCell> tableViewCellForRowAtIndexPath(UITableView& table, NSIndexPath path) override {
        ++cellsAsked;
        if (held && path.section == 1) return held;
        auto cell = std::static_pointer_cast<NumberedRow>(table.dequeueReusableCell("row"));
        if (!cell) cell = make<NumberedRow>("row", cellsMade);
        lastWidthAsked = cell->frame().width();
        const Item& item = items.at(static_cast<std::size_t>(path.section));
        cell->textLabel()->setText(std::to_string(item.id) + (path.row ? "." + std::to_string(path.row) : ""));
        cell->wanted = item.height;
        return cell;
    }
    void tableViewPrefetchRowsAtIndexPaths(UITableView&, const std::vector<NSIndexPath>& paths) override {
        prefetched.insert(prefetched.end(), paths.begin(), paths.end());
    }
    std::string tableViewTitleForHeaderInSection(UITableView&, std::int64_t section) override {
        return static_cast<std::size_t>(section) < titles.size() ? titles[static_cast<std::size_t>(section)] : "";
    }
    bool tableViewCanEditRowAtIndexPath(UITableView&, NSIndexPath) override { return canEdit; }
    void tableViewCommitEditingStyle(UITableView&, UITableViewCellEditingStyle, NSIndexPath path) override {
        committed.push_back(path);
    }
    CGFloat tableViewHeightForRowAtIndexPath(UITableView&, NSIndexPath path) override { return heightOf(path); }
    CGFloat tableViewHeightForHeaderInSection(UITableView&, std::int64_t) override { return header; }
    CGFloat tableViewHeightForFooterInSection(UITableView&, std::int64_t) override { return footer; }
    bool tableViewHasUniformSections(UITableView&) override { return isUniform; }
    void tableViewDidSelectRowAtIndexPath(UITableView&, NSIndexPath path) override { selected.push_back(path); }
    void tableViewAccessoryButtonTappedForRowWithIndexPath(UITableView&, NSIndexPath path) override {
        accessories.push_back(path);
    }
    std::vector<UITableViewRowAction> tableViewEditActionsForRowAtIndexPath(UITableView&, NSIndexPath) override {
        return actions;
    }
};

class TableTest : public ::testing::Test {
protected:
    ~TableTest() override { platform.window().setRootViewController(nullptr); }

    /// Shows a table over the whole window with `count` items of `height`.
    void show(std::int64_t count, CGFloat height = 88, UITableViewStyle style = UITableViewStyle::insetGrouped) {
        source.items.clear();
        for (std::int64_t i = 0; i < count; ++i) source.items.push_back({i, height});
        table = make<UITableView>(CGRect{0, 0, 375, 667}, style);
        table->estimatedRowHeight = 88;
        table->setDataSource(&source);
        table->setDelegate(&source);
        table->setAutoresizingMask(flexibleWidth | flexibleHeight);
        const auto screen = make<UIViewController>();
        platform.window().setRootViewController(screen);
        screen->view()->addSubview(table);
        platform.settle();
    }
    /// The rows on screen or near it: section and upper edge below the table's upper edge.
    std::map<std::int64_t, CGFloat> rowsOnScreen(bool withOverscan = false) const {
        std::map<std::int64_t, CGFloat> result;
        for (const auto& view : table->subviews()) {
            const auto row = std::dynamic_pointer_cast<NumberedRow>(view);
            const auto path = row ? table->indexPathForCell(*row) : std::nullopt;
            if (!path) continue;
            const CGRect frame = row->frame().offsetBy(0, -table->contentOffset().y);
            const bool isVisible = frame.maxY() > 0 && frame.minY() < table->frame().height();
            if (isVisible || withOverscan)
                result[source.items[static_cast<std::size_t>(path->section)].id] = frame.minY();
        }
        return result;
    }
    /// Gives the items these heights and reloads the table.
    template <class Height>
    void setHeights(Height heightOf) {
        for (auto& item : source.items) item.height = heightOf(item.id);
        reload();
    }
    void reload() {
        table->reloadData();
        platform.settle();
    }
    void insertItem(std::int64_t section, ListSource::Item item) {
        source.items.insert(source.items.begin() + section, item);
        table->insertSections(section, 1, UITableViewRowAnimation::fade);
        platform.settle();
    }
    /// Fails unless all rows that were there `before` and still are have moved down by `distance`.
    static void expectMoved(const std::map<std::int64_t, CGFloat>& before, const std::map<std::int64_t, CGFloat>& after,
                            CGFloat distance) {
        for (const auto& [id, y] : after) {
            const auto old = before.find(id);
            if (old == before.end()) continue;
            ASSERT_EQ(y, old->second + distance) << "row " << id;
        }
    }
    std::shared_ptr<NumberedRow> row(std::int64_t section) const {
        return std::static_pointer_cast<NumberedRow>(table->cellForRowAtIndexPath({section, 0}));
    }
    void scrollTo(CGFloat y) {
        table->setContentOffset({0, y});
        platform.settle();
    }

    HeadlessPlatform platform;
    ListSource source;
    std::shared_ptr<UITableView> table;
};

}  // namespace ostrel
