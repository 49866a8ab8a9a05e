#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>

namespace ostrel {

/// A row of a section, both counted from 0.
struct NSIndexPath {
    std::int64_t section = 0;
    std::int64_t row = 0;
    friend auto operator<=>(const NSIndexPath&, const NSIndexPath&) = default;
};

}  // namespace ostrel
