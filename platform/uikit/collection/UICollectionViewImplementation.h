#pragma once

#include "platform/uikit/collection/UICollectionView.h"

#include <list>
#include <map>

namespace ostrel {

/// The private state of a collection view. UICollectionViewLayout.cpp, UICollectionViewUpdates.cpp and
/// UICollectionViewMovement.cpp implement it.
///
/// An item's row is its place in the data source; its position is where it is shown. The two differ only while an item
/// is being moved and the others make room.
struct UICollectionView::Implementation {
    explicit Implementation(UICollectionView& owner) : view(owner) {}

    using Cell = std::shared_ptr<UICollectionViewCell>;
    struct Section {
        FlowSection::Metrics metrics;
        std::vector<CGSize> sizes;  ///< by row
        FlowSection flow;           ///< by position
        CGFloat top = 0;
        std::int64_t count() const { return static_cast<std::int64_t>(sizes.size()); }
    };
    /// An item under the finger.
    struct Movement {
        Cell cell;
        NSIndexPath from;
        std::int64_t to = 0;   ///< its position now
        CGPoint grip;          ///< from the finger to the middle of the cell
        bool hasGrip = false;  ///< `grip` is set: the position of the finger is known
        CGPoint finger;        ///< in the window
        bool scrolls = false;  ///< the window is asked for frames, because the finger is near an edge
        double lastFrame = -1;
    };
    /// Whether items take their places at once or move there from their former places.
    struct Transition {
        double duration = 0;
        /// Where an item stood that had no cell there; none: it is new.
        std::function<std::optional<CGRect>(NSIndexPath)> oldFrame;
        std::vector<Cell> gone;
        Cell settling;  ///< was under the finger
        std::function<void(bool)> completion;
    };
    struct Batch {
        std::vector<NSIndexPath> inserts, deletes;
        std::vector<std::function<void(bool)>> completions;
    };

    // UICollectionViewLayout.cpp
    void askNumbers();
    void ensureNumbers();
    void askSizes();
    void arrange(Section& section, std::int64_t number) const;
    void layout();
    /// Makes and places the cells in or near the visible part and releases the others.
    void layOutItems(const Transition* transition = nullptr);
    void retireAll();
    Cell askForCell(NSIndexPath path);
    void ensureCell(NSIndexPath path, const Transition* transition, std::vector<Cell>& appearing);
    void insertCellView(NSIndexPath path, const Cell& cell);
    void recycle(const Cell& cell);
    static void resetLook(UICollectionViewCell& cell);
    bool holdsFocus(const UICollectionViewCell& cell) const;
    bool exists(NSIndexPath path) const;
    std::int64_t positionOf(NSIndexPath path) const;
    std::int64_t rowAt(std::int64_t section, std::int64_t position) const;
    CGRect frameOf(NSIndexPath path) const;
    std::optional<NSIndexPath> pathOf(const UIView* inCell) const;

    // UICollectionViewUpdates.cpp
    void apply(Batch batch);
    std::vector<std::int64_t> wantedCounts() const;
    const char* faultOf(const Batch& batch, const std::vector<std::int64_t>& wanted) const;
    static void completeLater(std::vector<std::function<void(bool)>> completions, bool finished);

    // UICollectionViewMovement.cpp
    static void takeLiftBack(UICollectionViewCell& cell);
    void putDown(const Cell& cell);
    void follow();
    void makeRoom(std::int64_t position);
    void endMovement(bool moves, bool animated);
    /// Tells the data source of the movement, and shows the order that the data source then has.
    void commitMove(NSIndexPath from, NSIndexPath to);
    void scrollNearEdge();
    bool scrollStep(double time);
    std::pair<UIScrollView*, CGFloat> scrollWanted() const;
    NSIndexPath targetOf(NSIndexPath from, NSIndexPath proposed) const;
    bool handleKey(const UIPress& press);
    std::optional<NSIndexPath> neighbour(NSIndexPath path, UIKeyCode direction) const;
    void focus(NSIndexPath path);
    void reveal(const CGRect& rect);
    bool moveByKeyboard(NSIndexPath from, NSIndexPath to);

    UICollectionView& view;
    std::weak_ptr<UICollectionViewDataSource> dataSource;
    std::weak_ptr<UICollectionViewDelegateFlowLayout> delegate;
    std::map<std::string, CellMaker> makers;
    std::vector<Section> sections;
    std::map<NSIndexPath, Cell> cells;                  ///< by row; every one is a subview
    std::list<Cell> pool;                               ///< the one used last first
    std::vector<std::pair<NSIndexPath, Cell>> retired;  ///< still shown, to be used again first
    std::vector<Cell> leaving;                          ///< of items that have gone, still fading
    std::optional<NSIndexPath> askedPath;
    std::optional<Movement> movement;
    Batch batch;
    int batchDepth = 0;
    CGFloat laidOutWidth = -1;
    bool isLayingOut = false, needsNumbers = true, needsSizes = true;
    std::weak_ptr<UICollectionViewCell> pressed;
};

}  // namespace ostrel
