#include "article/editor/UIArticleEditImagesTableViewCell.h"

#include <utility>

namespace ostrel {

void UIArticleEditImagesTableViewCell::show(const std::shared_ptr<NSArticleImageObject>& item,
                                            ImageCollectionViewCell& tile) {
    tile.setImageObject(item);
}

void UIArticleEditImagesTableViewCell::tellTextAndValueChanged() {
    const auto receiver = delegate();
    if (receiver) receiver->textAndValueChangedFromArticleEditImagesTableViewCell(*this);
}

void UIArticleEditImagesTableViewCell::tellNumberChanged() {
    const auto receiver = delegate();
    if (receiver) receiver->imageNumberChanged(*this);
}

void UIArticleEditImagesTableViewCell::addImageFromAddImageCollectionViewCell(AddImageCollectionViewCell&) {
    selectImage();
}

void UIArticleEditImagesTableViewCell::selectImage() { select(UTTypeImage); }

void UIArticleEditImagesTableViewCell::imagePickerControllerDidFinishPickingMediaWithInfo(
    UIImagePickerController& picker, const UIImagePickerMediaInfo& info) {
    if (info.mediaType != UTTypeImage) return;
    auto item = std::make_shared<NSArticleImageObject>();
    item->setImage(info.originalImage);
    picker.dismissViewControllerAnimated(true, [self = weakStrip(), item = std::move(item)] {
        const auto strip = self.lock();
        if (strip) strip->collectionView()->performBatchUpdates([&] { strip->addImageWith(item); });
    });
}

void UIArticleEditImagesTableViewCell::addImageWith(std::shared_ptr<NSArticleImageObject> item) {
    append(std::move(item));
    numberDidChange();
}

}  // namespace ostrel
