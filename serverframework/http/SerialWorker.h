#pragma once

#include "platform/foundation/runloop/RunLoop.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace ostrel {

/// One thread that runs tasks in the order they came, for what would hold up the main and the network thread. After
/// `stop` a task runs at once on the thread that posts it, so that none is ever lost.
class SerialWorker final {
public:
    SerialWorker();
    ~SerialWorker();
    SerialWorker(const SerialWorker&) = delete;
    SerialWorker& operator=(const SerialWorker&) = delete;

    /// Any thread.
    void post(Task task);
    /// Runs what was posted, then ends the thread.
    void stop();

private:
    void run();

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Task> tasks_;  // guarded by mutex_
    bool stopping_ = false;   // guarded by mutex_
    std::thread thread_;
};

}  // namespace ostrel
