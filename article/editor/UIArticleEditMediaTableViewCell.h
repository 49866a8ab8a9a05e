#pragma once

#include "platform/foundation/values/Value.h"
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

/// What the editor's strips of images and of videos share, whatever the class of their items: a tile for each item and
/// an add tile at the end, picking, and reordering. A press of half a second makes the tiles shake; a drag then swaps
/// two items. `MediaStrip` adds the items. Main thread.
class UIArticleEditMediaTableViewCell : public UITableViewCell,
                                        public UICollectionViewDataSource,
                                        public UICollectionViewDelegateFlowLayout,
                                        public UIImagePickerControllerDelegate {
public:
    UIArticleEditMediaTableViewCell(UITableViewCellStyle style, std::string reuseIdentifier);
    void initialise();

    const std::shared_ptr<UICollectionView>& collectionView() const { return collectionView_; }
    /// Whether the user reorders the items: the tiles shake and can be dragged, and the add tile is hidden.
    bool isItemShake() const { return isItemShake_; }
    std::int64_t articleEditStyle() const { return articleEditStyle_; }
    /// 0: list, 1: grid, any other number: large tiles. A tile takes the style when it is next given an item.
    void setArticleEditStyle(std::int64_t style) { articleEditStyle_ = style; }

    /// Begins reordering.
    void start_drag();
    /// Ends reordering, if it was under way, and reloads all tiles.
    void end_drag();
    /// Takes this strip out of its tiles' delegates, which would otherwise hold it for ever.
    virtual void close();
    /// Shows the strip again after `close`.
    void reopen();

    std::int64_t collectionViewNumberOfItemsInSection(UICollectionView& view, std::int64_t section) override;
    std::shared_ptr<UICollectionViewCell> collectionViewCellForItemAtIndexPath(UICollectionView& view,
                                                                               NSIndexPath path) override;
    bool collectionViewCanMoveItemAtIndexPath(UICollectionView& view, NSIndexPath path) override;
    /// Swaps the two items. Kept on purpose, although the tiles in between made room during the drag.
    void collectionViewMoveItemAtIndexPathToIndexPath(UICollectionView& view, NSIndexPath from,
                                                      NSIndexPath to) override;
    CGSize collectionViewLayoutSizeForItemAtIndexPath(UICollectionView& view, NSIndexPath path) override;
    CGFloat collectionViewLayoutMinimumLineSpacingForSectionAtIndex(UICollectionView& view,
                                                                    std::int64_t section) override;
    UIEdgeInsets collectionViewLayoutInsetForSectionAtIndex(UICollectionView& view, std::int64_t section) override;
    NSIndexPath collectionViewTargetIndexPathForMoveFromItemAtIndexPathToProposedIndexPath(
        UICollectionView& view, NSIndexPath from, NSIndexPath proposed) override;
    bool collectionViewRemoveItemAtIndexPath(UICollectionView& view, NSIndexPath path) override;
    void imagePickerControllerDidCancel(UIImagePickerController& picker) override;

protected:
    static CGFloat heightForCount(std::size_t count, std::int64_t style);

    /// Opens the picker for one kind of media above the topmost screen of the first window.
    void select(std::string_view mediaType);
    /// Inserts the tile of the last item.
    void insertLastTile();
    /// Tells the editor that an item was added or removed.
    void numberDidChange();
    /// Deletes the item that `tile` shows, and the tile, in one batch update. Does nothing when the collection view no
    /// longer has the tile.
    void removeItemOf(MediaCollectionViewCell& tile);

    /// None before the items are set.
    virtual std::optional<std::size_t> itemCount() const = 0;
    virtual std::shared_ptr<UICollectionViewCell> addImageCellWithIndexPath(NSIndexPath path) = 0;
    /// A tile with its delegate; `showItem` gives it its item.
    virtual std::shared_ptr<MediaCollectionViewCell> itemTile(NSIndexPath path) = 0;
    virtual void showItem(MediaCollectionViewCell& tile, std::size_t index) = 0;
    virtual void swapItems(std::size_t one, std::size_t other) = 0;
    virtual void eraseItem(std::size_t index) = 0;
    /// Keeps the record of a removed item for the next save.
    virtual void rememberRemoved(const Dictionary& record) = 0;
    virtual void tellTextAndValueChanged() = 0;
    virtual void tellNumberChanged() = 0;
    /// Takes this strip out of the tile's delegate.
    virtual void releaseTile(UICollectionViewCell& tile) = 0;

private:
    std::weak_ptr<UIArticleEditMediaTableViewCell> weakSelf() {
        return std::static_pointer_cast<UIArticleEditMediaTableViewCell>(shared_from_this());
    }
    void openDropFunction(const UIGestureRecognizer& recognizer);
    void handlelongGesture(const UIGestureRecognizer& recognizer);
    void updatePlaces();
    void remember(const std::shared_ptr<UICollectionViewCell>& tile);

    /// The tiles that have this strip as their delegate, whether the collection view shows them or keeps them for
    /// reuse.
    std::set<std::weak_ptr<UICollectionViewCell>, std::owner_less<>> tiles_;
    std::shared_ptr<UICollectionView> collectionView_;
    /// Drags tiles while they shake; null before the first reordering.
    std::shared_ptr<UILongPressGestureRecognizer> gesture_;
    bool isItemShake_ = false;
    std::int64_t articleEditStyle_ = 0;
};

}  // namespace ostrel
