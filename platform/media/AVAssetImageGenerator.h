#pragma once

#include "platform/media/AVAsset.h"

namespace ostrel {

/// Takes still pictures out of an asset: whole frames as they are encoded, the track's transform not applied. Calls are
/// made by one thread at a time.
class AVAssetImageGenerator final {
public:
    /// Null when there is no asset, or its backend gives no pictures.
    static std::shared_ptr<AVAssetImageGenerator> assetImageGeneratorWithAsset(
        std::shared_ptr<const AVAsset> asset);

    /// The frame shown at `time`; null with the reason in `error`, when given. Decodes on the calling thread.
    std::shared_ptr<const CGImage> copyCGImageAtTime(CMTime time,
                                                     std::optional<NSError>* error = nullptr) const {
        return asset_->file()->copyImage(time, error);
    }

    explicit AVAssetImageGenerator(std::shared_ptr<const AVAsset> asset) : asset_(std::move(asset)) {}

private:
    std::shared_ptr<const AVAsset> asset_;
};

}  // namespace ostrel
