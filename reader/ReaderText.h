#pragma once

#include <string>
#include <string_view>

namespace ostrel {

/// The host's own texts in the user's language: English (the key itself) or Simplified Chinese.
std::string readerText(std::string_view key);

}  // namespace ostrel
