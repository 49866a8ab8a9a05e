#pragma once

#include "platform/foundation/runloop/NSDate.h"

#include <string>

namespace ostrel {

/// Dates as readers of articles see them: how long ago something happened.
class NSStringForDate final {
public:
    /// "just now" for less than a minute ago and for the future, "%ld min ago" up to 59 minutes, and for earlier dates
    /// the date and time in the short styles of the current locale.
    static std::string date(NSDate date);
};

}  // namespace ostrel
