#pragma once

#include <cstdint>
#include <functional>
#include <memory>

namespace ostrel {

using Task = std::function<void()>;

/// The main run loop. Any thread may call `perform`, `performAfter` and `cancel`; tasks run on the main
/// thread.
class RunLoop {
public:
    virtual ~RunLoop() = default;

    /// Runs `task` in a later turn. Tasks run in the order of the calls.
    virtual void perform(Task task) = 0;
    /// Runs `task` once, `seconds` from now (0 or less: the next turn). Returns an id for `cancel`.
    virtual std::uint64_t performAfter(double seconds, Task task) = 0;
    /// Drops a task of `performAfter` that has not begun; unknown ids are ignored.
    virtual void cancel(std::uint64_t id) = 0;
    /// Runs `task` once when the current turn ends, before the loop waits. Main thread.
    virtual void atEndOfTurn(Task task) = 0;
    virtual bool isMainThread() const = 0;

    static RunLoop& main();
    static bool hasMain();
    /// Null removes the installed loop, which drops its waiting tasks when it is destroyed.
    static void installMain(std::shared_ptr<RunLoop> loop);
};

/// A timer on the main run loop. The loop keeps it alive until it has fired (once) or was invalidated
/// (repeating). A repeating timer fires at multiples of its interval from its start; firings missed while the
/// thread was busy are skipped. Main thread.
class NSTimer final : public std::enable_shared_from_this<NSTimer> {
public:
    /// Intervals shorter than 0.0001 seconds are taken as 0.0001.
    static std::shared_ptr<NSTimer> scheduledTimer(double seconds, bool repeats, std::function<void(NSTimer&)> fire);
    void invalidate();
    bool isValid() const { return valid_; }

    NSTimer(double seconds, bool repeats, std::function<void(NSTimer&)> fire);

private:
    void schedule(double delay);
    void fire();

    double seconds_;
    /// The planned time of the next firing, in the clock's monotonic seconds.
    double intended_ = 0;
    bool repeats_;
    bool valid_ = true;
    std::uint64_t pending_ = 0;
    std::function<void(NSTimer&)> fire_;
};

}  // namespace ostrel
