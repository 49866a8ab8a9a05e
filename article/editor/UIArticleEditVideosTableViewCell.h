#pragma once

#include "article/media/NSArticleVideoObject.h"
#include "platform/uikit/UITableViewCell.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ostrel {

class UIArticleEditVideosTableViewCell;

using ArticleVideos = std::vector<std::shared_ptr<NSArticleVideoObject>>;

class UIArticleEditVideosTableViewCellDelegate {
public:
    virtual ~UIArticleEditVideosTableViewCellDelegate() = default;
    /// A caption changed, or two items changed places.
    virtual void textAndValueChangedFromArticleEditVideosTableViewCell(UIArticleEditVideosTableViewCell&) {}
    /// An item was added or removed.
    virtual void videoNumberChanged(UIArticleEditVideosTableViewCell&) {}
};

/// The editor's strip of videos. Owns the ordered items that a save reads.
class UIArticleEditVideosTableViewCell final : public UITableViewCell {
public:
    using UITableViewCell::UITableViewCell;

    /// The items in display order; absent until they are set.
    const std::optional<ArticleVideos>& videosArray() const { return videosArray_; }
    void setVideosArray(ArticleVideos items) { videosArray_ = std::move(items); }
    /// The records of the existing items that the user removed; absent until the first of these.
    const std::optional<std::vector<Dictionary>>& removedVideosDictionaryArray() const {
        return removedVideosDictionaryArray_;
    }

private:
    std::optional<ArticleVideos> videosArray_;
    std::optional<std::vector<Dictionary>> removedVideosDictionaryArray_;
};

}  // namespace ostrel
