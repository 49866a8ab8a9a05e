#pragma once

#include "platform/foundation/runloop/Clock.h"
#include "platform/foundation/runloop/TaskQueue.h"

#include <condition_variable>
#include <mutex>
#include <set>
#include <thread>

namespace ostrel {

/// A clock that advances only by `moveTo`. Threads that sleep by this clock wake when it has advanced far
/// enough. Any thread.
class VirtualClock final : public Clock {
public:
    explicit VirtualClock(NSDate start) : start_(start) {}

    NSDate now() const override;
    /// Starts at 0.
    double monotonicSeconds() const override;
    void sleep(double seconds) override;

    /// Sets the calendar time; timers and sleeping threads are not affected.
    void setNow(NSDate date);
    TaskQueue::Nanoseconds elapsed() const;
    /// Advances to `elapsed`; an earlier time is ignored.
    void moveTo(TaskQueue::Nanoseconds elapsed);
    /// The time at which the next sleeping thread wakes; absent when no thread sleeps.
    std::optional<TaskQueue::Nanoseconds> nextWake() const;
    int sleepingThreads() const;
    /// Wakes all sleeping threads; from now on `sleep` returns at once.
    void endSleep();

private:
    mutable std::mutex mutex_;  // guards all members below
    std::condition_variable moved_;
    NSDate start_;
    TaskQueue::Nanoseconds elapsed_ = 0;
    std::multiset<TaskQueue::Nanoseconds> wakes_;
    bool sleepEnded_ = false;
};

/// A run loop on virtual time: tasks run and time advances only by the operations below. Its main thread is
/// the one that made it. An endless chain of tasks ends in a std::runtime_error after `maximumTasks`.
class VirtualRunLoop final : public RunLoop {
public:
    static constexpr std::size_t maximumTasks = 1'000'000;

    explicit VirtualRunLoop(std::shared_ptr<VirtualClock> clock) : clock_(std::move(clock)) {}

    /// Runs the tasks that are due now. True when there were any.
    bool runOneTurn();
    /// Runs turns until no task is due now.
    void runUntilIdle();
    /// Advances time by `seconds`, from one task or waking thread to the next, and runs the tasks that become
    /// due. Waits up to a second of real time until a thread of NSThread that woke sleeps again or ends.
    void advance(double seconds);
    /// Runs the tasks that are due now until `isDone`, to wait for the work of real threads; at most
    /// `realSeconds`. False after a time-out.
    bool waitFor(const std::function<bool()>& isDone, double realSeconds = 10);

    void perform(Task task) override;
    std::uint64_t performAfter(double seconds, Task task) override;
    void cancel(std::uint64_t id) override { tasks_.cancel(id); }
    void atEndOfTurn(Task task) override { tasks_.addAtEndOfTurn(std::move(task)); }
    bool isMainThread() const override { return std::this_thread::get_id() == thread_; }

private:
    std::size_t runTurn(std::size_t ranBefore);
    std::size_t runWhileDue(std::size_t ranBefore);
    void waitUntilAtMostAwake(int threads, double realSeconds);
    int threadsAwake() const;

    const std::thread::id thread_ = std::this_thread::get_id();
    const std::shared_ptr<VirtualClock> clock_;
    TaskQueue tasks_;
};

/// Installs a virtual clock and a virtual main run loop as long as this object lives. The destructor wakes
/// and awaits detached threads, and drops waiting tasks.
class VirtualTime final {
public:
    explicit VirtualTime(NSDate start = {1'800'000'000});
    ~VirtualTime();
    VirtualTime(const VirtualTime&) = delete;
    VirtualTime& operator=(const VirtualTime&) = delete;

    VirtualClock& clock() { return *clock_; }
    VirtualRunLoop& loop() { return *loop_; }

private:
    std::shared_ptr<VirtualClock> clock_;
    std::shared_ptr<VirtualRunLoop> loop_;
};

}  // namespace ostrel
