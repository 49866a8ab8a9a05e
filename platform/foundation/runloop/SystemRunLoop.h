#pragma once

#include "platform/foundation/runloop/TaskQueue.h"

#include <thread>

namespace ostrel {

/// A run loop on real time for programs without a toolkit: command lines and tests of what runs on threads.
/// Its main thread is the one that made it, and nothing runs outside `run` and `runTurn`.
class SystemRunLoop final : public RunLoop {
public:
    /// Runs until `isDone`, asked after every turn, is true; at most `seconds`. False when the time ran out.
    bool run(const std::function<bool()>& isDone, double seconds);
    /// Runs what is due now, once. True when there was something.
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
