#include "backends/headless/VirtualTime.h"

#include "platform/foundation/runloop/NSThread.h"

#include <algorithm>
#include <cassert>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace ostrel {

namespace {

using RealClock = std::chrono::steady_clock;

constexpr double secondsToFallAsleep = 0.05;
constexpr double secondsAfterWaking = 1;
constexpr double secondsToEnd = 10;
constexpr std::chrono::microseconds pollInterval(50);
constexpr std::chrono::milliseconds longestWait(5);

RealClock::time_point realTimeIn(double seconds) {
    return RealClock::now() + std::chrono::nanoseconds(TaskQueue::nanoseconds(seconds));
}

}  // namespace

NSDate VirtualClock::now() const {
    const std::lock_guard lock(mutex_);
    return {start_.secondsSince1970 + static_cast<double>(elapsed_) * 1e-9};
}

double VirtualClock::monotonicSeconds() const { return static_cast<double>(elapsed()) * 1e-9; }

void VirtualClock::sleep(double seconds) {
    std::unique_lock lock(mutex_);
    const TaskQueue::Nanoseconds wake = elapsed_ + TaskQueue::nanoseconds(seconds);
    if (wake <= elapsed_) return;
    const auto entry = wakes_.insert(wake);
    moved_.wait(lock, [&] { return elapsed_ >= wake || sleepEnded_; });
    // moveTo has already removed the entries of the threads that it wakes.
    if (sleepEnded_ && elapsed_ < wake) wakes_.erase(entry);
}

void VirtualClock::setNow(NSDate date) {
    const std::lock_guard lock(mutex_);
    start_ = {date.secondsSince1970 - static_cast<double>(elapsed_) * 1e-9};
}

TaskQueue::Nanoseconds VirtualClock::elapsed() const {
    const std::lock_guard lock(mutex_);
    return elapsed_;
}

void VirtualClock::moveTo(TaskQueue::Nanoseconds elapsed) {
    const std::lock_guard lock(mutex_);
    elapsed_ = std::max(elapsed_, elapsed);
    // Removed here and not by the sleeping threads, so that they count as awake from now on.
    wakes_.erase(wakes_.begin(), wakes_.upper_bound(elapsed_));
    moved_.notify_all();
}

std::optional<TaskQueue::Nanoseconds> VirtualClock::nextWake() const {
    const std::lock_guard lock(mutex_);
    return wakes_.empty() ? std::nullopt : std::optional(*wakes_.begin());
}

int VirtualClock::sleepingThreads() const {
    const std::lock_guard lock(mutex_);
    return static_cast<int>(wakes_.size());
}

void VirtualClock::endSleep() {
    const std::lock_guard lock(mutex_);
    sleepEnded_ = true;
    moved_.notify_all();
}

bool VirtualRunLoop::runOneTurn() { return runTurn(0) > 0; }

void VirtualRunLoop::runUntilIdle() { runWhileDue(0); }

std::size_t VirtualRunLoop::runTurn(std::size_t ranBefore) {
    assert(isMainThread());
    const std::size_t ran = ranBefore + tasks_.runTurn(clock_->elapsed());
    if (ran > maximumTasks) {
        throw std::runtime_error("The run loop does not come to rest: " + std::to_string(ran) + " tasks ran.");
    }
    return ran;
}

std::size_t VirtualRunLoop::runWhileDue(std::size_t ranBefore) {
    std::size_t ran = ranBefore;
    for (auto due = tasks_.nextDue(); due && *due <= clock_->elapsed(); due = tasks_.nextDue()) ran = runTurn(ran);
    return ran;
}

void VirtualRunLoop::advance(double seconds) {
    const TaskQueue::Nanoseconds target = clock_->elapsed() + TaskQueue::nanoseconds(seconds);
    std::size_t ran = runWhileDue(0);
    // A thread that has just started may be about to sleep. A thread that works for longer is not awaited.
    waitUntilAtMostAwake(0, secondsToFallAsleep);
    for (;;) {
        ran = runWhileDue(ran);
        const auto due = tasks_.nextDue();
        const auto wake = clock_->nextWake();
        if ((!due || *due > target) && (!wake || *wake > target)) break;
        const int awake = threadsAwake();
        clock_->moveTo(due && (!wake || *due < *wake) ? *due : *wake);
        waitUntilAtMostAwake(awake, secondsAfterWaking);
    }
    clock_->moveTo(target);
}

int VirtualRunLoop::threadsAwake() const { return std::max(0, NSThread::runningCount() - clock_->sleepingThreads()); }

void VirtualRunLoop::waitUntilAtMostAwake(int threads, double realSeconds) {
    const auto end = realTimeIn(realSeconds);
    while (threadsAwake() > threads && RealClock::now() < end) {
        runUntilIdle();
        std::this_thread::sleep_for(pollInterval);
    }
}

bool VirtualRunLoop::waitFor(const std::function<bool()>& isDone, double realSeconds) {
    const auto end = realTimeIn(realSeconds);
    for (;;) {
        runUntilIdle();
        if (isDone()) return true;
        const auto present = RealClock::now();
        if (present >= end) return false;
        // The state that `isDone` reads may change without a task.
        tasks_.waitForTask(std::min(end, present + longestWait));
    }
}

void VirtualRunLoop::perform(Task task) { tasks_.add(clock_->elapsed(), std::move(task)); }

std::uint64_t VirtualRunLoop::performAfter(double seconds, Task task) {
    return tasks_.add(clock_->elapsed() + TaskQueue::nanoseconds(seconds), std::move(task));
}

VirtualTime::VirtualTime(NSDate start)
    : clock_(std::make_shared<VirtualClock>(start)), loop_(std::make_shared<VirtualRunLoop>(clock_)) {
    Clock::install(clock_);
    RunLoop::installMain(loop_);
}

VirtualTime::~VirtualTime() {
    clock_->endSleep();
    if (!NSThread::waitForAll(secondsToEnd)) {
        std::fputs("A detached thread outlives the virtual time it ran in.\n", stderr);
        std::abort();
    }
    RunLoop::installMain(nullptr);
    Clock::install(nullptr);
}

}  // namespace ostrel
