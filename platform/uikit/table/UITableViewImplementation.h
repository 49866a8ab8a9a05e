#pragma once

#include "platform/uikit/table/RowActions.h"
#include "platform/uikit/table/RowHeights.h"
#include "platform/uikit/table/UITableView.h"
#include "platform/uikit/table/UITableViewReusePool.h"
#include "platform/uikit/text/ContextMenu.h"

#include <map>

namespace ostrel {

/// The private state of a table. UITableViewLayout.cpp, UITableViewUpdates.cpp and UITableViewEvents.cpp implement it.
///
/// Content from above: the header view, the sections, the footer view. Every row in `rows` is a subview; between
/// layouts its frame agrees with `heights`.
struct UITableView::Implementation {
    explicit Implementation(UITableView& owner) : table(owner), pool(reusePoolLimit) {}

    struct Row {
        std::shared_ptr<UITableViewCell> cell;
        bool isAutomatic = false;
        bool isHeightStale = false;
    };
    /// The place to keep: this row's upper edge stays at `screenY` below the table's upper edge.
    struct Anchor {
        NSIndexPath path;
        CGFloat screenY = 0;
    };
    struct Range {
        std::int64_t first = 0, count = 0;
        UITableViewRowAnimation animation = UITableViewRowAnimation::none;
    };
    struct Reload {
        NSIndexPath path;
        UITableViewRowAnimation animation = UITableViewRowAnimation::none;
    };
    struct Batch {
        std::vector<Range> inserts, deletes;
        std::vector<Reload> reloads;
    };
    /// Where the rows were on screen before an update, and what is new in it.
    struct Transition {
        std::map<NSIndexPath, CGFloat> oldScreenY;                    // by new path
        std::vector<std::pair<std::int64_t, std::int64_t>> inserted;  // that fade in: first section, number
        std::vector<NSIndexPath> reloaded;                            // that fade in
        // Faded out, with their place on screen.
        std::vector<std::pair<std::shared_ptr<UITableViewCell>, CGFloat>> gone;
        // Slid out, to their new place.
        std::vector<std::pair<std::shared_ptr<UITableViewCell>, CGRect>> pushedOut;
        bool isAnimated = false;
    };
    struct Swipe {
        std::shared_ptr<UITableViewCell> cell;
        std::shared_ptr<RowActionsView> actions;
        CGFloat revealed = 0;  // how far the row is moved to the left
        CGFloat startRevealed = 0;
        bool isDragged = false;
    };

    // UITableViewLayout.cpp
    RowHeights::Section shapeOf(std::int64_t section) const;
    void askNumbers();
    void reload();
    void widthChanged();
    void layout();
    /// Makes, measures and places the rows near the viewport and releases the others; the anchor row keeps its place.
    void layOutRows(Transition* transition = nullptr);
    /// Tells the data source what comes next in the direction that the content `moved`.
    void prefetch(CGFloat moved);
    void letGoOutside(CGFloat lower, CGFloat upper, Transition* transition);
    std::optional<Anchor> findAnchor() const;
    void ensureNumbers();
    void ensureRow(NSIndexPath path);
    std::shared_ptr<UITableViewCell> askForCell(NSIndexPath path);
    void wire(const std::shared_ptr<UITableViewCell>& cell);
    void heightChanged(const UITableViewCell& cell);
    void measure(NSIndexPath path, Row& row);
    std::optional<CGFloat> fixedHeight(NSIndexPath path) const;
    void placeRow(NSIndexPath path, const Row& row);
    void insertRowView(NSIndexPath path, const std::shared_ptr<UITableViewCell>& cell);
    void retireAll();
    void recycle(const std::shared_ptr<UITableViewCell>& cell);
    void detach(UITableViewCell& cell);
    void placeHeaders(CGFloat from, CGFloat to);
    std::shared_ptr<UIView> makeHeader(std::int64_t section) const;
    std::int64_t indexOfSubview(const UIView* view) const;
    void updateContentSize();
    CGRect rowFrame(NSIndexPath path) const;
    CGFloat contentTop() const { return table.headerView_ ? table.headerView_->frame().height() : 0; }
    CGFloat rowX() const;
    bool exists(NSIndexPath path) const;
    bool holdsFirstResponder(const UITableViewCell& cell) const;
    std::optional<NSIndexPath> pathOf(const UIView* cell) const;

    // UITableViewUpdates.cpp
    void apply(const Batch& batch);
    bool isConsistent(const Batch& update) const;
    static std::optional<std::int64_t> sectionAfter(const Batch& update, std::int64_t section);
    void keepPlace(const std::map<NSIndexPath, Row>& before, const Batch& update);
    void reloadRows(const Batch& update, Transition& transition);
    void animate(const Transition& transition);
    void leave(const std::shared_ptr<UITableViewCell>& cell, const std::function<void()>& change);

    // UITableViewEvents.cpp
    void initialiseGestures();
    void pressRow(NSIndexPath path);
    void endPress(bool animated);
    void select(NSIndexPath path);
    bool handleKey(const UIPress& press);
    bool moveFocusedRow(int step);
    std::optional<NSIndexPath> focusedRow() const;
    std::vector<UITableViewRowAction> actionsFor(NSIndexPath path) const;
    bool openMenu(NSIndexPath path, CGPoint pointInWindow, ContextMenu::Highlight highlight);
    bool openSwipe(NSIndexPath path);
    void setRevealed(CGFloat revealed, bool animated);
    void closeSwipe(bool animated);
    void handleSwipe(UIPanGestureRecognizer& pan);
    void runAction(std::size_t index);

    // UITableView.cpp
    void updateRefresh();

    UITableView& table;
    RowHeights heights;
    std::optional<RowHeights::Section> uniformShape;
    std::map<NSIndexPath, Row> rows;
    // Of the sections in reach; null: without a title.
    std::map<std::int64_t, std::shared_ptr<UIView>> headers;
    UITableViewReusePool pool;
    // Still shown, to be used again first.
    std::vector<std::pair<NSIndexPath, std::shared_ptr<UITableViewCell>>> retired;
    // Gone from the model, still fading or sliding on screen.
    std::vector<std::shared_ptr<UITableViewCell>> leaving;
    std::optional<Anchor> keptPlace;
    std::optional<NSIndexPath> askedPath;  // of the row that the data source is making
    CGFloat laidOutWidth = -1;
    bool isLayingOut = false;
    bool needsNumbers = true;                                       // of sections and rows, from a new data source
    bool needsRows = true;                                          // the rows may have changed since the last layout
    bool reloadsAfter = false;                                      // asked for while rows were being laid out
    bool settlesAfter = false;                                      // the offset may lie outside of the content
    std::optional<std::pair<NSIndexPath, NSIndexPath>> prefetched;  // first and last, all between them too
    CGPoint laidOutOffset;
    CGSize laidOutSize;
    CGFloat laidOutVelocity = 0;

    int updateDepth = 0;
    Batch batch;

    std::weak_ptr<UITableViewCell> pressed;
    std::uint64_t pressNumber = 0;
    bool touchIsUsed = false;  // closed a swiped row: no selection follows
    std::optional<Swipe> swipe;
    std::weak_ptr<ContextMenu> menu;
    std::shared_ptr<UIPanGestureRecognizer> swipeRecognizer;
    bool refreshFired = false;  // by the drag under way
};

}  // namespace ostrel
