#pragma once

#include "article/editor/AddMediaCollectionViewCell.h"
#include "article/editor/UIArticleEditMediaTableViewCell.h"
#include "article/editor/VideoCollectionViewCell.h"
#include "platform/media/AVAssetExportSession.h"

#include <map>
#include <memory>
#include <optional>
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

/// The editor's strip of videos. Owns the ordered items that a save reads. A picked clip is converted into a file of the
/// user's Documents folder while the picker stays on screen, and added when that has ended, however it ended; several may
/// be under way, each is added when it ends. Those under way when the strip goes are cancelled.
class UIArticleEditVideosTableViewCell final : public UIArticleEditMediaTableViewCell,
                                               public VideoCollectionViewCellDelegate,
                                               public AddVideoCollectionViewCellDelegate {
public:
    using UIArticleEditMediaTableViewCell::UIArticleEditMediaTableViewCell;
    ~UIArticleEditVideosTableViewCell() override;
    void initialise();

    /// The height in points that a strip of these items needs.
    static CGFloat heightFor(const std::optional<ArticleVideos>& items, std::int64_t style);

    /// The items in display order; absent until they are set.
    const std::optional<ArticleVideos>& videosArray() const { return videosArray_; }
    /// Before the strip is first shown.
    void setVideosArray(ArticleVideos items) { videosArray_ = std::move(items); }
    /// The records of the existing items that the user removed; absent until the first of these.
    const std::optional<std::vector<Dictionary>>& removedVideosDictionaryArray() const {
        return removedVideosDictionaryArray_;
    }
    const std::shared_ptr<UIArticleEditVideosTableViewCellDelegate>& delegate() const { return delegate_; }
    /// Held strongly; whoever is held by it lets go with `setDelegate(nullptr)`.
    void setDelegate(std::shared_ptr<UIArticleEditVideosTableViewCellDelegate> delegate);

    /// Opens the picker.
    void selectVideo();
    /// Adds an item whose file has been converted, or failed to be: it gets what length and picture there are.
    void addVideoItemWith(const std::shared_ptr<NSArticleVideoObject>& item);
    void close() override;

    void removeImageCollectionViewCell(VideoCollectionViewCell& tile) override;
    void textChangedCollectionViewCell(VideoCollectionViewCell& tile) override;
    void addVideoFromAddVideoCollectionViewCell(AddVideoCollectionViewCell& tile) override;
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
    void conversionDidEnd(const std::shared_ptr<NSArticleVideoObject>& item);
    void cancelConversions();

    /// Under way, by the item that will be added; no export when the clip suits none.
    std::map<std::shared_ptr<NSArticleVideoObject>, std::shared_ptr<AVAssetExportSession>> conversions_;
    std::optional<ArticleVideos> videosArray_;
    std::optional<std::vector<Dictionary>> removedVideosDictionaryArray_;
    std::shared_ptr<UIArticleEditVideosTableViewCellDelegate> delegate_;
};

}  // namespace ostrel
