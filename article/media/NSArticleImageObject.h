#pragma once

#include "article/media/ArticleMediaItem.h"
#include "platform/graphics/UIImage.h"

namespace ostrel {

/// One picture of an article under edit.
class NSArticleImageObject final : public ArticleMediaItem {
public:
    /// The picture that the user picked; absent for an existing item.
    const std::shared_ptr<const UIImage>& image() const { return image_; }
    void setImage(std::shared_ptr<const UIImage> image) { image_ = std::move(image); }
    const Dictionary& imageDictionary() const { return record(); }
    void setImageDictionary(Dictionary record) { setRecord(std::move(record)); }

private:
    std::shared_ptr<const UIImage> image_;
};

/// The pictures of an article, in the order in which readers see them.
using ArticleImages = std::vector<std::shared_ptr<NSArticleImageObject>>;

}  // namespace ostrel
