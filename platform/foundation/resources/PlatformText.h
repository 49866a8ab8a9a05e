#pragma once

#include <string>
#include <string_view>

namespace ostrel {

/// The platform's own words ("Cancel", "Back", …) in the first preferred language it has: English or Simplified
/// Chinese, else English. The key is the English text; an unknown key is returned as it stands.
std::string platformText(std::string_view key);

}  // namespace ostrel
