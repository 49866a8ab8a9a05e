#pragma once

#include "platform/media/PlayerEngine.h"

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
    void becomeReady(CMTime total);
    /// Has played to the end.
    void finish();

    void play() override;
    void pause() override;
    void seekToTime(CMTime time) override;
    AVPlayerStatus status() const override { return currentStatus; }
    AVPlayerTimeControlStatus timeControlStatus() const override { return control; }
    CMTime duration() const override { return length; }
    CMTime currentTime() const override { return position; }
};

/// Installed as long as it lives.
class ScriptedPlayers final {
public:
    ScriptedPlayers();
    ~ScriptedPlayers();
    ScriptedPlayers(const ScriptedPlayers&) = delete;
    ScriptedPlayers& operator=(const ScriptedPlayers&) = delete;

    bool refuses = false;  ///< whether no player can be made
    std::vector<std::string> urls() const;
    /// Players that exist now.
    std::size_t alive() const;
    std::size_t playing() const;
    /// The player made last; it must be alive.
    ScriptedPlayer& last() const;

private:
    class Factory;
    std::vector<std::weak_ptr<ScriptedPlayer>> made_;
    std::vector<std::string> urls_;
};

}  // namespace ostrel
