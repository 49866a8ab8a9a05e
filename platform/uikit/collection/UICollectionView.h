#pragma once

#include "platform/foundation/values/NSIndexPath.h"
#include "platform/foundation/values/Object.h"
#include "platform/uikit/collection/UICollectionViewCell.h"
#include "platform/uikit/collection/UICollectionViewFlowLayout.h"
#include "platform/uikit/view/UIScrollView.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ostrel {

class UICollectionView;

class UICollectionViewDataSource {
public:
    virtual ~UICollectionViewDataSource() = default;
    virtual std::int64_t numberOfSectionsInCollectionView(UICollectionView&) { return 1; }
    virtual std::int64_t collectionViewNumberOfItemsInSection(UICollectionView&, std::int64_t section) = 0;
    virtual std::shared_ptr<UICollectionViewCell> collectionViewCellForItemAtIndexPath(UICollectionView&,
                                                                                       NSIndexPath path) = 0;
    virtual bool collectionViewCanMoveItemAtIndexPath(UICollectionView&, NSIndexPath) { return false; }
    /// A drag or the keyboard has moved an item, within its section. Called once, and only when the place changed. The
    /// visible items are asked for again afterwards: the data source decides on their order.
    virtual void collectionViewMoveItemAtIndexPathToIndexPath(UICollectionView&, NSIndexPath /*from*/,
                                                              NSIndexPath /*to*/) {}
};

/// The defaults are what the layout holds.
class UICollectionViewDelegateFlowLayout {
public:
    virtual ~UICollectionViewDelegateFlowLayout() = default;
    virtual CGSize collectionViewLayoutSizeForItemAtIndexPath(UICollectionView& view, NSIndexPath);
    virtual CGFloat collectionViewLayoutMinimumLineSpacingForSectionAtIndex(UICollectionView& view, std::int64_t);
    virtual UIEdgeInsets collectionViewLayoutInsetForSectionAtIndex(UICollectionView& view, std::int64_t);
    /// The position of an item that is dragged towards `proposed`; the default accepts `proposed`.
    virtual NSIndexPath collectionViewTargetIndexPathForMoveFromItemAtIndexPathToProposedIndexPath(
        UICollectionView&, NSIndexPath /*from*/, NSIndexPath proposed) {
        return proposed;
    }
    /// A tap, or Return or the space bar on the focused item.
    virtual void collectionViewDidSelectItemAtIndexPath(UICollectionView&, NSIndexPath) {}
    /// Delete or Backspace on the item that shows the focus; false when it cannot be removed.
    virtual bool collectionViewRemoveItemAtIndexPath(UICollectionView&, NSIndexPath) { return false; }
};

/// Items in lines. Only visible items exist as views: those within the view's bounds and within every ancestor that
/// clips, so that the collection view may also stand at its full height in a row of a table. Main thread.
class UICollectionView : public UIScrollView {
public:
    /// Items are made this far above and below the visible part, points.
    static constexpr CGFloat overscan = 240;
    /// Unused cells kept for reuse, over all identifiers.
    static constexpr std::size_t reusePoolLimit = 32;

    UICollectionView(CGRect frame, std::shared_ptr<UICollectionViewFlowLayout> layout);
    ~UICollectionView() override;
    void initialise();

    const std::shared_ptr<UICollectionViewFlowLayout>& collectionViewLayout() const { return layout_; }
    void setDataSource(std::weak_ptr<UICollectionViewDataSource> source);
    void setDelegate(std::weak_ptr<UICollectionViewDelegateFlowLayout> delegate);

    /// `T` is derived from UICollectionViewCell and made with its frame.
    template <class T>
    void registerClassForCellWithReuseIdentifier(const std::string& identifier) {
        registerCell(identifier, [](CGRect frame) { return make<T>(frame); });
    }
    /// While the data source makes the cell at `path`: an unused one of the identifier, or a new one. One that showed
    /// this item before comes first.
    std::shared_ptr<UICollectionViewCell> dequeueReusableCellWithReuseIdentifierForIndexPath(
        const std::string& identifier, NSIndexPath path);

    /// Asks for everything anew, at the next layout; ends an interactive movement without moving anything.
    void reloadData();
    /// Asks for the sizes anew.
    void invalidateLayout();
    /// The changes made in `updates` are shown as one, animated. Deletions name items as they were before, insertions
    /// as they are afterwards; when `updates` returns, the data source has its new state. Numbers that do not agree
    /// are a mistake of the program: an assertion, without those a line in the log and `reloadData`. Calls nest.
    /// `completion` runs once, in a later turn; false when the animation was cut short.
    void performBatchUpdates(const std::function<void()>& updates, std::function<void(bool finished)> completion = {});
    /// Outside of `performBatchUpdates`: a batch of its own, called after the data source has changed.
    void insertItemsAtIndexPaths(const std::vector<NSIndexPath>& paths);
    void deleteItemsAtIndexPaths(const std::vector<NSIndexPath>& paths);

    std::int64_t numberOfSections() const;
    std::int64_t numberOfItemsInSection(std::int64_t section) const;
    std::optional<NSIndexPath> indexPathForItemAtPoint(CGPoint point) const;
    /// None when the cell shows no item (any more).
    std::optional<NSIndexPath> indexPathForCell(const UICollectionViewCell& cell) const;
    /// Null when the item is neither visible nor near the visible part.
    std::shared_ptr<UICollectionViewCell> cellForItemAtIndexPath(NSIndexPath path) const;
    std::vector<std::shared_ptr<UICollectionViewCell>> visibleCells() const;
    CGRect frameForItemAtIndexPath(NSIndexPath path) const;
    /// Cells that exist now, the reuse pool included.
    std::size_t liveCellCount() const;

    /// Lifts the item; false when it cannot be moved. The enclosing scroll view scrolls near its edges.
    bool beginInteractiveMovementForItemAtIndexPath(NSIndexPath path);
    /// `point` in this view's coordinates: where the finger is.
    void updateInteractiveMovementTargetPosition(CGPoint point);
    /// Drops the item at its present position. Does nothing when no movement is under way.
    void endInteractiveMovement();
    /// Returns the item to its former position. Does nothing when no movement is under way.
    void cancelInteractiveMovement();
    bool isInteractiveMovementUnderWay() const;

    void setFrame(const CGRect& frame) override;
    void layoutSubviews() override;
    void didMoveToWindow() override;
    void touchesBegan(const UITouch& touch) override;
    void touchesEnded(const UITouch& touch) override;
    /// On a focused item: arrows go from item to item, with Alt or Control they move it; Return and the space bar
    /// select, Delete and Backspace remove. Other keys scroll.
    bool pressesBegan(const UIPress& press) override;

protected:
    void contentOffsetDidChange() override;
    void visibleRectDidChange() override;

private:
    friend class UICollectionViewDelegateFlowLayout;
    using CellMaker = std::function<std::shared_ptr<UICollectionViewCell>(CGRect frame)>;
    void registerCell(const std::string& identifier, CellMaker maker);
    std::shared_ptr<UICollectionViewFlowLayout> layout_;
    struct Implementation;
    std::unique_ptr<Implementation> implementation_;
};

}  // namespace ostrel
