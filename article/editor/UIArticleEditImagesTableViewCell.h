#pragma once

#include "article/editor/AddMediaCollectionViewCell.h"
#include "article/editor/ImageCollectionViewCell.h"
#include "article/editor/MediaStrip.h"

#include <memory>
#include <optional>
#include <vector>

namespace ostrel {

class UIArticleEditImagesTableViewCell;

class UIArticleEditImagesTableViewCellDelegate {
public:
    virtual ~UIArticleEditImagesTableViewCellDelegate() = default;
    /// A caption changed, or two items changed places.
    virtual void textAndValueChangedFromArticleEditImagesTableViewCell(UIArticleEditImagesTableViewCell&) {}
    /// An item was added or removed.
    virtual void imageNumberChanged(UIArticleEditImagesTableViewCell&) {}
};

/// The editor's strip of images. Owns the ordered items that a save reads.
class UIArticleEditImagesTableViewCell final
    : public MediaStrip<UIArticleEditImagesTableViewCell, NSArticleImageObject, ImageCollectionViewCell,
                        AddImageCollectionViewCell, UIArticleEditImagesTableViewCellDelegate> {
public:
    using MediaStrip::MediaStrip;

    const std::optional<ArticleImages>& imagesArray() const { return items(); }
    void setImagesArray(ArticleImages images) { setItems(std::move(images)); }
    const std::optional<std::vector<Dictionary>>& removedImagesDictionaryArray() const { return removedRecords(); }

    /// Opens the picker.
    void selectImage();
    /// Call it within a batch update of the collection view.
    void addImageWith(std::shared_ptr<NSArticleImageObject> item);

    void addImageFromAddImageCollectionViewCell(AddImageCollectionViewCell& tile) override;
    void imagePickerControllerDidFinishPickingMediaWithInfo(UIImagePickerController& picker,
                                                            const UIImagePickerMediaInfo& info) override;

protected:
    void show(const std::shared_ptr<NSArticleImageObject>& item, ImageCollectionViewCell& tile) override;
    void tellTextAndValueChanged() override;
    void tellNumberChanged() override;
};

}  // namespace ostrel
