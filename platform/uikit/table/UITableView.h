#pragma once

#include "platform/foundation/values/NSIndexPath.h"
#include "platform/uikit/controls/UIRefreshControl.h"
#include "platform/uikit/table/RowActions.h"
#include "platform/uikit/table/UITableViewCell.h"
#include "platform/uikit/view/UIScrollView.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ostrel {

class UITableView;

enum class UITableViewStyle { plain, grouped, insetGrouped };
enum class UITableViewRowAnimation { none, fade };
enum class UITableViewCellEditingStyle { none, deleteStyle };

/// The row sizes itself: its constraint gives the height, and until the row was made the height is an estimate.
inline constexpr CGFloat UITableViewAutomaticDimension = -1;

class UITableViewDataSource {
public:
    virtual ~UITableViewDataSource() = default;
    virtual std::int64_t numberOfSectionsInTableView(UITableView&) { return 1; }
    virtual std::int64_t tableViewNumberOfRowsInSection(UITableView&, std::int64_t section) = 0;
    virtual std::shared_ptr<UITableViewCell> tableViewCellForRowAtIndexPath(UITableView&, NSIndexPath path) = 0;
    /// Rows that come next when the table is scrolled on, each named once on the way: their data can be made ready.
    virtual void tableViewPrefetchRowsAtIndexPaths(UITableView&, const std::vector<NSIndexPath>&) {}
    virtual std::string tableViewTitleForHeaderInSection(UITableView&, std::int64_t) { return {}; }
    virtual bool tableViewCanEditRowAtIndexPath(UITableView&, NSIndexPath) { return false; }
    virtual void tableViewCommitEditingStyle(UITableView&, UITableViewCellEditingStyle, NSIndexPath) {}
};

class UITableViewDelegate {
public:
    virtual ~UITableViewDelegate() = default;
    /// Points, or `UITableViewAutomaticDimension`. The default is the table's `rowHeight`.
    virtual CGFloat tableViewHeightForRowAtIndexPath(UITableView& table, NSIndexPath);
    /// Below 0: the table's own (by style).
    virtual CGFloat tableViewHeightForHeaderInSection(UITableView&, std::int64_t) { return -1; }
    virtual CGFloat tableViewHeightForFooterInSection(UITableView&, std::int64_t) { return -1; }
    /// Whether the heights of rows, headers and footers are the same for every section, so that a table of a million
    /// sections need not ask for each.
    virtual bool tableViewHasUniformSections(UITableView&) { return false; }
    virtual void tableViewDidSelectRowAtIndexPath(UITableView&, NSIndexPath) {}
    virtual void tableViewAccessoryButtonTappedForRowWithIndexPath(UITableView&, NSIndexPath) {}
    virtual std::vector<UITableViewRowAction> tableViewEditActionsForRowAtIndexPath(UITableView&, NSIndexPath) {
        return {};
    }
};

/// Rows in sections, of which only those near the screen exist. Heights that are not known yet are estimated; the row
/// at the upper edge keeps its place when a height above or below becomes known. Main thread.
class UITableView : public UIScrollView {
public:
    /// Rows are made this far beyond the upper and lower edge (points), more in the direction of a fling.
    static constexpr CGFloat overscan = 240;
    /// Rows are named to the data source ahead of being made over this many heights of the table.
    static constexpr CGFloat prefetchScreens = 3;
    /// Unused rows kept for reuse, over all identifiers; the ones unused longest are let go.
    static constexpr std::size_t reusePoolLimit = 32;

    UITableView(CGRect frame, UITableViewStyle style);
    ~UITableView() override;
    void initialise();

    UITableViewStyle style() const { return style_; }
    void setDataSource(UITableViewDataSource* source);  ///< not owned; null: an empty table
    void setDelegate(UITableViewDelegate* delegate);    ///< not owned
    CGFloat rowHeight = UITableViewAutomaticDimension;
    CGFloat estimatedRowHeight = 44;
    bool allowsSelection = true;
    bool separatorNone = false;

