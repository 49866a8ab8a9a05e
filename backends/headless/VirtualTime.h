#pragma once

#include "platform/foundation/runloop/Clock.h"
#include "platform/foundation/runloop/TaskQueue.h"

#include <condition_variable>
#include <mutex>
#include <set>
#include <thread>

namespace ostrel {

/// A clock that stands still until it is told to move. Threads that sleep by it wake when it has moved far
/// enough. Any thread.
class VirtualClock final : public Clock {
public:
    explicit VirtualClock(NSDate start) : start_(start) {}

    NSDate now() const override;
    /// Begins at 0.
    double monotonicSeconds() const override;
    void sleep(double seconds) override;

    /// Sets the calendar; timers and sleeping threads do not notice.
    void setNow(NSDate date);
    TaskQueue::Nanoseconds elapsed() const;
    /// Moves on to `elapsed`; never goes back.
    void moveTo(TaskQueue::Nanoseconds elapsed);
    /// When the next sleeping thread wakes.
    std::optional<TaskQueue::Nanoseconds> nextWake() const;
    int sleepingThreads() const;
    /// Wakes all who sleep, and lets nobody sleep again.
    void endSleep();

private:
    mutable std::mutex mutex_;  // guards everything below
    std::condition_variable moved_;
    NSDate start_;
    TaskQueue::Nanoseconds elapsed_ = 0;
    std::multiset<TaskQueue::Nanoseconds> wakes_;
    bool sleepEnded_ = false;
};

/// A run loop on virtual time: nothing runs, and no time passes, but by the operations here. Its main thread
/// is the one that made it. Endless chains of tasks end in a std::runtime_error after `maximumTasks`.
class VirtualRunLoop final : public RunLoop {
public:
    static constexpr std::size_t maximumTasks = 1'000'000;

    explicit VirtualRunLoop(std::shared_ptr<VirtualClock> clock) : clock_(std::move(clock)) {}

    /// Runs what is due at the present time, once. True when there was something.
    bool runOneTurn();
    /// Runs turns until nothing is due at the present time.
    void runUntilIdle();
    /// Moves time on by `seconds`, from one task or waking thread to the next, and runs everything that
    /// becomes due. A thread of NSThread that wakes is given up to a second of real time to sleep again or to
    /// end.
    void advance(double seconds);
    /// Runs everything due at the present time until `isDone`, for work of real threads; at most
    /// `realSeconds`. False when the time ran out.
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

/// Installs a virtual clock and a virtual main run loop as long as it lives. At its end, detached threads are
/// woken and awaited, and tasks that wait are dropped.
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
