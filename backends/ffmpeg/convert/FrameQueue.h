#pragma once

#include "backends/ffmpeg/file/FfmpegPointers.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>

namespace ostrel {

/// A frame on its way from decoding to encoding, its time in the clock of its kind: `outputTicks` for pictures, samples for
/// sound.
struct QueuedFrame {
    bool isVideo = false;
    FramePointer frame;
};

/// Hands frames from the decoding thread to the encoding one; holds back the former when it is ahead.
class FrameQueue final {
public:
    /// Waits while the queue is full. False when it has been stopped: the frame is dropped.
    bool push(QueuedFrame frame);
    /// No more frames will come.
    void close();
    /// Waits for a frame. None when all have been taken and the queue is closed, or it has been stopped.
    std::optional<QueuedFrame> pop();
    /// Ends the waiting on both sides; frames in the queue are dropped. Any thread.
    void stop();

private:
    /// Pictures are small by now (a third of a megabyte), so this is about ten megabytes at most.
    static constexpr std::size_t capacity = 32;

    std::mutex mutex_;  // guards everything below
    std::condition_variable changed_;
    std::deque<QueuedFrame> frames_;
    bool isClosed_ = false;
    bool isStopped_ = false;
};

}  // namespace ostrel
