#pragma once

#include "backends/ffmpeg/file/FfmpegPointers.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>

namespace ostrel {

/// A decoded frame that waits for encoding. Its time is in `outputTicks` for pictures and in samples for sound.
struct QueuedFrame {
    bool isVideo = false;
    FramePointer frame;
};

/// Hands frames from the decoding thread to the encoding thread. A full queue blocks the decoding thread.
class FrameQueue final {
public:
    /// Blocks while the queue is full. False when the queue has been stopped; the frame is dropped then.
    bool push(QueuedFrame frame);
    /// Tells the encoding thread that no more frames will come.
    void close();
    /// Blocks until there is a frame. None when the queue is closed and empty, or has been stopped.
    std::optional<QueuedFrame> pop();
    /// Ends blocked calls on both sides and drops the frames in the queue. Any thread.
    void stop();

private:
    /// Frames. A scaled picture takes about a third of a megabyte, so a full queue takes about ten.
    static constexpr std::size_t capacity = 32;

    // Guards the members below.
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<QueuedFrame> frames_;
    bool isClosed_ = false;
    bool isStopped_ = false;
};

}  // namespace ostrel
