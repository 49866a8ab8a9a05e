#pragma once

#include <cstdint>

namespace ostrel {

/// Chooses the frames to keep so that no more than a given number a second remain, whatever their spacing: a clip of 50
/// frames a second keeps three of five for 30. Slower clips keep every frame, also when their spacing varies.
class FrameThinner final {
public:
    /// `ticks`: of the clock a second.
    FrameThinner(std::int64_t ticks, int framesPerSecond) : interval_(ticks / framesPerSecond) {}

    /// Times are ticks and come in rising order.
    bool keeps(std::int64_t time) {
        // A frame that is early by less than this is jitter of the camera, not a faster clip.
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
