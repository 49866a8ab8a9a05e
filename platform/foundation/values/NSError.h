#pragma once

#include <optional>
#include <string>

namespace ostrel {

/// The reason of a failure: an English sentence for the log and the user, and the system's error number
/// (errno) when the system reported it, else 0. Functions that return an optional error mean success by
/// `std::nullopt`.
struct NSError {
    std::string localizedDescription;
    int code = 0;
    friend bool operator==(const NSError&, const NSError&) = default;
};

}  // namespace ostrel
