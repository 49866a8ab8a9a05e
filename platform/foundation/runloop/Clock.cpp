#include "platform/foundation/runloop/Clock.h"

#include <chrono>
#include <thread>

namespace ostrel {

namespace {

class SystemClock final : public Clock {
public:
    NSDate now() const override {
        const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
        return {std::chrono::duration<double>(sinceEpoch).count()};
    }
    double monotonicSeconds() const override {
        const auto sinceStart = std::chrono::steady_clock::now().time_since_epoch();
        return std::chrono::duration<double>(sinceStart).count();
    }
};

std::shared_ptr<Clock>& installedClock() {
    // Never destroyed, because threads may still sleep while the process ends.
    static auto& clock = *new std::shared_ptr<Clock>(std::make_shared<SystemClock>());
    return clock;
}

}  // namespace

void Clock::sleep(double seconds) {
    if (seconds > 0) std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
}

Clock& Clock::shared() { return *installedClock(); }

void Clock::install(std::shared_ptr<Clock> clock) {
    installedClock() = clock ? std::move(clock) : std::make_shared<SystemClock>();
}

}  // namespace ostrel
