#include "articleserver/common/ServerText.h"

#include <glib.h>

#include <array>
#include <charconv>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <ctime>
#include <memory>

namespace articleserver {

namespace {

struct FreeGlib {
    void operator()(gchar* text) const { g_free(text); }
};
using GlibText = std::unique_ptr<gchar, FreeGlib>;

constexpr gunichar zeroWidthNonJoiner = 0x200C;
constexpr gunichar zeroWidthJoiner = 0x200D;

template <typename Visit>
void eachCharacter(std::string_view text, Visit visit) {
    const gchar* at = text.data();
    const gchar* end = at + text.size();
    while (at < end) {
        const gchar* next = g_utf8_next_char(at);
        visit(g_utf8_get_char(at), std::string_view(at, static_cast<std::size_t>(next - at)));
        at = next;
    }
}

std::tm utcFields(ServerTime time) {
    // The division rounds down, so that a time before 1970 stays within its second.
    std::time_t seconds = static_cast<std::time_t>(time / 1000 - (time % 1000 < 0 ? 1 : 0));
    std::tm fields{};
    gmtime_r(&seconds, &fields);
    return fields;
}

[[gnu::format(printf, 1, 2)]] std::string formatted(const char* format, ...) {
    std::array<char, 128> buffer{};
    std::va_list values;
    va_start(values, format);
    int length = std::vsnprintf(buffer.data(), buffer.size(), format, values);
    va_end(values);
    return length > 0 ? std::string(buffer.data()) : std::string();
}

}  // namespace

ServerTime systemTime() {
    auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

bool isValidText(std::string_view text) { return g_utf8_validate_len(text.data(), text.size(), nullptr); }

std::size_t characterCount(std::string_view text) {
    return static_cast<std::size_t>(g_utf8_strlen(text.data(), static_cast<gssize>(text.size())));
}

std::string trimmedText(std::string_view text) {
    std::size_t first = text.size();
    std::size_t last = 0;
    eachCharacter(text, [&](gunichar character, std::string_view bytes) {
        if (g_unichar_isspace(character)) return;
        std::size_t offset = static_cast<std::size_t>(bytes.data() - text.data());
        if (first == text.size()) first = offset;
        last = offset + bytes.size();
    });
    return first < last ? std::string(text.substr(first, last - first)) : std::string();
}

bool isShowableName(std::string_view text) {
    bool showable = true;
    eachCharacter(text, [&](gunichar character, std::string_view) {
        switch (g_unichar_type(character)) {
        case G_UNICODE_CONTROL:
        case G_UNICODE_LINE_SEPARATOR:
        case G_UNICODE_PARAGRAPH_SEPARATOR:
        case G_UNICODE_PRIVATE_USE:
        case G_UNICODE_SURROGATE:
        case G_UNICODE_UNASSIGNED: showable = false; break;
        case G_UNICODE_FORMAT:
            if (character != zeroWidthNonJoiner && character != zeroWidthJoiner) showable = false;
            break;
        default: break;
        }
    });
    return showable;
}

std::string nameKey(std::string_view name) {
    GlibText composed(g_utf8_normalize(name.data(), static_cast<gssize>(name.size()), G_NORMALIZE_NFKC));
    if (!composed) return std::string(name);
    GlibText folded(g_utf8_casefold(composed.get(), -1));
    GlibText key(g_utf8_normalize(folded.get(), -1, G_NORMALIZE_NFKC));
    return key ? key.get() : folded.get();
}

std::string nameInitial(std::string_view name) {
    std::string initial;
    bool complete = false;
    eachCharacter(name, [&](gunichar character, std::string_view bytes) {
        if (!initial.empty() && !g_unichar_ismark(character)) complete = true;
        if (!complete) initial += bytes;
    });
    if (initial.empty()) return "?";
    GlibText upper(g_utf8_strup(initial.data(), static_cast<gssize>(initial.size())));
    return upper.get();
}

std::string isoDate(ServerTime time) {
    std::tm fields = utcFields(time);
    int milliseconds = static_cast<int>(((time % 1000) + 1000) % 1000);
    return formatted("%04d-%02d-%02dT%02d:%02d:%02d.%03dZ", fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday,
                     fields.tm_hour, fields.tm_min, fields.tm_sec, milliseconds);
}

std::string httpDate(ServerTime time) {
    static constexpr const char* days[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    static constexpr const char* months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                             "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    std::tm fields = utcFields(time);
    return formatted("%s, %02d %s %04d %02d:%02d:%02d GMT", days[fields.tm_wday], fields.tm_mday, months[fields.tm_mon],
                     fields.tm_year + 1900, fields.tm_hour, fields.tm_min, fields.tm_sec);
}

std::string readableDate(ServerTime time) {
    static constexpr const char* months[] = {"January", "February", "March",     "April",   "May",      "June",
                                             "July",    "August",   "September", "October", "November", "December"};
    std::tm fields = utcFields(time);
    return formatted("%d %s %04d, %02d:%02d UTC", fields.tm_mday, months[fields.tm_mon], fields.tm_year + 1900,
                     fields.tm_hour, fields.tm_min);
}

std::string escapedHtml(std::string_view text) {
    std::string escaped;
    escaped.reserve(text.size() + text.size() / 16);
    for (char character : text) {
        switch (character) {
        case '&': escaped += "&amp;"; break;
        case '<': escaped += "&lt;"; break;
        case '>': escaped += "&gt;"; break;
        case '"': escaped += "&quot;"; break;
        case '\'': escaped += "&#39;"; break;
        default: escaped += character; break;
        }
    }
    return escaped;
}

std::optional<std::int64_t> decimalId(std::string_view text) {
    if (text.empty() || text.front() < '0' || text.front() > '9') return std::nullopt;
    std::int64_t value = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

void logServerError(std::string_view text) {
    std::string line = isoDate(systemTime()) + " ";
    for (char character : text) {
        bool isControl = static_cast<unsigned char>(character) < 0x20 || character == 0x7F;
        line += isControl ? ' ' : character;
    }
    line += '\n';
    // The whole line is one write, so that the lines of several threads do not mix.
    std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace articleserver
