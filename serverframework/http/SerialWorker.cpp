#include "serverframework/http/SerialWorker.h"

#include <utility>

namespace ostrel {

SerialWorker::SerialWorker() : thread_([this] { run(); }) {}

SerialWorker::~SerialWorker() { stop(); }

void SerialWorker::post(Task task) {
    {
        const std::lock_guard lock(mutex_);
        if (!stopping_) {
            tasks_.push_back(std::move(task));
            changed_.notify_one();
            return;
        }
    }
    task();
}

void SerialWorker::stop() {
    {
        const std::lock_guard lock(mutex_);
        if (stopping_) return;
        stopping_ = true;
        changed_.notify_one();
    }
    thread_.join();
}

void SerialWorker::run() {
    std::unique_lock lock(mutex_);
    while (true) {
        changed_.wait(lock, [this] { return stopping_ || !tasks_.empty(); });
        if (tasks_.empty()) return;
        {
            const Task task = std::exchange(tasks_.front(), nullptr);
            tasks_.pop_front();
            lock.unlock();
            task();
        }
        // The task and all that it held are destroyed before the mutex is locked again: freeing memory can take long.
        lock.lock();
    }
}

}  // namespace ostrel
