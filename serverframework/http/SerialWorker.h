#pragma once

#include "platform/foundation/runloop/RunLoop.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace ostrel {

/// One thread that runs tasks in the order in which they were posted, for work that would block the main or the network
/// thread. After `stop` a task runs at once on the thread that posts it, so that no task is lost.
class SerialWorker final {
public:
    SerialWorker();
    ~SerialWorker();
    SerialWorker(const SerialWorker&) = delete;
    SerialWorker& operator=(const SerialWorker&) = delete;

    /// Any thread.
    void post(Task task);
    /// Runs the tasks that were posted, then ends the thread.
    void stop();

private:
    void run();

    /// Guards the members up to the thread.
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Task> tasks_;
    bool stopping_ = false;
    std::thread thread_;
};

}  // namespace ostrel
