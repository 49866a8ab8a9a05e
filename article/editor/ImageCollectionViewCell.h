#pragma once

#include "article/editor/MediaCollectionViewCell.h"
#include "article/media/NSArticleImageObject.h"

namespace ostrel {

class ImageCollectionViewCell;
using ImageCollectionViewCellDelegate = MediaItemTileDelegate<ImageCollectionViewCell>;

/// The tile of an image.
class ImageCollectionViewCell final : public MediaItemTile<ImageCollectionViewCell, NSArticleImageObject> {
public:
    using MediaItemTile::MediaItemTile;

    const std::shared_ptr<NSArticleImageObject>& imageObject() const { return itemObject(); }
    void setImageObject(std::shared_ptr<NSArticleImageObject> item);

protected:
    const char* nameKey() const override { return "Image %ld of %ld"; }
    const char* captionedNameKey() const override { return "Image %ld of %ld, caption %@"; }
    const char* removeNameKey() const override { return "Remove image"; }
};

}  // namespace ostrel
