#pragma once

#include <string>
#include <string_view>

namespace ostrel {

/// The text of the reader's own screens for `key` in the user's language: English, which is the key itself, or
/// Simplified Chinese. A key without a translation is returned as it is. Any thread.
std::string readerText(std::string_view key);

}  // namespace ostrel
