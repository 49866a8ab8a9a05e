#pragma once

#include <cstdint>
#include <string>

namespace ostrel {

/// The signed-in user. The module tests it for presence only; the fields serve hosts.
struct OstrelServerUserObject {
    std::int64_t id = 0;
    std::string name;
};

}  // namespace ostrel
