#pragma once

#include <cstddef>

namespace ostrel {

/// What the Return key of a keyboard on screen says. The keys of a real keyboard say what they say.
enum class UIReturnKeyType { standard, go, next, search, send, done, continueKey };

/// Part of a text, in UTF-16 units.
struct NSRange {
    std::size_t location = 0, length = 0;
    friend bool operator==(const NSRange&, const NSRange&) = default;
};

}  // namespace ostrel
