#pragma once

#include "article/editor/MediaCollectionViewCell.h"
#include "article/media/NSArticleImageObject.h"

namespace ostrel {

class ImageCollectionViewCell;

class ImageCollectionViewCellDelegate {
public:
    virtual ~ImageCollectionViewCellDelegate() = default;
    virtual void removeImageCollectionViewCell(ImageCollectionViewCell&) {}
    /// The caption changed, or was left.
    virtual void textChangedCollectionViewCell(ImageCollectionViewCell&) {}
};

/// The tile of an image.
class ImageCollectionViewCell final : public MediaCollectionViewCell {
public:
    using MediaCollectionViewCell::MediaCollectionViewCell;

    const std::shared_ptr<NSArticleImageObject>& imageObject() const { return imageObject_; }
    void setImageObject(std::shared_ptr<NSArticleImageObject> item);
    const std::shared_ptr<ImageCollectionViewCellDelegate>& delegate() const { return delegate_; }
    /// Held strongly; the strip takes itself out when it closes.
    void setDelegate(std::shared_ptr<ImageCollectionViewCellDelegate> delegate);
    void remove() override;

protected:
    void keepCaption(const std::string& text) override;
    void captionDidChange() override;
    const char* nameKey() const override { return "Image %ld of %ld"; }
    const char* captionedNameKey() const override { return "Image %ld of %ld, caption %@"; }
    const char* removeNameKey() const override { return "Remove image"; }

private:
    std::shared_ptr<NSArticleImageObject> imageObject_;
    std::shared_ptr<ImageCollectionViewCellDelegate> delegate_;
};

}  // namespace ostrel
