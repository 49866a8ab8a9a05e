#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace articleserver {

/// Milliseconds since 1970-01-01T00:00:00Z. The whole server counts time in this unit.
using ServerTime = std::int64_t;

ServerTime systemTime();

/// True when the bytes are UTF-8 (RFC 3629) without NUL.
bool isValidText(std::string_view text);

/// The number of code points. The text must be valid UTF-8.
std::size_t characterCount(std::string_view text);

/// The text without the white space (Unicode) at its two ends.
std::string trimmedText(std::string_view text);

/// False for a name that looks like another name or breaks a line of text: a name with a control character, a
/// line or paragraph separator, a private or unassigned character, or a format character. The zero-width
/// joiner and non-joiner are allowed, because scripts and emoji need them.
bool isShowableName(std::string_view text);

/// The key by which two names are compared: the name in Unicode NFKC with its case folded.
std::string nameKey(std::string_view name);

/// The first letter of the name with its combining marks, in upper case; "?" for an empty name.
std::string nameInitial(std::string_view name);

/// Formats a time as "2026-11-21T02:32:38.123Z" (ISO 8601).
std::string isoDate(ServerTime time);

/// Formats a time as "Sat, 21 Nov 2026 02:32:38 GMT" (RFC 9110, IMF-fixdate).
std::string httpDate(ServerTime time);

/// Formats a time as "21 November 2026, 02:32 UTC".
std::string readableDate(ServerTime time);

/// Escapes a text for HTML, both between tags and inside quoted attributes.
std::string escapedHtml(std::string_view text);

/// The number that the decimal digits of a text write, 0 to 2^63 - 1; absent for any other text.
std::optional<std::int64_t> decimalId(std::string_view text);

/// Writes one line with the time to stderr and replaces control characters by blanks. Callers pass no
/// secrets.
void logServerError(std::string_view text);

}  // namespace articleserver
