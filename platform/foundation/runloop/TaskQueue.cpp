#include "platform/foundation/runloop/TaskQueue.h"

#include <cmath>
#include <limits>

namespace ostrel {

namespace {

// Tasks for the end of a turn may add more of them; a chain longer than this continues in the next turn.
constexpr int roundsAtEndOfTurn = 1000;

}  // namespace

TaskQueue::Nanoseconds TaskQueue::nanoseconds(double seconds) {
    constexpr double longest = 200.0 * 366 * 86400;
    if (!(seconds > 0)) return 0;
    return std::llround((seconds < longest ? seconds : longest) * 1e9);
}

TaskQueue::~TaskQueue() {
    // The destruction of a task may cancel others: an object that it holds may call `cancel`.
    const auto tasks = std::exchange(tasks_, {});
    const auto endOfTurn = std::exchange(endOfTurn_, {});
}

std::uint64_t TaskQueue::add(Nanoseconds due, Task task) {
    const std::lock_guard lock(mutex_);
    const std::uint64_t id = nextId_++;
    tasks_.emplace(Key(due, id), std::move(task));
    dueOf_.emplace(id, due);
    hasNew_ = true;
    added_.notify_all();
    return id;
}

void TaskQueue::cancel(std::uint64_t id) {
    Task dropped;  // destroyed after the lock is released
    const std::lock_guard lock(mutex_);
    const auto due = dueOf_.find(id);
    if (due == dueOf_.end()) return;
    const auto found = tasks_.find(Key(due->second, id));
    dueOf_.erase(due);
    if (found == tasks_.end()) return;
    dropped = std::move(found->second);
    tasks_.erase(found);
}

void TaskQueue::addAtEndOfTurn(Task task) {
    const std::lock_guard lock(mutex_);
    endOfTurn_.push_back(std::move(task));
}

std::size_t TaskQueue::runTurn(Nanoseconds now) {
    std::uint64_t firstOfNextTurn;
    {
        const std::lock_guard lock(mutex_);
        firstOfNextTurn = nextId_;
        hasNew_ = false;
    }
    std::size_t ran = 0;
    while (runNext(now, firstOfNextTurn)) ++ran;
    return ran + runEndOfTurn();
}

bool TaskQueue::runNext(Nanoseconds now, std::uint64_t firstOfNextTurn) {
    Task task;
    {
        const std::lock_guard lock(mutex_);
        auto next = tasks_.begin();
        // Tasks added during this turn are skipped; they may be due earlier than older tasks.
        while (next != tasks_.end() && next->first.first <= now && next->first.second >= firstOfNextTurn) ++next;
        if (next == tasks_.end() || next->first.first > now) return false;
        task = std::move(next->second);
        dueOf_.erase(next->first.second);
        tasks_.erase(next);
    }
    task();
    return true;
}

std::size_t TaskQueue::runEndOfTurn() {
    std::size_t ran = 0;
    for (int round = 0; round < roundsAtEndOfTurn; ++round) {
        std::vector<Task> tasks;
        {
            const std::lock_guard lock(mutex_);
            tasks.swap(endOfTurn_);
        }
        if (tasks.empty()) break;
        for (Task& task : tasks) std::exchange(task, nullptr)();
        ran += tasks.size();
    }
    return ran;
}

std::optional<TaskQueue::Nanoseconds> TaskQueue::nextDue() const {
    const std::lock_guard lock(mutex_);
    if (!endOfTurn_.empty()) return std::numeric_limits<Nanoseconds>::min();
    if (tasks_.empty()) return std::nullopt;
    return tasks_.begin()->first.first;
}

void TaskQueue::waitForTask(std::chrono::steady_clock::time_point end) {
    std::unique_lock lock(mutex_);
    added_.wait_until(lock, end, [&] { return hasNew_; });
}

}  // namespace ostrel
