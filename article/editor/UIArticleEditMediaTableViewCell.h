#pragma once

#include "platform/uikit/collection/UICollectionView.h"
#include "platform/uikit/picker/UIImagePickerController.h"
#include "platform/uikit/table/UITableViewCell.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>

namespace ostrel {

class MediaCollectionViewCell;

/// What the editor's strips of images and of videos share: a tile for each item and an add tile at the end, picking, and
/// reordering. A press of half a second makes the tiles shake; then a drag swaps two items. Main thread.
class UIArticleEditMediaTableViewCell : public UITableViewCell,
                                        public UICollectionViewDataSource,
                                        public UICollectionViewDelegateFlowLayout,
                                        public UIImagePickerControllerDelegate {
public:
    UIArticleEditMediaTableViewCell(UITableViewCellStyle style, std::string reuseIdentifier);
    void initialise();

    const std::shared_ptr<UICollectionView>& collectionView() const { return collectionView_; }
    /// Tiles can be dragged; they shake, and there is no add tile.
    bool isItemShake() const { return isItemShake_; }
    std::int64_t articleEditStyle() const { return articleEditStyle_; }
    /// 0: list, 1: grid, any other: large tiles. Shown by tiles that are handed an item afterwards.
    void setArticleEditStyle(std::int64_t style) { articleEditStyle_ = style; }

    /// Shows the tiles shaking.
    void start_drag();
    /// Ends reordering, whether it was under way or not, and shows all tiles anew.
    void end_drag();
    /// Lets go of what holds this row through its tiles; the strip has gone for good, or until `reopen`.
    virtual void close();
    void reopen();

    std::int64_t collectionViewNumberOfItemsInSection(UICollectionView& view, std::int64_t section) override;
    std::shared_ptr<UICollectionViewCell> collectionViewCellForItemAtIndexPath(UICollectionView& view,
                                                                               NSIndexPath path) override;
    bool collectionViewCanMoveItemAtIndexPath(UICollectionView& view, NSIndexPath path) override;
    /// Swaps the two items, whatever the tiles showed during the drag.
    void collectionViewMoveItemAtIndexPathToIndexPath(UICollectionView& view, NSIndexPath from,
                                                      NSIndexPath to) override;
    CGSize collectionViewLayoutSizeForItemAtIndexPath(UICollectionView& view, NSIndexPath path) override;
    CGFloat collectionViewLayoutMinimumLineSpacingForSectionAtIndex(UICollectionView& view,
                                                                    std::int64_t section) override;
    UIEdgeInsets collectionViewLayoutInsetForSectionAtIndex(UICollectionView& view,
                                                            std::int64_t section) override;
    NSIndexPath collectionViewTargetIndexPathForMoveFromItemAtIndexPathToProposedIndexPath(
        UICollectionView& view, NSIndexPath from, NSIndexPath proposed) override;
    bool collectionViewRemoveItemAtIndexPath(UICollectionView& view, NSIndexPath path) override;
    void imagePickerControllerDidCancel(UIImagePickerController& picker) override;

protected:
    /// The height of a strip of `count` items in points: its items and the add tile, in 32-bit arithmetic. The grid goes
    /// by the width of the main screen, not by the row's; large tiles have no height.
    static CGFloat heightForCount(std::size_t count, std::int64_t style);

    /// Opens the picker for one kind of media over whatever the first window shows.
    void select(std::string_view mediaType);
    /// Shows a tile for the item that was appended last.
    void insertLastTile();
    /// Tells the editor that an item was added or removed.
    void numberDidChange();
    /// Deletes the item that `tile` shows and the tile, as one change. Without effect when the tile shows none any more.
    void removeItemOf(MediaCollectionViewCell& tile);

    /// None while there is no array of items.
    virtual std::optional<std::size_t> itemCount() const = 0;
    virtual std::shared_ptr<UICollectionViewCell> addImageCellWithIndexPath(NSIndexPath path) = 0;
    /// A tile with its delegate, still without an item.
    virtual std::shared_ptr<MediaCollectionViewCell> itemTile(NSIndexPath path) = 0;
    virtual void showItem(MediaCollectionViewCell& tile, std::size_t index) = 0;
    virtual void swapItems(std::size_t one, std::size_t other) = 0;
    virtual void eraseItem(std::size_t index) = 0;
    /// Remembers the record of an item that is about to be removed.
    virtual void willRemoveItemOf(MediaCollectionViewCell& tile) = 0;
    virtual void tellTextAndValueChanged() = 0;
    virtual void tellNumberChanged() = 0;
    /// Takes this row out of the tile's delegate.
    virtual void releaseTile(UICollectionViewCell& tile) = 0;

    template <class Row>
    std::weak_ptr<Row> weakSelf() {
        return std::static_pointer_cast<Row>(shared_from_this());
    }

private:
    void openDropFunction(const UIGestureRecognizer& recognizer);
    void handlelongGesture(const UIGestureRecognizer& recognizer);
    void updatePlaces();
    void remember(const std::shared_ptr<UICollectionViewCell>& tile);

    /// Those that hold this row, in sight or kept for reuse.
    std::set<std::weak_ptr<UICollectionViewCell>, std::owner_less<>> tiles_;
    std::shared_ptr<UICollectionView> collectionView_;
    std::shared_ptr<UILongPressGestureRecognizer>
        gesture_;  ///< drags tiles while they shake; made on first use
    bool isItemShake_ = false;
    std::int64_t articleEditStyle_ = 0;
};

}  // namespace ostrel
