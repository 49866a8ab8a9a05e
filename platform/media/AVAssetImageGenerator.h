#pragma once

#include "platform/media/AVAsset.h"

namespace ostrel {

/// Extracts still pictures from an asset: whole frames as they are encoded, without the track's transform.
/// One thread at a time.
class AVAssetImageGenerator final {
public:
    /// Null without an asset, and when the backend cannot extract pictures of its file.
    static std::shared_ptr<AVAssetImageGenerator> assetImageGeneratorWithAsset(std::shared_ptr<const AVAsset> asset);

    /// The frame that is shown at `time`; null with the reason in `error`, when given. Decodes on the calling
    /// thread.
    std::shared_ptr<const CGImage> copyCGImageAtTime(CMTime time, std::optional<NSError>* error = nullptr) const {
        return asset_->file()->copyImage(time, error);
    }

    explicit AVAssetImageGenerator(std::shared_ptr<const AVAsset> asset) : asset_(std::move(asset)) {}

private:
    std::shared_ptr<const AVAsset> asset_;
};

}  // namespace ostrel
