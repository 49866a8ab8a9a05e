#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ostrel {

/// `text` with every `from` replaced by `to`, from left to right; inserted text is not searched again. An
/// empty `from` changes nothing.
std::string replacingOccurrences(std::string_view text, std::string_view from, std::string_view to);

/// The number of leading bytes of `text` that are valid UTF-8 (RFC 3629); text.size() when the whole text is
/// valid.
std::size_t validUtf8Prefix(std::string_view text);

/// The decimal digits of `value`, as "%ld" prints them.
inline std::string decimalText(std::int64_t value) { return std::to_string(value); }

/// `format` with its first "%ld" replaced by `value`; unchanged without "%ld". No other directive is
/// interpreted, because a localised text is data.
std::string formatLong(std::string_view format, std::int64_t value);

}  // namespace ostrel
