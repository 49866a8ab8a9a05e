#pragma once

#include "platform/media/CMTime.h"

#include <memory>
#include <string>

namespace ostrel {

/// Whether a player moves; the numbers are those of AVFoundation.
enum class AVPlayerTimeControlStatus { paused = 0, waitingToPlayAtSpecifiedRate = 1, playing = 2 };
enum class AVPlayerStatus { unknown = 0, readyToPlay = 1, failed = 2 };

/// What decodes and sounds one media file: the part of a player that a backend implements. It opens the file when it is
/// made, without blocking, and keeps its decoder until it is destroyed. Main thread.
class PlayerEngine {
public:
    virtual ~PlayerEngine() = default;

    /// Goes on from the present position; waits by itself while data are missing.
    virtual void play() = 0;
    virtual void pause() = 0;
    /// Moves to `time` (0 to the duration; beyond it: the end; not known: the beginning), playing or not.
    virtual void seekToTime(CMTime time) = 0;
    /// `readyToPlay` from the moment that the first frame or sample can be given; `failed` for good.
    virtual AVPlayerStatus status() const = 0;
    /// `paused` before the first `play`, after `pause`, at the end of the file, and when the file failed; from the call
    /// of `play` on waiting or playing.
    virtual AVPlayerTimeControlStatus timeControlStatus() const = 0;
    /// Not known (time scale 0) until the file was opened, and for streams without an end.
    virtual CMTime duration() const = 0;
    /// In the time scale of the duration once that is known, and with its value when played to the end.
    virtual CMTime currentTime() const = 0;
};

/// Makes the engines of a backend; installed with it.
class PlayerFactory {
public:
    virtual ~PlayerFactory() = default;

    /// An engine for the file at `url` (absolute, "file", "http" or "https"); null when none can be made. A file that is
    /// missing or no media shows later, as `failed`.
    virtual std::shared_ptr<PlayerEngine> makePlayer(const std::string& url) = 0;

    /// The factory in use; null when there is none: no player can be made.
    static PlayerFactory* installed();
    /// Null takes it out. Main thread.
    static void install(std::shared_ptr<PlayerFactory> factory);
};

}  // namespace ostrel
