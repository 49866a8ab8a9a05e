#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace ostrel::detail {

/// The length of the decimal number at the start of `text`: an optional sign, digits with an optional
/// fraction, an optional exponent. 0 when there is no number. Wider than JSON's grammar: "+1", "01" and ".5"
/// are numbers here.
std::size_t leadingNumberLength(std::string_view text);

/// True for exactly the numbers of RFC 8259, section 6.
bool isJsonNumber(std::string_view text);

/// The double nearest to `number`, a text whose whole length is its leadingNumberLength. Infinite beyond the
/// range of doubles, 0 below the smallest double. Independent of the process's locale.
double doubleOfText(std::string_view number);

/// The integer at the start of `text`, after blanks, clamped to 64 bits; 0 when there is none.
std::int64_t leadingInteger(std::string_view text);

/// The number at the start of `text`, after blanks, clamped to finite doubles; 0 when there is none.
double leadingNumber(std::string_view text);

/// The shortest decimal text that reads back as the same finite double, in the format of ECMA-262: with an
/// exponent only below 1e-6 and from 1e21 on.
std::string shortestText(double number);

/// Like `shortestText`, for JSON: a number beyond 64-bit integers gets a form that does not look like an
/// integer.
std::string jsonText(double number);

}  // namespace ostrel::detail
