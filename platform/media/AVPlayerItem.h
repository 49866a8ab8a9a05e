#pragma once

#include "platform/media/AVURLAsset.h"
#include "platform/media/PlayerEngine.h"

namespace ostrel {

/// One asset in a player. Main thread.
class AVPlayerItem final {
public:
    explicit AVPlayerItem(std::shared_ptr<const AVURLAsset> asset) : asset_(std::move(asset)) {}

    const std::shared_ptr<const AVURLAsset>& asset() const { return asset_; }
    /// Not known (time scale 0) until a player has opened the asset.
    CMTime duration() const;

private:
    friend class AVPlayer;
    std::shared_ptr<const AVURLAsset> asset_;
    std::weak_ptr<const PlayerEngine> engine_;
};

}  // namespace ostrel
