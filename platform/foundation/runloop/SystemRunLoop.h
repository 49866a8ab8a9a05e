#pragma once

#include "platform/foundation/runloop/TaskQueue.h"

#include <thread>

namespace ostrel {

/// A run loop on real time for programs without a toolkit: command lines, and tests of threads. Its main
/// thread is the one that made it. Tasks run only within `run` and `runTurn`.
class SystemRunLoop final : public RunLoop {
public:
    /// Runs turns until `isDone`, asked after every turn, is true, for at most `seconds`. False after a
    /// time-out.
    bool run(const std::function<bool()>& isDone, double seconds);
    /// Runs the tasks that are due now. True when there were any.
    bool runTurn();

    void perform(Task task) override;
    std::uint64_t performAfter(double seconds, Task task) override;
    void cancel(std::uint64_t id) override { tasks_.cancel(id); }
    void atEndOfTurn(Task task) override { tasks_.addAtEndOfTurn(std::move(task)); }
    bool isMainThread() const override { return std::this_thread::get_id() == thread_; }

private:
    const std::thread::id thread_ = std::this_thread::get_id();
    TaskQueue tasks_;
};

}  // namespace ostrel
