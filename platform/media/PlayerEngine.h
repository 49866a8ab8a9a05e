#pragma once

#include "platform/media/CMTime.h"

#include <memory>
#include <string>

namespace ostrel {

/// Whether a player plays; the numbers are those of AVFoundation.
enum class AVPlayerTimeControlStatus { paused = 0, waitingToPlayAtSpecifiedRate = 1, playing = 2 };
enum class AVPlayerStatus { unknown = 0, readyToPlay = 1, failed = 2 };

/// Decodes one media file and plays its sound: the part of a player that a backend implements. The
/// constructor opens the file without blocking; the decoder lives until the engine is destroyed. Main thread.
class PlayerEngine {
public:
    virtual ~PlayerEngine() = default;

    /// Continues from the current position; the engine waits by itself while data is missing.
    virtual void play() = 0;
    virtual void pause() = 0;
    /// Moves to `time`, whether playing or paused: clamped to the duration; the beginning when `time` is not
    /// known.
    virtual void seekToTime(CMTime time) = 0;
    /// `readyToPlay` as soon as the first frame or sample is available; `failed` is final.
    virtual AVPlayerStatus status() const = 0;
    /// `paused` before the first `play`, after `pause`, at the end of the file and when the file failed;
    /// waiting or playing from the call of `play` on.
    virtual AVPlayerTimeControlStatus timeControlStatus() const = 0;
    /// Not known (time scale 0) until the file was opened, and for a stream without an end.
    virtual CMTime duration() const = 0;
    /// In the time scale of the duration once that is known; equal to the duration at the end of the file.
    virtual CMTime currentTime() const = 0;
};

/// Makes the engines of a backend; installed with it.
class PlayerFactory {
public:
    virtual ~PlayerFactory() = default;

    /// An engine for the file at `url` (absolute, "file", "http" or "https"); null when none can be made. A
    /// missing file, or one without media, is reported later by the status `failed`.
    virtual std::shared_ptr<PlayerEngine> makePlayer(const std::string& url) = 0;

    /// Null when no factory is installed; then no player can be made.
    static PlayerFactory* installed();
    /// Null removes the factory. Main thread.
    static void install(std::shared_ptr<PlayerFactory> factory);
};

}  // namespace ostrel
