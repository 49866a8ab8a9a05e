#pragma once

#include <cstdint>
#include <functional>
#include <memory>

namespace ostrel {

using Task = std::function<void()>;

/// The main run loop. `perform` and `performAfter` may be called from any thread; tasks run on the main
/// thread.
class RunLoop {
public:
    virtual ~RunLoop() = default;

    /// Runs `task` in a later turn, in the order of the calls.
    virtual void perform(Task task) = 0;
    /// Runs `task` once, `seconds` from now (0 or less: the next turn). Returns an id for `cancel`.
    virtual std::uint64_t performAfter(double seconds, Task task) = 0;
    /// Forgets a task of `performAfter` that has not begun; unknown ids are ignored.
    virtual void cancel(std::uint64_t id) = 0;
    /// Runs `task` once when the current turn ends, before the loop waits; main thread only.
    virtual void atEndOfTurn(Task task) = 0;
    virtual bool isMainThread() const = 0;

    static RunLoop& main();
    static bool hasMain();
    /// Null takes the loop out; its waiting tasks are then dropped with it.
    static void installMain(std::shared_ptr<RunLoop> loop);
};

/// A timer on the main run loop. It is kept alive by the loop until it fired (once) or is invalidated
/// (repeating). Main thread only. A repeating timer keeps to its first raster; firings missed while the
/// thread was busy are left out.
class NSTimer final : public std::enable_shared_from_this<NSTimer> {
public:
    /// `seconds` is at least 0.0001; shorter intervals are taken as that.
    static std::shared_ptr<NSTimer> scheduledTimer(double seconds, bool repeats,
                                                   std::function<void(NSTimer&)> fire);
    void invalidate();
    bool isValid() const { return valid_; }

    NSTimer(double seconds, bool repeats, std::function<void(NSTimer&)> fire);

private:
    void schedule(double delay);
    void fire();

    double seconds_;
    /// The moment it should fire next, by the clock's monotonic seconds.
    double intended_ = 0;
    bool repeats_;
    bool valid_ = true;
    std::uint64_t pending_ = 0;
    std::function<void(NSTimer&)> fire_;
};

}  // namespace ostrel
