#pragma once

#include "article/editor/AddMediaCollectionViewCell.h"
#include "article/editor/MediaStrip.h"
#include "article/editor/VideoCollectionViewCell.h"
#include "platform/media/AVAssetExportSession.h"

#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace ostrel {

class UIArticleEditVideosTableViewCell;

class UIArticleEditVideosTableViewCellDelegate {
public:
    virtual ~UIArticleEditVideosTableViewCellDelegate() = default;
    /// A caption changed, or two items changed places.
    virtual void textAndValueChangedFromArticleEditVideosTableViewCell(UIArticleEditVideosTableViewCell&) {}
    /// An item was added or removed.
    virtual void videoNumberChanged(UIArticleEditVideosTableViewCell&) {}
};

/// The editor's strip of videos. Owns the ordered items that a save reads. The strip converts a picked clip into a file
/// of the user's Documents folder while the picker stays on screen, and adds an item when the conversion has ended,
/// whether it succeeded or failed. Several conversions may run at the same time; closing the strip cancels them.
class UIArticleEditVideosTableViewCell final
    : public MediaStrip<UIArticleEditVideosTableViewCell, NSArticleVideoObject, VideoCollectionViewCell,
                        AddVideoCollectionViewCell, UIArticleEditVideosTableViewCellDelegate> {
public:
    using MediaStrip::MediaStrip;
    ~UIArticleEditVideosTableViewCell() override;

    const std::optional<ArticleVideos>& videosArray() const { return items(); }
    void setVideosArray(ArticleVideos videos) { setItems(std::move(videos)); }
    const std::optional<std::vector<Dictionary>>& removedVideosDictionaryArray() const { return removedRecords(); }

    /// Opens the picker.
    void selectVideo();
    /// Adds an item whose clip was converted, or could not be: length and first frame are read from the item's file,
    /// and stay empty when the file cannot be read.
    void addVideoItemWith(const std::shared_ptr<NSArticleVideoObject>& item);
    void close() override;

    void addVideoFromAddVideoCollectionViewCell(AddVideoCollectionViewCell& tile) override;
    void imagePickerControllerDidFinishPickingMediaWithInfo(UIImagePickerController& picker,
                                                            const UIImagePickerMediaInfo& info) override;

protected:
    void show(const std::shared_ptr<NSArticleVideoObject>& item, VideoCollectionViewCell& tile) override;
    void tellTextAndValueChanged() override;
    void tellNumberChanged() override;

private:
    void conversionDidEnd(const std::shared_ptr<NSArticleVideoObject>& item);
    void cancelConversions();

    /// The running export of each item that will be added; null when no preset suits the clip.
    std::map<std::shared_ptr<NSArticleVideoObject>, std::shared_ptr<AVAssetExportSession>> conversions_;
};

}  // namespace ostrel
