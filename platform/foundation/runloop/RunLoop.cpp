#include "platform/foundation/runloop/RunLoop.h"

#include "platform/foundation/runloop/Clock.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace ostrel {

namespace {

constexpr double shortestInterval = 0.0001;

std::shared_ptr<RunLoop>& installedRunLoop() {
    // Never destroyed, because threads may still post tasks while the process ends.
    static auto& loop = *new std::shared_ptr<RunLoop>();
    return loop;
}

}  // namespace

RunLoop& RunLoop::main() {
    if (!installedRunLoop()) {
        std::fputs("RunLoop::main() was used before RunLoop::installMain().\n", stderr);
        std::abort();
    }
    return *installedRunLoop();
}

bool RunLoop::hasMain() { return installedRunLoop() != nullptr; }

void RunLoop::installMain(std::shared_ptr<RunLoop> loop) {
    // The former loop is destroyed after it has been replaced, because the tasks that it drops may ask for
    // the main loop.
    std::swap(installedRunLoop(), loop);
}

NSTimer::NSTimer(double seconds, bool repeats, std::function<void(NSTimer&)> fire)
    : seconds_(seconds >= shortestInterval ? seconds : shortestInterval), repeats_(repeats), fire_(std::move(fire)) {}

std::shared_ptr<NSTimer> NSTimer::scheduledTimer(double seconds, bool repeats, std::function<void(NSTimer&)> fire) {
    auto timer = std::make_shared<NSTimer>(seconds, repeats, std::move(fire));
    timer->intended_ = Clock::shared().monotonicSeconds() + timer->seconds_;
    timer->schedule(timer->seconds_);
    return timer;
}

void NSTimer::schedule(double delay) {
    assert(RunLoop::main().isMainThread());
    pending_ = RunLoop::main().performAfter(delay, [self = shared_from_this()] { self->fire(); });
}

void NSTimer::fire() {
    if (!valid_) return;
    pending_ = 0;
    if (!repeats_) valid_ = false;
    // Moved out for the call, so that `invalidate` within the call does not destroy the running function.
    auto handler = std::move(fire_);
    if (handler) handler(*this);
    if (!valid_) return;
    fire_ = std::move(handler);

    const double now = Clock::shared().monotonicSeconds();
    intended_ += seconds_;
    if (intended_ <= now) intended_ += seconds_ * std::ceil((now - intended_) / seconds_);
    schedule(std::clamp(intended_ - now, 0.0, seconds_));
}

void NSTimer::invalidate() {
    valid_ = false;
    fire_ = nullptr;
    if (pending_ != 0 && RunLoop::hasMain()) {
        const std::uint64_t id = pending_;
        pending_ = 0;
        // The loop's task may hold the last reference to this timer.
        const auto self = shared_from_this();
        RunLoop::main().cancel(id);
    }
}

}  // namespace ostrel
