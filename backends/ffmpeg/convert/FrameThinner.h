#pragma once

#include <cstdint>

namespace ostrel {

/// Chooses the frames to keep so that at most a given number per second remain: a clip of 50 frames per second keeps
/// three of five for 30. Slower clips keep every frame, also when the frame rate varies.
class FrameThinner final {
public:
    /// `ticks`: the clock's ticks per second.
    FrameThinner(std::int64_t ticks, int framesPerSecond) : interval_(ticks / framesPerSecond) {}

    /// Whether to keep the frame at `time` (ticks). The times of successive calls rise.
    bool keeps(std::int64_t time) {
        // A frame that is early by at most a quarter of the interval is jitter of the camera, not a higher frame rate.
        if (hasFirst_ && time < due_ - interval_ / 4) return false;
        due_ = hasFirst_ && time <= due_ + interval_ ? due_ + interval_ : time + interval_;
        hasFirst_ = true;
        return true;
    }

private:
    std::int64_t interval_;
    std::int64_t due_ = 0;
    bool hasFirst_ = false;
};

}  // namespace ostrel
