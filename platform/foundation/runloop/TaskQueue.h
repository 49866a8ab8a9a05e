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

/// The tasks of a run loop, in the order of their due times and, at equal times, of the calls. Times are
/// nanoseconds of the loop's clock. Any thread may call all operations except `runTurn`, which belongs to the
/// loop's own thread.
class TaskQueue final {
public:
    using Nanoseconds = std::int64_t;
    /// Clamps to 0 and about 200 years; NaN is taken as 0.
    static Nanoseconds nanoseconds(double seconds);

    ~TaskQueue();

    /// Returns an id for `cancel`, never 0.
    std::uint64_t add(Nanoseconds due, Task task);
    void cancel(std::uint64_t id);
    void addAtEndOfTurn(Task task);

    /// Runs the tasks due at `now` that were added before this turn, then the tasks for the end of the turn.
    /// Returns the number of tasks run.
    std::size_t runTurn(Nanoseconds now);
    /// The due time of the next task; the smallest value when only tasks for the end of the turn wait; absent
    /// without tasks.
    std::optional<Nanoseconds> nextDue() const;
    /// Blocks until a task has been added since the last turn began, but not beyond `end`.
    void waitForTask(std::chrono::steady_clock::time_point end);

private:
    using Key = std::pair<Nanoseconds, std::uint64_t>;
    bool runNext(Nanoseconds now, std::uint64_t firstOfNextTurn);
    std::size_t runEndOfTurn();

    mutable std::mutex mutex_;  // guards all members below
    std::condition_variable added_;
    std::map<Key, Task> tasks_;
    std::map<std::uint64_t, Nanoseconds> dueOf_;
    std::vector<Task> endOfTurn_;
    std::uint64_t nextId_ = 1;
    bool hasNew_ = false;
};

}  // namespace ostrel
