#include "articleserver/http/WebConditions.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

namespace articleserver {

namespace {

constexpr std::array<std::string_view, 12> monthNames = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                         "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

std::int64_t secondsOf(ServerTime time) {
    // The division rounds down, as httpDate() does for the header whose value clients send back.
    return time >= 0 ? time / 1000 : (time - 999) / 1000;
}

/// Compares strongly: a weak tag equals no tag (RFC 9110, 8.8.3.2).
bool namesStrongTag(std::string_view list, std::string_view tag) {
    while (!list.empty()) {
        std::size_t end = std::min(list.find(','), list.size());
        std::string piece = trimmedText(list.substr(0, end));
        if (piece == "*" || piece == tag) return true;
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return false;
}

/// Completes a year of two digits. The date lies at most 50 years in the future (RFC 9110, 5.6.7).
std::int64_t fullYear(std::int64_t year) {
    auto today = std::chrono::floor<std::chrono::days>(std::chrono::system_clock::now());
    int thisYear = static_cast<int>(std::chrono::year_month_day(today).year());
    std::int64_t full = thisYear - thisYear % 100 + year;
    return full > thisYear + 50 ? full - 100 : full;
}

/// Parses "02:32:38" into seconds. The last number may be 60, a leap second.
std::optional<std::int64_t> timeOfDay(std::string_view text) {
    if (text.size() != 8 || text[2] != ':' || text[5] != ':') return std::nullopt;
    auto hour = decimalId(text.substr(0, 2));
    auto minute = decimalId(text.substr(3, 2));
    auto second = decimalId(text.substr(6, 2));
    if (!hour || !minute || !second || *hour > 23 || *minute > 59 || *second > 60) return std::nullopt;
    return (*hour * 60 + *minute) * 60 + *second;
}

}  // namespace

std::optional<std::int64_t> httpDateSeconds(std::string_view text) {
    std::optional<std::int64_t> day;
    std::optional<std::int64_t> year;
    std::optional<std::int64_t> time;
    unsigned month = 0;
    bool isFirst = true;
    while (!text.empty()) {
        std::size_t end = std::min(text.find_first_of(" -"), text.size());
        std::string_view piece = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (piece.empty()) continue;
        bool isWeekday = std::exchange(isFirst, false);
        bool isNumber = piece.find_first_not_of("0123456789") == std::string_view::npos;
        if (isWeekday || piece == "GMT") continue;
        if (piece.find(':') != std::string_view::npos) {
            time = timeOfDay(piece);
            if (!time) return std::nullopt;
        } else if (isNumber && !day && piece.size() <= 2) {
            day = decimalId(piece);
        } else if (isNumber && !year && (piece.size() == 2 || piece.size() == 4)) {
            year = piece.size() == 2 ? fullYear(*decimalId(piece)) : *decimalId(piece);
        } else if (auto name = std::find(monthNames.begin(), monthNames.end(), piece);
                   name != monthNames.end() && month == 0) {
            month = static_cast<unsigned>(name - monthNames.begin()) + 1;
        } else {
            return std::nullopt;
        }
    }
    if (!day || !year || !time) return std::nullopt;
    std::chrono::year_month_day date(std::chrono::year(static_cast<int>(*year)), std::chrono::month(month),
                                     std::chrono::day(static_cast<unsigned>(*day)));
    if (!date.ok()) return std::nullopt;
    return std::chrono::sys_days(date).time_since_epoch().count() * std::int64_t{86400} + *time;
}

WebCondition conditionOf(const WebRequest& request, const WebValidators& validators) {
    const std::int64_t modified = secondsOf(validators.modified);
    if (auto tags = request.header("if-match"); !tags.empty()) {
        if (!namesStrongTag(tags, validators.entityTag)) return WebCondition::fails;
    } else if (auto limit = httpDateSeconds(request.header("if-unmodified-since")); limit && modified > *limit) {
        return WebCondition::fails;
    }
    if (auto tags = request.header("if-none-match"); !tags.empty()) {
        return matchesEntityTag(tags, validators.entityTag) ? WebCondition::notModified : WebCondition::holds;
    }
    auto since = httpDateSeconds(request.header("if-modified-since"));
    return since && modified <= *since ? WebCondition::notModified : WebCondition::holds;
}

WebRange wantedRange(const WebRequest& request, const WebValidators& validators, std::uint64_t size, ServerTime now) {
    const WebRange whole{RangeKind::whole, 0, size};
    if (request.method != "GET") return whole;
    std::string_view condition = request.header("if-range");
    if (!condition.empty() && condition != validators.entityTag) {
        const std::int64_t modified = secondsOf(validators.modified);
        if (httpDateSeconds(condition) != modified || secondsOf(now) <= modified) return whole;
    }
    return parseRange(request.header("range"), size);
}

}  // namespace articleserver
