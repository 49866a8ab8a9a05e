#pragma once

#include <string>
#include <string_view>

namespace ostrel {

/// The platform's own words ("Cancel", "Back", …) in the first preferred language that is English or
/// Simplified Chinese, else in English. The key is the English text; an unknown key is returned unchanged.
std::string platformText(std::string_view key);

}  // namespace ostrel
