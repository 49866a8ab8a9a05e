#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace articleserver {

/// Milliseconds since 1970-01-01T00:00:00Z, the time unit of the whole server.
using ServerTime = std::int64_t;

ServerTime systemTime();

/// True when the bytes are UTF-8 (RFC 3629) without NUL.
bool isValidText(std::string_view text);

/// Number of code points of valid UTF-8.
std::size_t characterCount(std::string_view text);

/// Without white space (Unicode) at either end.
std::string trimmedText(std::string_view text);

/// True when a name shows as itself: no control, line or paragraph separator, private or unassigned
/// character, and no format character except the joiners that scripts and emoji need.
bool isShowableName(std::string_view text);

/// What two names are compared by: compatibility-composed and case-folded (Unicode NFKC, full folding).
std::string nameKey(std::string_view name);

/// The first letter with its marks, upper case; "?" for an empty name.
std::string nameInitial(std::string_view name);

/// "2026-11-21T02:32:38.123Z".
std::string isoDate(ServerTime time);

/// "Sat, 21 Nov 2026 02:32:38 GMT" (RFC 9110, IMF-fixdate).
std::string httpDate(ServerTime time);

/// "21 November 2026, 02:32 UTC".
std::string readableDate(ServerTime time);

/// Safe between tags and inside quoted attributes.
std::string escapedHtml(std::string_view text);

/// Digits only, 0 to 2^63 - 1; absent for anything else.
std::optional<std::int64_t> decimalId(std::string_view text);

/// One line on stderr with the time; control characters are replaced. Callers pass no secrets.
void logServerError(std::string_view text);

}  // namespace articleserver
