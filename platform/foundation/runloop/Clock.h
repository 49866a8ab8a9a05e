#pragma once

#include "platform/foundation/runloop/NSDate.h"

#include <memory>

namespace ostrel {

/// The only source of time, so that tests can run minutes in microseconds. Any thread.
class Clock {
public:
    virtual ~Clock() = default;
    virtual NSDate now() const = 0;
    /// Seconds since an arbitrary start; never decreases.
    virtual double monotonicSeconds() const = 0;
    /// Blocks the calling thread until this clock has advanced by `seconds`; 0 or less: returns at once.
    virtual void sleep(double seconds);

    static Clock& shared();
    /// Called once at start, before other threads run. Without it, or with null, the system's clock is used.
    static void install(std::shared_ptr<Clock> clock);
};

}  // namespace ostrel
