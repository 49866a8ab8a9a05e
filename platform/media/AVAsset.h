#pragma once

#include "platform/media/MediaBackend.h"

namespace ostrel {

/// A media file and the facts it states about itself, opened through the installed media backend when it is made.
/// Calls are made by one thread at a time.
class AVAsset final {
public:
    /// Null when the address leads to no media file, or no backend is installed; `error`, when given, says why.
    static std::shared_ptr<const AVAsset> assetWithURL(const NSURL& url,
                                                       std::optional<NSError>* error = nullptr);

    const NSURL& URL() const { return url_; }
    CMTime duration() const { return file_->duration(); }
    const std::vector<AVAssetTrack>& tracks() const { return file_->tracks(); }
    /// The first track of this kind; null when there is none.
    const AVAssetTrack* firstTrack(AVMediaType type) const;
    /// In the order in which they are to be applied: a later one overrides an earlier one with the same key.
    const std::vector<AVMetadataItem>& metadata() const { return file_->metadata(); }
    const std::shared_ptr<MediaFile>& file() const { return file_; }

    AVAsset(NSURL url, std::shared_ptr<MediaFile> file);

private:
    NSURL url_;
    std::shared_ptr<MediaFile> file_;
};

}  // namespace ostrel
