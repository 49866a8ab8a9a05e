#pragma once

#include <cstdint>

namespace ostrel {

/// A moment or duration of media time: `value` / `timescale` seconds. A time scale of 0 means that the time
/// is not known.
struct CMTime {
    std::int64_t value = 0;
    std::int32_t timescale = 0;

    bool isKnown() const { return timescale > 0; }
    /// 0 when not known.
    double seconds() const { return isKnown() ? static_cast<double>(value) / timescale : 0; }
    /// Whole seconds without the fraction; 0 when not known.
    std::int64_t wholeSeconds() const { return isKnown() ? value / timescale : 0; }
    /// Compares value and time scale: equal moments in different time scales are not equal.
    friend bool operator==(const CMTime&, const CMTime&) = default;
};

constexpr CMTime CMTimeMake(std::int64_t value, std::int32_t timescale) { return {value, timescale}; }

}  // namespace ostrel
