#pragma once

#include <cstdint>

namespace ostrel {

/// A moment or length of media time as the rational `value` / `timescale` seconds. A time scale of 0: not known.
struct CMTime {
    std::int64_t value = 0;
    std::int32_t timescale = 0;

    bool isKnown() const { return timescale > 0; }
    /// 0 when not known.
    double seconds() const { return isKnown() ? static_cast<double>(value) / timescale : 0; }
    /// Whole seconds, the fraction dropped; 0 when not known.
    std::int64_t wholeSeconds() const { return isKnown() ? value / timescale : 0; }
    /// The same value and the same time scale; equal moments in different scales differ.
    friend bool operator==(const CMTime&, const CMTime&) = default;
};

constexpr CMTime CMTimeMake(std::int64_t value, std::int32_t timescale) { return {value, timescale}; }

}  // namespace ostrel
