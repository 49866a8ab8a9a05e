#pragma once

#include "article/media/ArticleMediaItem.h"
#include "platform/foundation/runloop/NSDate.h"
#include "platform/graphics/UIImage.h"

namespace ostrel {

/// One video of an article under edit. A new one is a local MP4 file with its first frame and what the picked clip says
/// about itself.
class NSArticleVideoObject final : public ArticleMediaItem {
public:
    /// Absolute path of the local MP4 file that a save uploads.
    const std::optional<std::string>& videoFile() const { return videoFile_; }
    void setVideoFile(std::optional<std::string> path) { videoFile_ = std::move(path); }
    /// Whole seconds.
    float duration() const { return duration_; }
    void setDuration(float seconds) { duration_ = seconds; }
    /// Pixels of the upright picture.
    CGSize videoSize() const { return videoSize_; }
    void setVideoSize(CGSize size) { videoSize_ = size; }
    /// The first frame, upright.
    const std::shared_ptr<const UIImage>& thumbnail() const { return thumbnail_; }
    void setThumbnail(std::shared_ptr<const UIImage> image) { thumbnail_ = std::move(image); }
    const Dictionary& videoDictionary() const { return record(); }
    void setVideoDictionary(Dictionary record) { setRecord(std::move(record)); }

    // What the clip says about its capture; kept for hosts.

    /// The camera's model.
    const std::optional<std::string>& device() const { return device_; }
    void setDevice(std::optional<std::string> model) { device_ = std::move(model); }
    /// The software that recorded the clip.
    const std::optional<std::string>& software() const { return software_; }
    void setSoftware(std::optional<std::string> name) { software_ = std::move(name); }
    /// When the clip was recorded.
    const std::optional<NSDate>& date() const { return date_; }
    void setDate(std::optional<NSDate> date) { date_ = date; }

private:
    std::optional<std::string> videoFile_, device_, software_;
    std::shared_ptr<const UIImage> thumbnail_;
    std::optional<NSDate> date_;
    CGSize videoSize_;
    float duration_ = 0;
};

/// The videos of an article, in the order in which readers see them.
using ArticleVideos = std::vector<std::shared_ptr<NSArticleVideoObject>>;

}  // namespace ostrel
