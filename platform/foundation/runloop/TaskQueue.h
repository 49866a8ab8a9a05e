#pragma once

#include "platform/foundation/runloop/RunLoop.h"

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace ostrel {

/// The tasks of a run loop, in the order of their times and, at equal times, of the calls. Times are
/// nanoseconds of whatever clock the loop goes by. `add`, `cancel` and the waiting may be called from any
/// thread, turns are run by the loop's own.
class TaskQueue final {
public:
    using Nanoseconds = std::int64_t;
    /// Saturates: an interval beyond 200 years is as good as never. Less than 0 or no number: 0.
    static Nanoseconds nanoseconds(double seconds);

    ~TaskQueue();

    /// Returns an id for `cancel`, never 0.
    std::uint64_t add(Nanoseconds due, Task task);
    void cancel(std::uint64_t id);
    void addAtEndOfTurn(Task task);

    /// Runs the tasks due at `now` that were there when the turn began, then those for the end of the turn.
    /// Returns how many tasks that were.
    std::size_t runTurn(Nanoseconds now);
    /// The time of the next task; the smallest there is when only tasks for the end of the turn wait.
    std::optional<Nanoseconds> nextDue() const;
    /// Waits until a task has been added since the last turn began, at most until `end`.
    void waitForTask(std::chrono::steady_clock::time_point end);

private:
    using Key = std::pair<Nanoseconds, std::uint64_t>;
    bool runNext(Nanoseconds now, std::uint64_t firstOfNextTurn);
    std::size_t runEndOfTurn();

    mutable std::mutex mutex_;  // guards everything below
    std::condition_variable added_;
    std::map<Key, Task> tasks_;
    std::map<std::uint64_t, Nanoseconds> dueOf_;
    std::vector<Task> endOfTurn_;
    std::uint64_t nextId_ = 1;
    bool hasNew_ = false;
};

}  // namespace ostrel
