#include "article/editor/ImageCollectionViewCell.h"

#include <utility>

namespace ostrel {

void ImageCollectionViewCell::setImageObject(std::shared_ptr<NSArticleImageObject> item) {
    const bool isAnother = replaceItem(std::move(item));
    actView()->startAnimating();
    const auto& shown = imageObject();
    if (!shown) return;
    if (const Dictionary& record = shown->imageDictionary()) {
        showExisting(record, isAnother, Spinner::stopsWhenAnswered);
    } else {
        showNew(shown->image(), shown->text());
    }
}

}  // namespace ostrel
