#include "platform/media/AVAsset.h"

namespace ostrel {

AVAsset::AVAsset(NSURL url, std::shared_ptr<MediaFile> file) : url_(std::move(url)), file_(std::move(file)) {}

std::shared_ptr<const AVAsset> AVAsset::assetWithURL(const NSURL& url, std::optional<NSError>* error) {
    const auto backend = MediaBackend::installed();
    if (!backend) {
        if (error) *error = NSError{"No media backend is installed."};
        return nullptr;
    }
    auto file = backend->open(url, error);
    return file ? std::make_shared<const AVAsset>(url, std::move(file)) : nullptr;
}

const AVAssetTrack* AVAsset::firstTrack(AVMediaType type) const {
    for (const AVAssetTrack& track : tracks()) {
        if (track.mediaType == type) return &track;
    }
    return nullptr;
}

}  // namespace ostrel
