#pragma once

#include "platform/foundation/runloop/NSDate.h"

#include <memory>

namespace ostrel {

/// The one source of time, so that tests run minutes in microseconds. Safe from any thread.
class Clock {
public:
    virtual ~Clock() = default;
    virtual NSDate now() const = 0;
    /// Seconds from an arbitrary start; never goes back.
    virtual double monotonicSeconds() const = 0;
    /// Holds the calling thread until this clock has moved on by `seconds`; 0 or less: returns at once.
    virtual void sleep(double seconds);

    static Clock& shared();
    /// Installed once at start, before other threads run; without it, or with null, the system's clock is
    /// used.
    static void install(std::shared_ptr<Clock> clock);
};

}  // namespace ostrel
