#pragma once

#include "platform/foundation/runloop/NSDate.h"
#include "platform/foundation/values/Value.h"
#include "platform/graphics/UIImage.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace ostrel {

/// One clip of an article under edit, in the order the user sees them. *New* while it has no record: a local MP4 file with
/// its picture and facts. *Existing* when it has one: then the record is all it carries. Items are compared by identity;
/// setting never validates; absent is an empty pointer, optional or record. Main thread.
class NSArticleVideoObject final {
public:
    /// Absolute path of the local MP4 file to upload.
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
    /// The caption as the user edited it in this pass; absent until the user types.
    const std::optional<std::string>& text() const { return text_; }
    void setText(std::optional<std::string> text) { text_ = std::move(text); }
    /// The server's video record.
    const Dictionary& videoDictionary() const { return videoDictionary_; }
    void setVideoDictionary(Dictionary record) { videoDictionary_ = std::move(record); }

    /// The camera's model, the software that recorded, and when.
    const std::optional<std::string>& device() const { return device_; }
    void setDevice(std::optional<std::string> model) { device_ = std::move(model); }
    const std::optional<std::string>& software() const { return software_; }
    void setSoftware(std::optional<std::string> name) { software_ = std::move(name); }
    const std::optional<NSDate>& date() const { return date_; }
    void setDate(std::optional<NSDate> date) { date_ = date; }
    /// Slices of an ISO 6709 text: "+31.2304", "+121.4737", "+012.345".
    const std::optional<std::string>& latitude() const { return latitude_; }
    void setLatitude(std::optional<std::string> latitude) { latitude_ = std::move(latitude); }
    const std::optional<std::string>& longitude() const { return longitude_; }
    void setLongitude(std::optional<std::string> longitude) { longitude_ = std::move(longitude); }
    const std::optional<std::string>& altitude() const { return altitude_; }
    void setAltitude(std::optional<std::string> altitude) { altitude_ = std::move(altitude); }
    /// The user edited the caption; nothing resets it.
    bool textChanged() const { return textChanged_; }
    void setTextChanged(bool changed) { textChanged_ = changed; }

private:
    std::optional<std::string> videoFile_, text_, device_, software_, latitude_, longitude_, altitude_;
    std::shared_ptr<const UIImage> thumbnail_;
    Dictionary videoDictionary_;
    std::optional<NSDate> date_;
    CGSize videoSize_;
    float duration_ = 0;
    bool textChanged_ = false;
};

}  // namespace ostrel
