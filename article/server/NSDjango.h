#pragma once

#include "platform/foundation/runloop/NSDate.h"

#include <optional>
#include <string>
#include <string_view>

namespace ostrel {

/// Converter of the server's date texts.
class NSDjangoUTCConvert {
public:
    /// The moment that `text` denotes; absent when it is no date in the server's format.
    static std::optional<NSDate> djangoDateString(std::string_view text);
};

/// Encoder of free text for use inside a query string.
class NSDjangoStringEncoder {
public:
    /// `text` (UTF-8), encoded as the value of a query.
    static std::string encoder(std::string_view text);
};

}  // namespace ostrel
