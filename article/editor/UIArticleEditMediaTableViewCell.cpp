#include "article/editor/UIArticleEditMediaTableViewCell.h"

#include "article/editor/MediaCollectionViewCell.h"
#include "platform/foundation/runloop/RunLoop.h"
#include "platform/uikit/view/UIDevice.h"
#include "platform/uikit/view/UIWindow.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace ostrel {

namespace {

enum Style : std::int64_t { list = 0, grid = 1 };

constexpr float lineSpacing = 10;
constexpr float listTileHeight = 86;
constexpr CGFloat tilesInLine = 3;
constexpr CGFloat largeTileSide = 167;

/// Three tiles fill a line together with the spaces between and around them.
float gridSide(CGFloat width) { return static_cast<float>(width / tilesInLine - 10.0); }

}  // namespace

UIArticleEditMediaTableViewCell::UIArticleEditMediaTableViewCell(UITableViewCellStyle style,
                                                                 std::string reuseIdentifier)
    : UITableViewCell(style, std::move(reuseIdentifier)) {}

void UIArticleEditMediaTableViewCell::initialise() {
    UITableViewCell::initialise();
    setSelectionStyle(UITableViewCellSelectionStyle::none);
    setBackgroundColor(UIColor::clear());
    // A strip of hundreds of items is no picture to paint as a whole; each of its tiles is.
    setSurface(false);

    auto layout = std::make_shared<UICollectionViewFlowLayout>();
    layout->scrollDirection = UICollectionViewScrollDirection::vertical;
    collectionView_ = make<UICollectionView>(CGRect{{0, 0}, frame().size}, std::move(layout));
    collectionView_->setBackgroundColor(UIColor::clear());
    const auto self = weakSelf<UIArticleEditMediaTableViewCell>();
    collectionView_->setDataSource(self);
    collectionView_->setDelegate(self);
    collectionView_->setAutoresizingMask(flexibleWidth | flexibleHeight);
    addSubview(collectionView_);

    auto press = std::make_shared<UILongPressGestureRecognizer>([self](UIGestureRecognizer& recognizer) {
        if (const auto row = self.lock()) row->openDropFunction(recognizer);
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
    const auto tiles = static_cast<float>(count) + 1;
    if (style == list) return (tiles + 1) * lineSpacing + tiles * listTileHeight;
    if (style != grid) return 0;
    const auto lines = static_cast<float>(std::ceil((static_cast<double>(count) + 1) / tilesInLine));
    return lines * gridSide(UIScreen::mainScreen().bounds().width());
}

std::int64_t UIArticleEditMediaTableViewCell::collectionViewNumberOfItemsInSection(UICollectionView&,
                                                                                   std::int64_t) {
    const auto count = itemCount();
    return count ? static_cast<std::int64_t>(*count) + (isItemShake_ ? 0 : 1) : 0;
}

CGSize UIArticleEditMediaTableViewCell::collectionViewLayoutSizeForItemAtIndexPath(UICollectionView& view,
                                                                                   NSIndexPath) {
    const CGFloat width = view.frame().width();
    if (articleEditStyle_ == grid) return {std::max(0.0f, gridSide(width)), std::max(0.0f, gridSide(width))};
    if (articleEditStyle_ == list) return {std::max(0.0, width - 27), listTileHeight};
    return {largeTileSide, largeTileSide};
}

CGFloat UIArticleEditMediaTableViewCell::collectionViewLayoutMinimumLineSpacingForSectionAtIndex(
    UICollectionView&, std::int64_t) {
    return lineSpacing;
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
    // When the tiles have their places.
    RunLoop::main().perform([self = weakSelf<UIArticleEditMediaTableViewCell>()] {
        if (const auto row = self.lock()) row->updatePlaces();
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
    willRemoveItemOf(tile);
    collectionView_->performBatchUpdates([&] {
        const auto path = collectionView_->indexPathForCell(tile);
        if (!path || static_cast<std::size_t>(path->row) >= itemCount().value_or(0)) return;
        eraseItem(static_cast<std::size_t>(path->row));
        collectionView_->deleteItemsAtIndexPaths({*path});
        numberDidChange();
    });
}

bool UIArticleEditMediaTableViewCell::collectionViewRemoveItemAtIndexPath(UICollectionView& view,
                                                                          NSIndexPath path) {
    const auto tile = std::dynamic_pointer_cast<MediaCollectionViewCell>(view.cellForItemAtIndexPath(path));
    if (tile) tile->remove();
    return tile != nullptr;
}

// Picking

void UIArticleEditMediaTableViewCell::select(std::string_view mediaType) {
    UIWindow* const window = UIApplication::sharedApplication().firstWindow();
    UIViewController* top = window ? window->rootViewController().get() : nullptr;
    if (!top) return;
    // The editor itself may be presented. One picker at a time.
    while (top->presentedViewController()) top = top->presentedViewController().get();
    if (dynamic_cast<UIImagePickerController*>(top)) return;
    auto picker = make<UIImagePickerController>();
    picker->setDelegate(weakSelf<UIArticleEditMediaTableViewCell>());
    picker->setMediaTypes({std::string(mediaType)});
    picker->setAllowsEditing(false);
    picker->setSourceType(UIImagePickerControllerSourceType::photoLibrary);
    const bool isPad = UIDevice::currentDevice().userInterfaceIdiom() == UIUserInterfaceIdiom::pad;
    picker->modalPresentationStyle =
        isPad ? UIModalPresentationStyle::formSheet : UIModalPresentationStyle::fullScreen;
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
        gesture_ = std::make_shared<UILongPressGestureRecognizer>(
            [self = weakSelf<UIArticleEditMediaTableViewCell>()](UIGestureRecognizer& recognizer) {
                if (const auto row = self.lock()) row->handlelongGesture(recognizer);
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
    case UIGestureRecognizerState::changed:
        collectionView_->updateInteractiveMovementTargetPosition(point);
        break;
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

NSIndexPath
UIArticleEditMediaTableViewCell::collectionViewTargetIndexPathForMoveFromItemAtIndexPathToProposedIndexPath(
    UICollectionView&, NSIndexPath from, NSIndexPath proposed) {
    // The keyboard moves tiles that do not shake too: past the add tile there is no place, and it stays where it is.
    const auto count = static_cast<std::int64_t>(itemCount().value_or(0));
    if (from.row >= count) return from;
    return {proposed.section, std::min(proposed.row, count - 1)};
}

void UIArticleEditMediaTableViewCell::collectionViewMoveItemAtIndexPathToIndexPath(UICollectionView&,
                                                                                   NSIndexPath from,
                                                                                   NSIndexPath to) {
    const auto count = static_cast<std::int64_t>(itemCount().value_or(0));
    if (from.row >= count || to.row >= count) return;
    swapItems(static_cast<std::size_t>(from.row), static_cast<std::size_t>(to.row));
    tellTextAndValueChanged();
}

}  // namespace ostrel
