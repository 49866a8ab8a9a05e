#include "backends/ffmpeg/convert/FrameQueue.h"

namespace ostrel {

bool FrameQueue::push(QueuedFrame frame) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return isStopped_ || frames_.size() < capacity; });
    if (isStopped_) return false;
    frames_.push_back(std::move(frame));
    lock.unlock();
    changed_.notify_all();
    return true;
}

void FrameQueue::close() {
    {
        const std::lock_guard lock(mutex_);
        isClosed_ = true;
    }
    changed_.notify_all();
}

std::optional<QueuedFrame> FrameQueue::pop() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return isStopped_ || isClosed_ || !frames_.empty(); });
    if (isStopped_ || frames_.empty()) return std::nullopt;
    QueuedFrame frame = std::move(frames_.front());
    frames_.pop_front();
    lock.unlock();
    changed_.notify_all();
    return frame;
}

void FrameQueue::stop() {
    std::deque<QueuedFrame> dropped;
    {
        const std::lock_guard lock(mutex_);
        isStopped_ = true;
        dropped.swap(frames_);
    }
    changed_.notify_all();
}

}  // namespace ostrel
