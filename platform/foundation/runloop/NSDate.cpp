#include "platform/foundation/runloop/NSDate.h"

#include "platform/foundation/runloop/Clock.h"

#include <chrono>
#include <cstdint>

namespace ostrel {

namespace {

/// Parses a text from its beginning, one fixed form after the other.
class Reader final {
public:
    explicit Reader(std::string_view text) : rest_(text) {}

    std::optional<int> number(std::size_t digits) {
        if (rest_.size() < digits) return std::nullopt;
        int value = 0;
        for (const char c : rest_.substr(0, digits)) {
            if (c < '0' || c > '9') return std::nullopt;
            value = value * 10 + (c - '0');
        }
        rest_.remove_prefix(digits);
        return value;
    }
    bool oneOf(std::string_view characters) {
        if (rest_.empty() || characters.find(rest_[0]) == std::string_view::npos) return false;
        rest_.remove_prefix(1);
        return true;
    }
    /// A point with 1 to 9 digits; 0 when there is no point.
    std::optional<double> fraction() {
        if (!oneOf(".")) return 0;
        std::int64_t value = 0;
        std::int64_t scale = 1;
        while (scale < 1'000'000'000) {
            const auto digit = number(1);
            if (!digit) break;
            value = value * 10 + *digit;
            scale *= 10;
        }
        if (scale == 1) return std::nullopt;
        return static_cast<double>(value) / static_cast<double>(scale);
    }
    bool isAtEnd() const { return rest_.empty(); }
    char next() const { return rest_.empty() ? '\0' : rest_[0]; }

private:
    std::string_view rest_;
};

/// Minutes east of UTC; absent when the offset is malformed.
std::optional<int> readOffset(Reader& reader) {
    if (reader.isAtEnd() || reader.oneOf("Zz")) return 0;
    const bool isWest = reader.next() == '-';
    if (!reader.oneOf("+-")) return std::nullopt;
    const auto hours = reader.number(2);
    if (!hours || *hours > 23 || !reader.oneOf(":")) return std::nullopt;
    const auto minutes = reader.number(2);
    if (!minutes || *minutes > 59) return std::nullopt;
    const int offset = *hours * 60 + *minutes;
    return isWest ? -offset : offset;
}

constexpr std::int64_t secondsOfDay = 86400;

/// Whether a moment is the midnight at the end of a month, where leap seconds are inserted (ITU-R TF.460).
bool endsMonth(std::int64_t seconds) {
    if (seconds % secondsOfDay != 0) return false;
    const std::chrono::year_month_day date{std::chrono::sys_days(std::chrono::days(seconds / secondsOfDay))};
    return date.day() == std::chrono::day(1);
}

}  // namespace

NSDate NSDate::now() { return Clock::shared().now(); }

std::optional<NSDate> NSDate::fromISO8601(std::string_view text) {
    Reader reader(text);
    const auto year = reader.number(4);
    if (!year || *year == 0 || !reader.oneOf("-")) return std::nullopt;
    const auto month = reader.number(2);
    if (!month || !reader.oneOf("-")) return std::nullopt;
    const auto day = reader.number(2);
    if (!day || !reader.oneOf("Tt ")) return std::nullopt;
    const auto hour = reader.number(2);
    if (!hour || !reader.oneOf(":")) return std::nullopt;
    const auto minute = reader.number(2);
    if (!minute || !reader.oneOf(":")) return std::nullopt;
    const auto second = reader.number(2);
    if (!second) return std::nullopt;
    const auto fraction = reader.fraction();
    if (!fraction) return std::nullopt;
    const auto offset = readOffset(reader);
    if (!offset || !reader.isAtEnd()) return std::nullopt;

    const std::chrono::year_month_day date{std::chrono::year(*year), std::chrono::month(static_cast<unsigned>(*month)),
                                           std::chrono::day(static_cast<unsigned>(*day))};
    if (!date.ok() || *hour > 23 || *minute > 59 || *second > 60) return std::nullopt;
    const std::int64_t days = std::chrono::sys_days(date).time_since_epoch().count();
    const std::int64_t whole = days * secondsOfDay + *hour * 3600 + *minute * 60 + *second - *offset * 60;
    if (*second == 60) {
        if (!endsMonth(whole)) return std::nullopt;
        return NSDate{static_cast<double>(whole)};
    }
    return NSDate{static_cast<double>(whole) + *fraction};
}

}  // namespace ostrel
