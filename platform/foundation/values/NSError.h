#pragma once

#include <optional>
#include <string>

namespace ostrel {

/// Why something failed: an English sentence for the log and the user, and the system's error number where it came from
/// the system (errno), else 0. Absence (`std::nullopt`) is success.
struct NSError {
    std::string localizedDescription;
    int code = 0;
    friend bool operator==(const NSError&, const NSError&) = default;
};

}  // namespace ostrel
