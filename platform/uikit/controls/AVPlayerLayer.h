#pragma once

#include "platform/media/AVPlayer.h"
#include "platform/uikit/view/UIView.h"

namespace ostrel {

/// Shows the frames of a player, aspect-fit, over a clear background; nothing before the first frame. Takes
/// no touches. This layer is a view: a superview gets it by `addSubview`. Keeps the player alive.
class AVPlayerLayer final : public UIView {
public:
    static std::shared_ptr<AVPlayerLayer> playerLayerWithPlayer(std::shared_ptr<AVPlayer> player);
    explicit AVPlayerLayer(std::shared_ptr<AVPlayer> player);

    const std::shared_ptr<AVPlayer>& player() const { return player_; }

protected:
    ViewContent makeContent() const override;

private:
    std::shared_ptr<AVPlayer> player_;
};

}  // namespace ostrel
