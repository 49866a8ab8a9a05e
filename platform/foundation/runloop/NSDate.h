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

    /// The current moment, from the installed clock.
    static NSDate now();
    /// Seconds from `other` to this moment; negative when this one is earlier.
    double timeIntervalSinceDate(NSDate other) const { return secondsSince1970 - other.secondsSince1970; }
    friend auto operator<=>(const NSDate&, const NSDate&) = default;

    /// Reads an ISO 8601 / RFC 3339 date and time: "2026-11-21T02:32:38.123Z", offset "+08:00" or "Z" (none:
    /// UTC), 'T' or a blank between, 0 to 9 digits of fraction. None when it is anything else or no real
    /// date. A leap second (23:59:60 UTC on the last day of a month) is the moment after it, as in POSIX
    /// time.
    static std::optional<NSDate> fromISO8601(std::string_view text);
};

/// Dates and language as the user's system has them. The headless backend installs a fixed one.
class NSLocale {
public:
    virtual ~NSLocale() = default;
    /// Date and time in the short styles of the current locale, in the system time zone.
    virtual std::string shortDateAndTime(NSDate date) const = 0;
    /// Language tags (BCP 47), most wanted first: {"zh-Hans-CN", "en"}.
    virtual std::vector<std::string> preferredLanguages() const = 0;

    static NSLocale& current();
    /// Installed once at start, before other threads run; without it, or with null, the environment's (LANG
    /// and so on).
    static void install(std::shared_ptr<NSLocale> locale);
};

}  // namespace ostrel
