#pragma once

#include <cstddef>

namespace ostrel {

/// The title of the Return key of an on-screen keyboard. A hardware keyboard ignores it.
enum class UIReturnKeyType { standard, go, next, search, send, done, continueKey };

/// A part of a text, in UTF-16 units.
struct NSRange {
    std::size_t location = 0, length = 0;
    friend bool operator==(const NSRange&, const NSRange&) = default;
};

}  // namespace ostrel
