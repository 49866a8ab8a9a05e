#pragma once

#include "platform/media/AVPlayerItem.h"

namespace ostrel {

/// Plays one item, with sound, by an engine of the installed `PlayerFactory`. An `AVPlayerLayer` shows the
/// frames. The release of the player ends playback and frees the decoder. Main thread.
class AVPlayer final {
public:
    /// Null when `item` is null, has no asset, or no engine can be made for it.
    static std::shared_ptr<AVPlayer> playerWithPlayerItem(std::shared_ptr<AVPlayerItem> item);

    void play() { engine_->play(); }
    void pause() { engine_->pause(); }
    void seekToTime(CMTime time) { engine_->seekToTime(time); }
    AVPlayerTimeControlStatus timeControlStatus() const { return engine_->timeControlStatus(); }
    AVPlayerStatus status() const { return engine_->status(); }
    const std::shared_ptr<AVPlayerItem>& currentItem() const { return item_; }
    CMTime currentTime() const { return engine_->currentTime(); }
    /// The engine, whose frames the backend draws.
    const std::shared_ptr<PlayerEngine>& engine() const { return engine_; }

    AVPlayer(std::shared_ptr<AVPlayerItem> item, std::shared_ptr<PlayerEngine> engine);

private:
    std::shared_ptr<AVPlayerItem> item_;
    std::shared_ptr<PlayerEngine> engine_;
};

}  // namespace ostrel
