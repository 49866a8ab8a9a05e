#pragma once

#include "platform/media/AVURLAsset.h"
#include "platform/media/PlayerEngine.h"

namespace ostrel {

/// One asset as a player plays it. Main thread.
class AVPlayerItem final {
public:
    explicit AVPlayerItem(std::shared_ptr<const AVURLAsset> asset) : asset_(std::move(asset)) {}

    const std::shared_ptr<const AVURLAsset>& asset() const { return asset_; }
    /// Not known while no player has opened it.
    CMTime duration() const;

private:
    friend class AVPlayer;
    std::shared_ptr<const AVURLAsset> asset_;
    std::weak_ptr<const PlayerEngine> engine_;
};

}  // namespace ostrel
