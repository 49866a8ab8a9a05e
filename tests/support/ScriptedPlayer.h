#pragma once

#include "platform/media/PlayerEngine.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace ostrel {

/// A player of the module's tests: it goes where the test puts it, and writes down what it was told.
class ScriptedPlayer final : public PlayerEngine {
public:
    explicit ScriptedPlayer(std::string address) : url(std::move(address)) {}

    const std::string url;
    std::vector<std::string> calls;  ///< "play", "pause", "seek <value>/<time scale>"
    AVPlayerStatus currentStatus = AVPlayerStatus::unknown;
    AVPlayerTimeControlStatus control = AVPlayerTimeControlStatus::paused;
    CMTime length, position;

    /// Has opened a file of `total`, and begins to play when it was told to.
    void becomeReady(CMTime total) {
        currentStatus = AVPlayerStatus::readyToPlay;
        length = total;
        position = {0, total.timescale};
        if (control == AVPlayerTimeControlStatus::waitingToPlayAtSpecifiedRate)
            control = AVPlayerTimeControlStatus::playing;
    }
    /// Has played to the end.
    void finish() {
        position = length;
        control = AVPlayerTimeControlStatus::paused;
    }

    void play() override {
        calls.push_back("play");
        control = currentStatus == AVPlayerStatus::readyToPlay
                      ? AVPlayerTimeControlStatus::playing
                      : AVPlayerTimeControlStatus::waitingToPlayAtSpecifiedRate;
    }
    void pause() override {
        calls.push_back("pause");
        control = AVPlayerTimeControlStatus::paused;
    }
    void seekToTime(CMTime time) override {
        calls.push_back("seek " + std::to_string(time.value) + "/" + std::to_string(time.timescale));
        position = time;
    }
    AVPlayerStatus status() const override { return currentStatus; }
    AVPlayerTimeControlStatus timeControlStatus() const override { return control; }
    CMTime duration() const override { return length; }
    CMTime currentTime() const override { return position; }
};

/// Makes the players as long as it lives.
class ScriptedPlayers final : public PlayerFactory {
public:
    // The pointer owns nothing: the test owns this object.
    ScriptedPlayers() { install(std::shared_ptr<PlayerFactory>(std::shared_ptr<void>(), this)); }
    ~ScriptedPlayers() override { install(nullptr); }
    ScriptedPlayers(const ScriptedPlayers&) = delete;
    ScriptedPlayers& operator=(const ScriptedPlayers&) = delete;

    bool refuses = false;  ///< whether no player can be made
    std::vector<std::string> urls() const { return urls_; }
    /// Players that exist now.
    std::size_t alive() const {
        return static_cast<std::size_t>(
            std::ranges::count_if(made_, [](const auto& player) { return !player.expired(); }));
    }
    std::size_t playing() const {
        return static_cast<std::size_t>(std::ranges::count_if(made_, [](const auto& weak) {
            const auto player = weak.lock();
            return player && player->control != AVPlayerTimeControlStatus::paused;
        }));
    }
    /// The player made last. Throws std::bad_weak_ptr unless it is alive.
    ScriptedPlayer& last() const { return *std::shared_ptr<ScriptedPlayer>(made_.at(made_.size() - 1)); }

    std::shared_ptr<PlayerEngine> makePlayer(const std::string& url) override {
        urls_.push_back(url);
        if (refuses) return nullptr;
        auto player = std::make_shared<ScriptedPlayer>(url);
        made_.push_back(player);
        return player;
    }

private:
    std::vector<std::weak_ptr<ScriptedPlayer>> made_;
    std::vector<std::string> urls_;
};

}  // namespace ostrel
