#pragma once

#include <compare>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// A moment in time: seconds since 1970-01-01T00:00:00Z (UTC without leap seconds), fractions allowed.
struct NSDate {
    double secondsSince1970 = 0;

    /// The current moment of the installed clock.
    static NSDate now();
    /// Seconds from `other` to this moment; negative when this moment is earlier.
    double timeIntervalSinceDate(NSDate other) const { return secondsSince1970 - other.secondsSince1970; }
    friend auto operator<=>(const NSDate&, const NSDate&) = default;

    /// Reads an ISO 8601 / RFC 3339 date and time: "2026-11-21T02:32:38.123Z", with 'T' or a blank between, 0
    /// to 9 digits of fraction, and the offset "+08:00" or "Z" (without an offset: UTC). Absent for any other
    /// text and for a date that does not exist. A leap second (23:59:60 UTC on the last day of a month)
    /// equals the next second, as in POSIX time.
    static std::optional<NSDate> fromISO8601(std::string_view text);
};

/// The user's format of dates and preferred languages. The headless backend installs a fixed locale.
class NSLocale {
public:
    virtual ~NSLocale() = default;
    /// Date and time in the locale's short styles, in the system's time zone.
    virtual std::string shortDateAndTime(NSDate date) const = 0;
    /// Language tags (BCP 47), the most preferred first: {"zh-Hans-CN", "en"}.
    virtual std::vector<std::string> preferredLanguages() const = 0;

    static NSLocale& current();
    /// Called once at start, before other threads run. Without it, or with null, the environment's locale
    /// (LANG and so on) is used.
    static void install(std::shared_ptr<NSLocale> locale);
};

}  // namespace ostrel
