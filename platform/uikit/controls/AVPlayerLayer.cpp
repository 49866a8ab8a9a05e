#include "platform/uikit/controls/AVPlayerLayer.h"

#include <utility>

namespace ostrel {

AVPlayerLayer::AVPlayerLayer(std::shared_ptr<AVPlayer> player) : player_(std::move(player)) {
    setUserInteractionEnabled(false);
    setBackgroundColor(UIColor::clear());
}

std::shared_ptr<AVPlayerLayer> AVPlayerLayer::playerLayerWithPlayer(std::shared_ptr<AVPlayer> player) {
    return make<AVPlayerLayer>(std::move(player));
}

ViewContent AVPlayerLayer::makeContent() const {
    if (!player_) return {};
    return PlayerContent{.engine = player_->engine()};
}

}  // namespace ostrel
