#include "article/editor/ImageCollectionViewCell.h"

#include <utility>

namespace ostrel {

void ImageCollectionViewCell::setDelegate(std::shared_ptr<ImageCollectionViewCellDelegate> delegate) {
    delegate_ = std::move(delegate);
}

void ImageCollectionViewCell::setImageObject(std::shared_ptr<NSArticleImageObject> item) {
    const bool isAnother = item != imageObject_;
    if (isAnother) endEditing();
    imageObject_ = std::move(item);
    actView()->startAnimating();
    if (!imageObject_) return;
    if (const Dictionary& record = imageObject_->imageDictionary()) {
        showExisting(record, isAnother, Wheel::turnsUntilAnswered);
    } else {
        showNew(imageObject_->image(), imageObject_->text());
    }
}

void ImageCollectionViewCell::remove() {
    if (const auto delegate = delegate_) delegate->removeImageCollectionViewCell(*this);
}

void ImageCollectionViewCell::keepCaption(const std::string& text) {
    if (!imageObject_) return;
    imageObject_->setText(text);
    imageObject_->setTextChanged(true);
}

void ImageCollectionViewCell::captionDidChange() {
    if (const auto delegate = delegate_) delegate->textChangedCollectionViewCell(*this);
}

}  // namespace ostrel
