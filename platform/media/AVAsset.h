#pragma once

#include "platform/media/MediaBackend.h"

namespace ostrel {

/// A media file with its tracks, duration and metadata. The installed media backend opens the file when the
/// asset is made. One thread at a time.
class AVAsset final {
public:
    /// Null with the reason in `error`, when given, if the address leads to no media file or no backend is
    /// installed.
    static std::shared_ptr<const AVAsset> assetWithURL(const NSURL& url, std::optional<NSError>* error = nullptr);

    const NSURL& URL() const { return url_; }
    CMTime duration() const { return file_->duration(); }
    const std::vector<AVAssetTrack>& tracks() const { return file_->tracks(); }
    /// The first track of this type; null when the file has none.
    const AVAssetTrack* firstTrack(AVMediaType type) const;
    /// In the order in which the items apply: a later item overrides an earlier one with the same key.
    const std::vector<AVMetadataItem>& metadata() const { return file_->metadata(); }
    const std::shared_ptr<MediaFile>& file() const { return file_; }

    AVAsset(NSURL url, std::shared_ptr<MediaFile> file);

private:
    NSURL url_;
    std::shared_ptr<MediaFile> file_;
};

}  // namespace ostrel
