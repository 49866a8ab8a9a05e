#include "platform/foundation/runloop/SystemRunLoop.h"

#include <algorithm>
#include <cassert>

namespace ostrel {

namespace {

using SteadyClock = std::chrono::steady_clock;

// The state that `isDone` reads may change without a task, so that it is polled at this interval.
constexpr std::chrono::milliseconds longestWait(20);

TaskQueue::Nanoseconds now() { return SteadyClock::now().time_since_epoch() / std::chrono::nanoseconds(1); }

}  // namespace

bool SystemRunLoop::run(const std::function<bool()>& isDone, double seconds) {
    assert(isMainThread());
    const auto end = SteadyClock::now() + std::chrono::nanoseconds(TaskQueue::nanoseconds(seconds));
    for (;;) {
        runTurn();
        if (isDone()) return true;
        const auto present = SteadyClock::now();
        if (present >= end) return false;
        auto until = std::min(end, present + longestWait);
        if (const auto due = tasks_.nextDue()) {
            until = std::min(until, SteadyClock::time_point(std::chrono::nanoseconds(std::max<std::int64_t>(*due, 0))));
        }
        if (until > present) tasks_.waitForTask(until);
    }
}

bool SystemRunLoop::runTurn() {
    assert(isMainThread());
    return tasks_.runTurn(now()) > 0;
}

void SystemRunLoop::perform(Task task) { tasks_.add(now(), std::move(task)); }

std::uint64_t SystemRunLoop::performAfter(double seconds, Task task) {
    return tasks_.add(now() + TaskQueue::nanoseconds(seconds), std::move(task));
}

}  // namespace ostrel
