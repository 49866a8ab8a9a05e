#include "platform/media/AVPlayer.h"

#include <utility>

namespace ostrel {

namespace {

std::shared_ptr<PlayerFactory>& factoryInUse() {
    static std::shared_ptr<PlayerFactory> factory;
    return factory;
}

}  // namespace

PlayerFactory* PlayerFactory::installed() { return factoryInUse().get(); }

void PlayerFactory::install(std::shared_ptr<PlayerFactory> factory) { factoryInUse() = std::move(factory); }

CMTime AVPlayerItem::duration() const {
    const auto engine = engine_.lock();
    return engine ? engine->duration() : CMTime{};
}

AVPlayer::AVPlayer(std::shared_ptr<AVPlayerItem> item, std::shared_ptr<PlayerEngine> engine)
    : item_(std::move(item)), engine_(std::move(engine)) {
    item_->engine_ = engine_;
}

std::shared_ptr<AVPlayer> AVPlayer::playerWithPlayerItem(std::shared_ptr<AVPlayerItem> item) {
    PlayerFactory* const factory = PlayerFactory::installed();
    if (!factory || !item || !item->asset()) return nullptr;
    auto engine = factory->makePlayer(item->asset()->url());
    return engine ? std::make_shared<AVPlayer>(std::move(item), std::move(engine)) : nullptr;
}

}  // namespace ostrel
