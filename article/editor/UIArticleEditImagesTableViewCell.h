#pragma once

#include "article/media/NSArticleImageObject.h"
#include "platform/uikit/UITableViewCell.h"

#include <memory>
#include <optional>
#include <string>
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
class UIArticleEditImagesTableViewCell final : public UITableViewCell {
public:
    using UITableViewCell::UITableViewCell;

    /// The items in display order; absent until they are set.
    const std::optional<ArticleImages>& imagesArray() const { return imagesArray_; }
    void setImagesArray(ArticleImages items) { imagesArray_ = std::move(items); }
    /// The records of the existing items that the user removed; absent until the first of these.
    const std::optional<std::vector<Dictionary>>& removedImagesDictionaryArray() const {
        return removedImagesDictionaryArray_;
    }

private:
    std::optional<ArticleImages> imagesArray_;
    std::optional<std::vector<Dictionary>> removedImagesDictionaryArray_;
};

}  // namespace ostrel
