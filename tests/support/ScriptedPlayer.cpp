#include "tests/support/ScriptedPlayer.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace ostrel {

void ScriptedPlayer::becomeReady(CMTime total) {
    currentStatus = AVPlayerStatus::readyToPlay;
    length = total;
    position = {0, total.timescale};
    if (control == AVPlayerTimeControlStatus::waitingToPlayAtSpecifiedRate)
        control = AVPlayerTimeControlStatus::playing;
}

void ScriptedPlayer::finish() {
    position = length;
    control = AVPlayerTimeControlStatus::paused;
}

void ScriptedPlayer::play() {
    calls.push_back("play");
    control = currentStatus == AVPlayerStatus::readyToPlay ? AVPlayerTimeControlStatus::playing
                                                           : AVPlayerTimeControlStatus::waitingToPlayAtSpecifiedRate;
}

void ScriptedPlayer::pause() {
    calls.push_back("pause");
    control = AVPlayerTimeControlStatus::paused;
}

void ScriptedPlayer::seekToTime(CMTime time) {
    calls.push_back("seek " + std::to_string(time.value) + "/" + std::to_string(time.timescale));
    position = time;
}

class ScriptedPlayers::Factory final : public PlayerFactory {
public:
    explicit Factory(ScriptedPlayers& owner) : owner_(owner) {}
    std::shared_ptr<PlayerEngine> makePlayer(const std::string& url) override {
        owner_.urls_.push_back(url);
        if (owner_.refuses) return nullptr;
        auto player = std::make_shared<ScriptedPlayer>(url);
        owner_.made_.push_back(player);
        return player;
    }

private:
    ScriptedPlayers& owner_;
};

ScriptedPlayers::ScriptedPlayers() { PlayerFactory::install(std::make_shared<Factory>(*this)); }

ScriptedPlayers::~ScriptedPlayers() { PlayerFactory::install(nullptr); }

std::vector<std::string> ScriptedPlayers::urls() const { return urls_; }

std::size_t ScriptedPlayers::alive() const {
    return static_cast<std::size_t>(std::ranges::count_if(made_, [](const auto& player) { return !player.expired(); }));
}

std::size_t ScriptedPlayers::playing() const {
    return static_cast<std::size_t>(std::ranges::count_if(made_, [](const auto& weak) {
        const auto player = weak.lock();
        return player && player->control != AVPlayerTimeControlStatus::paused;
    }));
}

ScriptedPlayer& ScriptedPlayers::last() const {
    const auto player = made_.empty() ? nullptr : made_.back().lock();
    if (!player) throw std::runtime_error("No player is alive.");
    return *player;
}

}  // namespace ostrel
