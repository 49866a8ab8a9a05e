#pragma once

#include "article/editor/MediaCollectionViewCell.h"
#include "article/media/NSArticleVideoObject.h"
#include "platform/uikit/text/UILabel.h"

namespace ostrel {

class VideoCollectionViewCell;

class VideoCollectionViewCellDelegate {
public:
    virtual ~VideoCollectionViewCellDelegate() = default;
    virtual void removeImageCollectionViewCell(VideoCollectionViewCell&) {}
    /// The caption changed, or was left.
    virtual void textChangedCollectionViewCell(VideoCollectionViewCell&) {}
};

/// The tile of a video: its first frame and, of a clip that is new, its length.
class VideoCollectionViewCell final : public MediaCollectionViewCell {
public:
    using MediaCollectionViewCell::MediaCollectionViewCell;
    void initialise();

    const std::shared_ptr<NSArticleVideoObject>& videoObject() const { return videoObject_; }
    void setVideoObject(std::shared_ptr<NSArticleVideoObject> item);
    const std::shared_ptr<VideoCollectionViewCellDelegate>& delegate() const { return delegate_; }
    /// Held strongly; the strip takes itself out when it closes.
    void setDelegate(std::shared_ptr<VideoCollectionViewCellDelegate> delegate);
    const std::shared_ptr<UILabel>& durationLabel() const { return durationLabel_; }
    void remove() override;

    /// A playing time in seconds as a clock-like text: "0:42", "2:05", "1:10:00". The part before the last colon is
    /// rounded, not truncated (90 seconds read "2:30"); so is required, readers of such texts know them so. The minutes
    /// after an hour are not padded. Negative seconds keep their sign ("0:0-5"); seconds that are not finite or reach
    /// 2^63 read "0:00".
    static std::string durationString(float seconds);

protected:
    void keepCaption(const std::string& text) override;
    void captionDidChange() override;
    const char* nameKey() const override { return "Video %ld of %ld"; }
    const char* captionedNameKey() const override { return "Video %ld of %ld, caption %@"; }
    const char* removeNameKey() const override { return "Remove video"; }

private:
    std::shared_ptr<NSArticleVideoObject> videoObject_;
    std::shared_ptr<VideoCollectionViewCellDelegate> delegate_;
    std::shared_ptr<UILabel> durationLabel_;
};

}  // namespace ostrel
