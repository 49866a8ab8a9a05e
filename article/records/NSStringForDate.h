#pragma once

#include "platform/foundation/runloop/NSDate.h"

#include <string>

namespace ostrel {

/// Tells how long ago something was.
class NSStringForDate final {
public:
    /// "just now" for less than a minute ago and for the future, "%ld min ago" up to 59 minutes, then date and time in
    /// the short styles of the current locale.
    static std::string date(NSDate date);
};

}  // namespace ostrel
