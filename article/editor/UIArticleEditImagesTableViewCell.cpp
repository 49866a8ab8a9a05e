#include "article/editor/UIArticleEditImagesTableViewCell.h"

#include <utility>

namespace ostrel {

namespace {

constexpr char itemIdentifier[] = "cell", addIdentifier[] = "add";

}  // namespace

void UIArticleEditImagesTableViewCell::initialise() {
    UIArticleEditMediaTableViewCell::initialise();
    collectionView()->registerClassForCellWithReuseIdentifier<ImageCollectionViewCell>(itemIdentifier);
    collectionView()->registerClassForCellWithReuseIdentifier<AddImageCollectionViewCell>(addIdentifier);
}

CGFloat UIArticleEditImagesTableViewCell::heightFor(const std::optional<ArticleImages>& items,
                                                    std::int64_t style) {
    return heightForCount(items ? items->size() : 0, style);
}

void UIArticleEditImagesTableViewCell::setDelegate(
    std::shared_ptr<UIArticleEditImagesTableViewCellDelegate> delegate) {
    delegate_ = std::move(delegate);
}

void UIArticleEditImagesTableViewCell::tellTextAndValueChanged() {
    if (const auto delegate = delegate_)
        delegate->textAndValueChangedFromArticleEditImagesTableViewCell(*this);
}

void UIArticleEditImagesTableViewCell::tellNumberChanged() {
    if (const auto delegate = delegate_) delegate->imageNumberChanged(*this);
}

// Tiles

std::optional<std::size_t> UIArticleEditImagesTableViewCell::itemCount() const {
    return imagesArray_ ? std::optional(imagesArray_->size()) : std::nullopt;
}

std::shared_ptr<UICollectionViewCell> UIArticleEditImagesTableViewCell::addImageCellWithIndexPath(
    NSIndexPath path) {
    auto tile = std::static_pointer_cast<AddImageCollectionViewCell>(
        collectionView()->dequeueReusableCellWithReuseIdentifierForIndexPath(addIdentifier, path));
    tile->setDelegate(weakSelf<UIArticleEditImagesTableViewCell>().lock());
    return tile;
}

std::shared_ptr<MediaCollectionViewCell> UIArticleEditImagesTableViewCell::itemTile(NSIndexPath path) {
    auto tile = std::static_pointer_cast<ImageCollectionViewCell>(
        collectionView()->dequeueReusableCellWithReuseIdentifierForIndexPath(itemIdentifier, path));
    tile->setDelegate(weakSelf<UIArticleEditImagesTableViewCell>().lock());
    return tile;
}

void UIArticleEditImagesTableViewCell::showItem(MediaCollectionViewCell& tile, std::size_t index) {
    static_cast<ImageCollectionViewCell&>(tile).setImageObject((*imagesArray_)[index]);
}

void UIArticleEditImagesTableViewCell::releaseTile(UICollectionViewCell& tile) {
    if (auto* const item = dynamic_cast<ImageCollectionViewCell*>(&tile)) item->setDelegate(nullptr);
    if (auto* const add = dynamic_cast<AddImageCollectionViewCell*>(&tile)) add->setDelegate(nullptr);
}

void UIArticleEditImagesTableViewCell::swapItems(std::size_t one, std::size_t other) {
    std::swap((*imagesArray_)[one], (*imagesArray_)[other]);
}

void UIArticleEditImagesTableViewCell::eraseItem(std::size_t index) {
    imagesArray_->erase(imagesArray_->begin() + static_cast<std::ptrdiff_t>(index));
}

void UIArticleEditImagesTableViewCell::willRemoveItemOf(MediaCollectionViewCell& tile) {
    const auto& item = static_cast<ImageCollectionViewCell&>(tile).imageObject();
    if (!item || !item->imageDictionary()) return;
    if (!removedImagesDictionaryArray_) removedImagesDictionaryArray_.emplace();
    removedImagesDictionaryArray_->push_back(item->imageDictionary());
}

void UIArticleEditImagesTableViewCell::removeImageCollectionViewCell(ImageCollectionViewCell& tile) {
    removeItemOf(tile);
}

void UIArticleEditImagesTableViewCell::textChangedCollectionViewCell(ImageCollectionViewCell&) {
    tellTextAndValueChanged();
}

// Picking

void UIArticleEditImagesTableViewCell::addImageFromAddImageCollectionViewCell(AddImageCollectionViewCell&) {
    selectImage();
}

void UIArticleEditImagesTableViewCell::selectImage() { select(UTTypeImage); }

void UIArticleEditImagesTableViewCell::imagePickerControllerDidFinishPickingMediaWithInfo(
    UIImagePickerController& picker, const UIImagePickerMediaInfo& info) {
    if (info.mediaType != UTTypeImage) return;
    auto item = std::make_shared<NSArticleImageObject>();
    item->setImage(info.originalImage);
    picker.dismissViewControllerAnimated(
        true, [self = weakSelf<UIArticleEditImagesTableViewCell>(), item = std::move(item)] {
            const auto row = self.lock();
            if (row) row->collectionView()->performBatchUpdates([&] { row->addImageWith(item); });
        });
}

void UIArticleEditImagesTableViewCell::addImageWith(std::shared_ptr<NSArticleImageObject> item) {
    if (!imagesArray_) imagesArray_.emplace();
    imagesArray_->push_back(std::move(item));
    insertLastTile();
    numberDidChange();
}

}  // namespace ostrel
