#include "platform/uikit/picker/MediaGridView.h"

#include "platform/uikit/picker/MediaGridCell.h"

#include "platform/uikit/view/UIWindow.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace ostrel {

namespace {

constexpr const char* cellIdentifier = "medium";

}  // namespace

MediaGridView::MediaGridView(std::shared_ptr<MediaThumbnails> thumbnails)
    : UICollectionView({}, nullptr), thumbnails_(std::move(thumbnails)) {}

void MediaGridView::initialise() {
    UICollectionView::initialise();
    collectionViewLayout()->minimumLineSpacing = gap;
    collectionViewLayout()->minimumInteritemSpacing = gap;
    registerClassForCellWithReuseIdentifier<MediaGridCell>(cellIdentifier);
    const auto self = std::static_pointer_cast<MediaGridView>(shared_from_this());
    setDataSource(self);
    setDelegate(self);
}

void MediaGridView::setItems(std::vector<MediaLibraryItem> items) {
    items_ = std::move(items);
    reloadData();
}

void MediaGridView::setFooterView(std::shared_ptr<UIView> footer) {
    if (footer_) footer_->removeFromSuperview();
    footer_ = std::move(footer);
    if (footer_) addSubview(footer_);
    setContentInset({0, 0, footer_ ? footer_->frame().height() : 0, 0});
    setNeedsLayout();
}

void MediaGridView::setBusyPaths(std::set<std::string> paths) {
    busy_ = std::move(paths);
    for (const auto& view : subviews()) {
        if (auto* cell = dynamic_cast<MediaGridCell*>(view.get())) cell->setBusy(busy_.contains(cell->path()));
    }
}

void MediaGridView::adaptCellSize() {
    const CGFloat width = bounds().width();
    const int columns = std::max(3, static_cast<int>((width + gap) / (leastCellWidth + gap)));
    const CGFloat side = std::max(1.0, std::floor((width - gap * (columns - 1)) / columns));
    collectionViewLayout()->itemSize = {side, side};
    invalidateLayout();
}

void MediaGridView::setFrame(const CGRect& newFrame) {
    const CGFloat former = frame().width();
    // The item at the upper edge stays at the upper edge.
    const bool isScrolled = contentOffset().y > 0 && former > 0;
    const auto top = isScrolled ? indexPathForItemAtPoint({1, contentOffset().y + gap}) : std::nullopt;
    UICollectionView::setFrame(newFrame);
    if (frame().width() == former) return;
    adaptCellSize();
    if (top) setContentOffset({0, std::min(frameForItemAtIndexPath(*top).minY(), maximumOffsetY())});
}

void MediaGridView::layoutSubviews() {
    const CGFloat scale = window() && window()->backend() ? window()->backend()->scale() : 1;
    // Thumbnails of another size are useless, so the grid asks for the visible ones again.
    if (thumbnails_->setSide(static_cast<int>(std::ceil(collectionViewLayout()->itemSize.width * scale)))) reloadData();
    UICollectionView::layoutSubviews();
    if (footer_) footer_->setFrame({0, contentSize().height, bounds().width(), footer_->frame().height()});
}

std::int64_t MediaGridView::collectionViewNumberOfItemsInSection(UICollectionView&, std::int64_t) {
    return static_cast<std::int64_t>(items_.size());
}

std::shared_ptr<UICollectionViewCell> MediaGridView::collectionViewCellForItemAtIndexPath(UICollectionView&,
                                                                                          NSIndexPath path) {
    const auto cell = std::static_pointer_cast<MediaGridCell>(
        dequeueReusableCellWithReuseIdentifierForIndexPath(cellIdentifier, path));
    const auto index = static_cast<std::size_t>(path.row);
    cell->show(items_.at(index), index + 1, items_.size(), thumbnails_);
    cell->setBusy(busy_.contains(items_[index].path));
    return cell;
}

void MediaGridView::collectionViewDidSelectItemAtIndexPath(UICollectionView&, NSIndexPath path) {
    const MediaLibraryItem item = items_.at(static_cast<std::size_t>(path.row));
    if (chosen) chosen(item);
}

bool MediaGridView::pressesBegan(const UIPress& press) {
    const auto code = press.key.code;
    const bool isArrow =
        code == UIKeyCode::left || code == UIKeyCode::right || code == UIKeyCode::up || code == UIKeyCode::down;
    const UIView* const focused = window() ? window()->focusedView() : nullptr;
    if (isArrow && press.key.modifiers == modifierNone && window() && !focused) {
        for (const auto& cell : visibleCells()) {
            if (cell->frame().minY() < contentOffset().y) continue;
            window()->setFocusedView(cell.get(), true);
            return true;
        }
    }
    return UICollectionView::pressesBegan(press);
}

}  // namespace ostrel
