#include "article/editor/UIArticleEditMediaTableViewCell.h"

#include "article/editor/MediaCollectionViewCell.h"
#include "article/editor/MediaLayout.h"
#include "platform/foundation/runloop/RunLoop.h"
#include "platform/uikit/view/UIDevice.h"
#include "platform/uikit/view/UIWindow.h"

#include <algorithm>
#include <utility>

namespace ostrel {

UIArticleEditMediaTableViewCell::UIArticleEditMediaTableViewCell(UITableViewCellStyle style,
                                                                 std::string reuseIdentifier)
    : UITableViewCell(style, std::move(reuseIdentifier)) {}

void UIArticleEditMediaTableViewCell::initialise() {
    UITableViewCell::initialise();
    setSelectionStyle(UITableViewCellSelectionStyle::none);
    setBackgroundColor(UIColor::clear());
    // Each tile is painted as a surface of its own; a strip of hundreds of items would be too large for one.
    setSurface(false);

    auto layout = std::make_shared<UICollectionViewFlowLayout>();
    layout->scrollDirection = UICollectionViewScrollDirection::vertical;
    collectionView_ = make<UICollectionView>(CGRect{{0, 0}, frame().size}, std::move(layout));
    collectionView_->setBackgroundColor(UIColor::clear());
    const auto self = weakSelf();
    collectionView_->setDataSource(self);
    collectionView_->setDelegate(self);
    collectionView_->setAutoresizingMask(flexibleWidth | flexibleHeight);
    addSubview(collectionView_);

    auto press = std::make_shared<UILongPressGestureRecognizer>([self](UIGestureRecognizer& recognizer) {
        if (const auto strip = self.lock()) strip->openDropFunction(recognizer);
    });
    press->minimumPressDuration = 0.5;
    collectionView_->addGestureRecognizer(press);
}

void UIArticleEditMediaTableViewCell::close() {
    for (const auto& held : std::exchange(tiles_, {})) {
        if (const auto tile = held.lock()) releaseTile(*tile);
    }
}

void UIArticleEditMediaTableViewCell::reopen() { collectionView_->reloadData(); }

// Layout

CGFloat UIArticleEditMediaTableViewCell::heightForCount(std::size_t count, std::int64_t style) {
    return mediaStripHeight(count, style, UIScreen::mainScreen().bounds().width());
}

std::int64_t UIArticleEditMediaTableViewCell::collectionViewNumberOfItemsInSection(UICollectionView&, std::int64_t) {
    const auto count = itemCount();
    return count ? static_cast<std::int64_t>(*count) + (isItemShake_ ? 0 : 1) : 0;
}

CGSize UIArticleEditMediaTableViewCell::collectionViewLayoutSizeForItemAtIndexPath(UICollectionView& view,
                                                                                   NSIndexPath) {
    return mediaTileSize(articleEditStyle_, view.frame().width());
}

CGFloat UIArticleEditMediaTableViewCell::collectionViewLayoutMinimumLineSpacingForSectionAtIndex(UICollectionView&,
                                                                                                 std::int64_t) {
    return mediaLineSpacing;
}

UIEdgeInsets UIArticleEditMediaTableViewCell::collectionViewLayoutInsetForSectionAtIndex(UICollectionView&,
                                                                                         std::int64_t) {
    return {5, 5, 5, 5};
}

// Tiles

std::shared_ptr<UICollectionViewCell> UIArticleEditMediaTableViewCell::collectionViewCellForItemAtIndexPath(
    UICollectionView&, NSIndexPath path) {
    const std::size_t count = itemCount().value_or(0), index = static_cast<std::size_t>(path.row);
    if (index >= count) {
        auto add = addImageCellWithIndexPath(path);
        remember(add);
        return add;
    }
    auto tile = itemTile(path);
    remember(tile);
    tile->setArticleEditStyle(articleEditStyle_);
    if (isItemShake_) {
        tile->beginShake();
    } else {
        tile->stopShake();
    }
    showItem(*tile, index);
    tile->setPlace(index, count);
    return tile;
}

void UIArticleEditMediaTableViewCell::remember(const std::shared_ptr<UICollectionViewCell>& tile) {
    if (tiles_.insert(tile).second) std::erase_if(tiles_, [](const auto& held) { return held.expired(); });
}

void UIArticleEditMediaTableViewCell::numberDidChange() {
    tellNumberChanged();
    // In the next turn of the run loop, when the collection view has placed its tiles.
    RunLoop::main().perform([self = weakSelf()] {
        if (const auto strip = self.lock()) strip->updatePlaces();
    });
}

void UIArticleEditMediaTableViewCell::updatePlaces() {
    const std::size_t count = itemCount().value_or(0);
    for (const auto& cell : collectionView_->visibleCells()) {
        const auto path = collectionView_->indexPathForCell(*cell);
        if (auto* const tile = dynamic_cast<MediaCollectionViewCell*>(cell.get()); tile && path)
            tile->setPlace(static_cast<std::size_t>(path->row), count);
    }
}

void UIArticleEditMediaTableViewCell::insertLastTile() {
    const auto last = static_cast<std::int64_t>(itemCount().value_or(1)) - 1;
    collectionView_->insertItemsAtIndexPaths({{0, last}});
}

void UIArticleEditMediaTableViewCell::removeItemOf(MediaCollectionViewCell& tile) {
    if (!collectionView_->indexPathForCell(tile)) return;
    const ArticleMediaItem* const item = tile.shownItem();
    if (item && item->record()) rememberRemoved(item->record());
    collectionView_->performBatchUpdates([&] {
        const auto path = collectionView_->indexPathForCell(tile);
        if (!path || static_cast<std::size_t>(path->row) >= itemCount().value_or(0)) return;
        eraseItem(static_cast<std::size_t>(path->row));
        collectionView_->deleteItemsAtIndexPaths({*path});
        numberDidChange();
    });
}

bool UIArticleEditMediaTableViewCell::collectionViewRemoveItemAtIndexPath(UICollectionView& view, NSIndexPath path) {
    const auto tile = std::dynamic_pointer_cast<MediaCollectionViewCell>(view.cellForItemAtIndexPath(path));
    if (tile) tile->remove();
    return tile != nullptr;
}

// Picking

void UIArticleEditMediaTableViewCell::select(std::string_view mediaType) {
    UIWindow* const window = UIApplication::sharedApplication().firstWindow();
    UIViewController* top = window ? window->rootViewController().get() : nullptr;
    if (!top) return;
    // The editor itself may be presented, so the topmost screen presents the picker; a second picker is not opened.
    while (top->presentedViewController()) top = top->presentedViewController().get();
    if (dynamic_cast<UIImagePickerController*>(top)) return;
    auto picker = make<UIImagePickerController>();
    picker->setDelegate(weakSelf());
    picker->setMediaTypes({std::string(mediaType)});
    picker->setAllowsEditing(false);
    picker->setSourceType(UIImagePickerControllerSourceType::photoLibrary);
    const bool isPad = UIDevice::currentDevice().userInterfaceIdiom() == UIUserInterfaceIdiom::pad;
    picker->modalPresentationStyle = isPad ? UIModalPresentationStyle::formSheet : UIModalPresentationStyle::fullScreen;
    top->presentViewController(picker, true);
}

void UIArticleEditMediaTableViewCell::imagePickerControllerDidCancel(UIImagePickerController& picker) {
    picker.dismissViewControllerAnimated(true);
}

// Reordering

void UIArticleEditMediaTableViewCell::openDropFunction(const UIGestureRecognizer& recognizer) {
    if (recognizer.state() == UIGestureRecognizerState::began) start_drag();
}

void UIArticleEditMediaTableViewCell::start_drag() {
    isItemShake_ = true;
    collectionView_->reloadData();
    if (!gesture_) {
        gesture_ = std::make_shared<UILongPressGestureRecognizer>([self = weakSelf()](UIGestureRecognizer& recognizer) {
            if (const auto strip = self.lock()) strip->handlelongGesture(recognizer);
        });
        gesture_->minimumPressDuration = 0;
    }
    if (!gesture_->view()) collectionView_->addGestureRecognizer(gesture_);
}

void UIArticleEditMediaTableViewCell::handlelongGesture(const UIGestureRecognizer& recognizer) {
    const CGPoint point = recognizer.locationInView(collectionView_.get());
    switch (recognizer.state()) {
    case UIGestureRecognizerState::began:
        if (const auto path = collectionView_->indexPathForItemAtPoint(point))
            collectionView_->beginInteractiveMovementForItemAtIndexPath(*path);
        break;
    case UIGestureRecognizerState::changed: collectionView_->updateInteractiveMovementTargetPosition(point); break;
    default: collectionView_->endInteractiveMovement();
    }
}

void UIArticleEditMediaTableViewCell::end_drag() {
    collectionView_->endInteractiveMovement();
    if (gesture_ && gesture_->view()) collectionView_->removeGestureRecognizer(gesture_);
    isItemShake_ = false;
    collectionView_->reloadData();
}

bool UIArticleEditMediaTableViewCell::collectionViewCanMoveItemAtIndexPath(UICollectionView&, NSIndexPath) {
    return true;
}

NSIndexPath UIArticleEditMediaTableViewCell::collectionViewTargetIndexPathForMoveFromItemAtIndexPathToProposedIndexPath(
    UICollectionView&, NSIndexPath from, NSIndexPath proposed) {
    // The keyboard also moves tiles that do not shake, when the add tile is shown: no tile moves behind the add tile,
    // and the add tile itself does not move.
    const auto count = static_cast<std::int64_t>(itemCount().value_or(0));
    if (from.row >= count) return from;
    return {proposed.section, std::min(proposed.row, count - 1)};
}

void UIArticleEditMediaTableViewCell::collectionViewMoveItemAtIndexPathToIndexPath(UICollectionView&, NSIndexPath from,
                                                                                   NSIndexPath to) {
    const auto count = static_cast<std::int64_t>(itemCount().value_or(0));
    if (from.row >= count || to.row >= count) return;
    swapItems(static_cast<std::size_t>(from.row), static_cast<std::size_t>(to.row));
    tellTextAndValueChanged();
}

}  // namespace ostrel
