#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace ostrel {

/// Writes one line to the log. Line breaks within the message are written as "\n". Any thread.
void logLine(std::string_view line);

/// Receives every line in place of standard error. The sink is called on any thread, one call at a time.
/// Lines that it logs itself go to standard error. The sink must not call `setLogSink`. `setLogSink` returns the
/// former sink; an empty function restores standard error.
using LogSink = std::function<void(std::string_view)>;
LogSink setLogSink(LogSink sink);

namespace detail {
inline std::string logText(std::string_view text) { return std::string(text); }
inline std::string logText(const std::string& text) { return text; }
inline std::string logText(const char* text) { return text ? text : "(null)"; }
inline std::string logText(const std::optional<std::string>& text) { return text ? *text : "(null)"; }
std::string fillPlaceholders(std::string_view format, const std::string* arguments, std::size_t count);
}  // namespace detail

/// Logs `format` with each "%@" replaced by the next argument; an absent text is written as "(null)".
template <class... Arguments>
void NSLog(std::string_view format, const Arguments&... arguments) {
    if constexpr (sizeof...(Arguments) == 0) {
        logLine(format);
    } else {
        const std::string texts[] = {detail::logText(arguments)...};
        logLine(detail::fillPlaceholders(format, texts, sizeof...(Arguments)));
    }
}

}  // namespace ostrel
