#pragma once

#include "article/editor/MediaCollectionViewCell.h"
#include "article/media/NSArticleVideoObject.h"
#include "platform/uikit/text/UILabel.h"

namespace ostrel {

class VideoCollectionViewCell;
using VideoCollectionViewCellDelegate = MediaItemTileDelegate<VideoCollectionViewCell>;

/// The tile of a video: its first frame and, of a new video, its length.
class VideoCollectionViewCell final : public MediaItemTile<VideoCollectionViewCell, NSArticleVideoObject> {
public:
    using MediaItemTile::MediaItemTile;
    void initialise();

    const std::shared_ptr<NSArticleVideoObject>& videoObject() const { return itemObject(); }
    void setVideoObject(std::shared_ptr<NSArticleVideoObject> item);
    const std::shared_ptr<UILabel>& durationLabel() const { return durationLabel_; }

    /// A playing time in seconds as a clock shows it: "0:42", "2:05", "1:10:00". Seconds that are not finite or reach
    /// 2^63 give "0:00". Kept on purpose, so that lengths look as users know them: the part before the last colon is
    /// rounded and not truncated (90 seconds give "2:30"), minutes after an hour are not padded ("1:2:05"), and
    /// negative seconds keep their sign ("0:0-5").
    static std::string durationString(float seconds);

protected:
    const char* nameKey() const override { return "Video %ld of %ld"; }
    const char* captionedNameKey() const override { return "Video %ld of %ld, caption %@"; }
    const char* removeNameKey() const override { return "Remove video"; }

private:
    std::shared_ptr<UILabel> durationLabel_;
};

}  // namespace ostrel