    /// Asks for everything anew; keeps the offset where it still fits.
    void reloadData();
    /// Between these, inserts and deletes are collected and shown as one change; calls nest. Deletes and reloads name
    /// sections as they were before the first of these, inserts as they are after the last `endUpdates`. The data
    /// source has its new state when that is called: the heights of the rows on screen are asked again, and numbers
    /// that do not agree are logged and answered with `reloadData`.
    void beginUpdates();
    void endUpdates();
    void insertSections(std::int64_t first, std::int64_t count, UITableViewRowAnimation animation);
    void deleteSections(std::int64_t first, std::int64_t count, UITableViewRowAnimation animation);
    /// Asks for the row anew, its height too.
    void reloadRow(NSIndexPath path, UITableViewRowAnimation animation);
    void reloadRowsAtIndexPaths(const std::vector<NSIndexPath>& paths, UITableViewRowAnimation animation);

    std::shared_ptr<UITableViewCell> dequeueReusableCell(const std::string& identifier);
    /// Null when the row is not on screen (or near it). Makes the rows first when they are still to be made.
    std::shared_ptr<UITableViewCell> cellForRowAtIndexPath(NSIndexPath path) const;
    std::optional<NSIndexPath> indexPathForCell(const UITableViewCell& cell) const;
    std::optional<NSIndexPath> indexPathForRowAtPoint(CGPoint point) const;
    std::vector<NSIndexPath> indexPathsForVisibleRows() const;
    CGRect rectForRowAtIndexPath(NSIndexPath path) const;
    std::int64_t numberOfSections() const;
    std::int64_t numberOfRowsInSection(std::int64_t section) const;
    void scrollToRowAtIndexPath(NSIndexPath path, bool animated);
    /// Rows that exist as views now, the reuse pool included.
    std::size_t liveCellCount() const;
    /// Width of the rows (inset-grouped tables leave a margin), points.
    CGFloat rowWidth() const;

    void setTableFooterView(std::shared_ptr<UIView> view);
    const std::shared_ptr<UIView>& tableFooterView() const { return footerView_; }
    void setTableHeaderView(std::shared_ptr<UIView> view);
    /// Null removes it.
    void setRefreshControl(std::shared_ptr<UIRefreshControl> control);
    const std::shared_ptr<UIRefreshControl>& refreshControl() const { return refreshControl_; }
    std::optional<NSIndexPath> indexPathForSelectedRow() const { return selected_; }
    void selectRow(NSIndexPath path, bool animated);
    void deselectRow(NSIndexPath path, bool animated);
    /// Shows the row actions of a row as a swipe would; none closes them.
    void setSwipedRow(std::optional<NSIndexPath> path, bool animated);
    std::optional<NSIndexPath> swipedRow() const;

    void setFrame(const CGRect& frame) override;
    void layoutSubviews() override;
    void didMoveToWindow() override;
    UIView* hitTest(CGPoint point) override;
    void touchesBegan(const UITouch& touch) override;
    void touchesMoved(const UITouch& touch) override;
    void touchesEnded(const UITouch& touch) override;
    void touchesCancelled(const UITouch& touch) override;
    /// Up and Down move the focus from row to row, Return opens the focused row, Delete runs its destructive action,
    /// the menu key or Shift and the menu key show its actions, Escape closes a swiped row; other keys scroll.
    bool pressesBegan(const UIPress& press) override;

protected:
    void contentOffsetDidChange() override;
    void willBeginDragging() override;
    void didEndDragging(bool willDecelerate) override;
    CGFloat extraTopInset() const override;
    bool alwaysBounces() const override { return true; }

private:
    UITableViewStyle style_;
    UITableViewDataSource* dataSource_ = nullptr;
    UITableViewDelegate* delegate_ = nullptr;
    std::shared_ptr<UIView> footerView_, headerView_;
    std::shared_ptr<UIRefreshControl> refreshControl_;
    std::optional<NSIndexPath> selected_;
    struct Implementation;
    std::unique_ptr<Implementation> implementation_;
};

}  // namespace ostrel
