#include "serverframework/http/UploadQueue.h"

#include "platform/foundation/resources/PlatformText.h"
#include "platform/foundation/values/Text.h"
#include "serverframework/http/HttpTransfer.h"

#include <algorithm>
#include <utility>

namespace ostrel {

/// One upload, which waits, is prepared and is sent. The queue holds it while it waits, the transport's completion
/// while it is sent, and the caller as long as the caller may cancel it.
class UploadQueue::Upload final : public Transfer, public std::enable_shared_from_this<Upload> {
public:
    Upload(std::weak_ptr<UploadQueue> queue, Order order) : queue_(std::move(queue)), order_(std::move(order)) {}

    void cancel() override {
        std::shared_ptr<UploadQueue> queue;
        {
            const std::lock_guard lock(mutex_);
            if (state_ == State::preparing) isCancelled_ = true;
            if (state_ == State::sent) order_.cancel(number_);
            if (state_ != State::waiting) return;
            state_ = State::over;
            queue = queue_.lock();
        }
        if (queue) queue->remove(shared_from_this());
        order_.refuse(cancelledText);
        order_.body.reset();
    }

    /// Prepares and sends the upload, unless it was cancelled. Calls `ended` once the upload no longer counts as
    /// simultaneous.
    void start(std::uint64_t shownBytes, const Task& ended) {
        {
            const std::lock_guard lock(mutex_);
            if (state_ != State::waiting) return ended();
            state_ = State::preparing;
        }
        std::string error;
        auto prepared = PreparedUpload::prepare(*order_.body, &error);
        order_.body.reset();
        const std::lock_guard lock(mutex_);
        if (!prepared || isCancelled_) {
            state_ = State::over;
            order_.refuse(isCancelled_ ? cancelledText : error);
            return ended();
        }
        ProgressHandler progress;
        if (prepared->fileBytes >= shownBytes) progress = publish(*prepared);
        state_ = State::sent;
        // The mutex stays locked, so that `cancel` on another thread finds the number. A transport that has stopped
        // calls the last argument in here; it calls nothing else.
        number_ = order_.send(std::move(prepared), std::move(progress), [self = shared_from_this(), ended] {
            if (self->progress_) self->progress_->unpublish();
            ended();
        });
    }

private:
    enum class State { waiting, preparing, sent, over };

    ProgressHandler publish(const PreparedUpload& prepared) {
        progress_ = NSProgress::progressWithTotalUnitCount(static_cast<std::int64_t>(prepared.fileBytes));
        progress_->setLocalizedDescription(
            replacingOccurrences(platformText("Uploading \"%@\""), "%@", prepared.title));
        progress_->setCancellationHandler([upload = weak_from_this()] {
            if (const auto self = upload.lock()) self->cancel();
        });
        progress_->publish();
        return [progress = progress_, bytes = static_cast<double>(prepared.fileBytes)](double fraction) {
            progress->setCompletedUnitCount(static_cast<std::int64_t>(fraction * bytes));
        };
    }

    const std::weak_ptr<UploadQueue> queue_;
    Order order_;
    /// Guards the three members that follow.
    std::mutex mutex_;
    State state_ = State::waiting;
    bool isCancelled_ = false;
    /// The transport's number of the request.
    std::uint64_t number_ = 0;
    /// Set before the upload is sent, then only read. Null for a small upload.
    std::shared_ptr<NSProgress> progress_;
};

UploadQueue::~UploadQueue() { stop(); }

std::shared_ptr<Transfer> UploadQueue::add(Order order) {
    auto upload = std::make_shared<Upload>(weak_from_this(), std::move(order));
    bool isLate = false;
    {
        const std::lock_guard lock(mutex_);
        isLate = stopping_;
        if (!isLate) waiting_.push_back(upload);
        while (!isLate && threads_.size() < static_cast<std::size_t>(limits_.makers))
            threads_.emplace_back([this] { run(); });
        changed_.notify_one();
    }
    if (isLate) upload->cancel();
    return upload;
}

void UploadQueue::stop() {
    Uploads left;
    std::vector<std::thread> threads;
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
        left = std::exchange(waiting_, {});
        threads = std::exchange(threads_, {});
        changed_.notify_all();
    }
    for (const auto& upload : left) upload->cancel();
    for (std::thread& thread : threads) thread.join();
}

void UploadQueue::run() {
    std::unique_lock lock(mutex_);
    while (true) {
        changed_.wait(lock, [this] { return stopping_ || (!waiting_.empty() && underWay_ < limits_.simultaneous); });
        if (stopping_) return;
        std::shared_ptr<Upload> upload = std::move(waiting_.front());
        waiting_.pop_front();
        ++underWay_;
        lock.unlock();
        upload->start(limits_.shownBytes, [queue = weak_from_this()] {
            if (const auto self = queue.lock()) self->releaseLane();
        });
        upload.reset();
        lock.lock();
    }
}

void UploadQueue::remove(const std::shared_ptr<Upload>& upload) {
    const std::lock_guard lock(mutex_);
    std::erase(waiting_, upload);
}

void UploadQueue::releaseLane() {
    const std::lock_guard lock(mutex_);
    --underWay_;
    changed_.notify_all();
}

}  // namespace ostrel
