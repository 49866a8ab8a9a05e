#pragma once

#include "article/editor/AddMediaCollectionViewCell.h"
#include "article/editor/ImageCollectionViewCell.h"
#include "article/editor/UIArticleEditMediaTableViewCell.h"

#include <memory>
#include <optional>
#include <vector>

namespace ostrel {

class UIArticleEditImagesTableViewCell;

using ArticleImages = std::vector<std::shared_ptr<NSArticleImageObject>>;

class UIArticleEditImagesTableViewCellDelegate {
public:
    virtual ~UIArticleEditImagesTableViewCellDelegate() = default;
    /// A caption changed, or two items changed places.
    virtual void textAndValueChangedFromArticleEditImagesTableViewCell(UIArticleEditImagesTableViewCell&) {}
    /// An item was added or removed.
    virtual void imageNumberChanged(UIArticleEditImagesTableViewCell&) {}
};

/// The editor's strip of images. Owns the ordered items that a save reads.
class UIArticleEditImagesTableViewCell final : public UIArticleEditMediaTableViewCell,
                                               public ImageCollectionViewCellDelegate,
                                               public AddImageCollectionViewCellDelegate {
public:
    using UIArticleEditMediaTableViewCell::UIArticleEditMediaTableViewCell;
    void initialise();

    /// The height in points that a strip of these items needs.
    static CGFloat heightFor(const std::optional<ArticleImages>& items, std::int64_t style);

    /// The items in display order; absent until they are set.
    const std::optional<ArticleImages>& imagesArray() const { return imagesArray_; }
    /// Before the strip is first shown.
    void setImagesArray(ArticleImages items) { imagesArray_ = std::move(items); }
    /// The records of the existing items that the user removed; absent until the first of these.
    const std::optional<std::vector<Dictionary>>& removedImagesDictionaryArray() const {
        return removedImagesDictionaryArray_;
    }
    const std::shared_ptr<UIArticleEditImagesTableViewCellDelegate>& delegate() const { return delegate_; }
    /// Held strongly; whoever is held by it lets go with `setDelegate(nullptr)`.
    void setDelegate(std::shared_ptr<UIArticleEditImagesTableViewCellDelegate> delegate);

    /// Opens the picker.
    void selectImage();
    /// To be called within a batch update of the collection view.
    void addImageWith(std::shared_ptr<NSArticleImageObject> item);

    void removeImageCollectionViewCell(ImageCollectionViewCell& tile) override;
    void textChangedCollectionViewCell(ImageCollectionViewCell& tile) override;
    void addImageFromAddImageCollectionViewCell(AddImageCollectionViewCell& tile) override;
    void imagePickerControllerDidFinishPickingMediaWithInfo(UIImagePickerController& picker,
                                                            const UIImagePickerMediaInfo& info) override;

protected:
    std::optional<std::size_t> itemCount() const override;
    std::shared_ptr<UICollectionViewCell> addImageCellWithIndexPath(NSIndexPath path) override;
    std::shared_ptr<MediaCollectionViewCell> itemTile(NSIndexPath path) override;
    void showItem(MediaCollectionViewCell& tile, std::size_t index) override;
    void swapItems(std::size_t one, std::size_t other) override;
    void eraseItem(std::size_t index) override;
    void willRemoveItemOf(MediaCollectionViewCell& tile) override;
    void tellTextAndValueChanged() override;
    void tellNumberChanged() override;
    void releaseTile(UICollectionViewCell& tile) override;

private:
    std::optional<ArticleImages> imagesArray_;
    std::optional<std::vector<Dictionary>> removedImagesDictionaryArray_;
    std::shared_ptr<UIArticleEditImagesTableViewCellDelegate> delegate_;
};

}  // namespace ostrel
