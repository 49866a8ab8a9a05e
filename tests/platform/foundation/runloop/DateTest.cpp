#include "platform/foundation/runloop/NSDate.h"

#include <gtest/gtest.h>

namespace ostrel {
namespace {

TEST(NSDate, ReadsISO8601) {
    struct Case {
        const char* text;
        double seconds;
    };
    const Case cases[] = {
        {"1970-01-01T00:00:00Z", 0},
        {"1969-12-31T23:59:59Z", -1},
        {"2026-11-21T02:32:38.123Z", 1795228358.123},
        {"2026-11-21T02:32:38", 1795228358},
        {"2026-11-21 02:32:38z", 1795228358},
        {"2026-11-21t10:32:38+08:00", 1795228358},
        {"2026-11-20T21:02:38-05:30", 1795228358},
        {"2026-11-21T02:32:38.123456789-00:00", 1795228358.123456789},
        {"2024-02-29T12:00:00Z", 1709208000},
        {"2000-02-29T00:00:00Z", 951782400},
        {"0001-01-01T00:00:00Z", -62135596800},
        {"9999-12-31T23:59:59Z", 253402300799},
        {"2016-12-31T23:59:60Z", 1483228800},
        {"2016-12-31T23:59:60.9Z", 1483228800},
        {"2017-01-01T07:59:60+08:00", 1483228800},
    };
    for (const Case& expected : cases) {
        SCOPED_TRACE(expected.text);
        const auto date = NSDate::fromISO8601(expected.text);
        ASSERT_TRUE(date);
        EXPECT_NEAR(date->secondsSince1970, expected.seconds, 1e-6);
    }
}

TEST(NSDate, RefusesWhatIsNoRealMoment) {
    for (const char* text : {"",
                             "2026-11-21",
                             "2026-11-21T",
                             "2026-11-21T02:32",
                             "2026-11-21T02:32Z",
                             "20261121T023238Z",
                             "2026-11-21T02:32:38.",
                             "2026-11-21T02:32:38.1234567891Z",
                             "2026-11-21T02:32:38,5Z",
                             "2026-11-21T02:32:38+0800",
                             "2026-11-21T02:32:38+8:00",
                             "2026-11-21T02:32:38+08",
                             "2026-11-21T02:32:38+24:00",
                             "2026-11-21T02:32:38+08:60",
                             "2026-11-21T02:32:38Z ",
                             " 2026-11-21T02:32:38Z",
                             "2026-11-21T02:32:38ZZ",
                             "2026-13-01T00:00:00Z",
                             "2026-00-01T00:00:00Z",
                             "2026-11-31T00:00:00Z",
                             "2026-11-00T00:00:00Z",
                             "2025-02-29T00:00:00Z",
                             "1900-02-29T00:00:00Z",
                             "0000-01-01T00:00:00Z",
                             "2026-11-21T24:00:00Z",
                             "2026-11-21T02:60:00Z",
                             "2026-11-21T02:32:61Z",
                             "2026-11-21T02:32:60Z",
                             "2026-11-21T23:59:60Z",
                             "2016-12-31T23:59:60+01:00",
                             "-026-11-21T02:32:38Z",
                             "2026-1a-21T02:32:38Z",
                             "2026/11/21T02:32:38Z",
                             "null",
                             "2026-11-21T 2:32:38Z"}) {
        EXPECT_FALSE(NSDate::fromISO8601(text)) << text;
    }
}

TEST(NSDate, IntervalsAndOrder) {
    const auto earlier = *NSDate::fromISO8601("2026-11-21T02:32:38Z");
    const auto later = *NSDate::fromISO8601("2026-11-21T02:33:08.5Z");
    EXPECT_EQ(later.timeIntervalSinceDate(earlier), 30.5);
    EXPECT_EQ(earlier.timeIntervalSinceDate(later), -30.5);
    EXPECT_LT(earlier, later);
}

class Environment final {
public:
    Environment() {
        for (const char* name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}) unsetenv(name);
    }
    void set(const char* name, const char* value) { setenv(name, value, 1); }
    ~Environment() {
        for (const char* name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}) unsetenv(name);
    }
};

TEST(NSLocale, TakesLanguagesFromTheEnvironment) {
    using Tags = std::vector<std::string>;
    Environment environment;
    EXPECT_EQ(NSLocale::current().preferredLanguages(), (Tags{"en"}));
    environment.set("LANG", "C.UTF-8");
    EXPECT_EQ(NSLocale::current().preferredLanguages(), (Tags{"en"}));
    environment.set("LANG", "zh_CN.UTF-8");
    EXPECT_EQ(NSLocale::current().preferredLanguages(), (Tags{"zh-CN"}));
    environment.set("LANGUAGE", "de:fr_CA:zh_CN");
    EXPECT_EQ(NSLocale::current().preferredLanguages(), (Tags{"de", "fr-CA", "zh-CN"}));
}

TEST(NSLocale, ShortDateShowsTheDayAndTheTime) {
    const std::string text = NSLocale::current().shortDateAndTime({1795228358});
    EXPECT_NE(text.find("21"), std::string::npos) << text;
    EXPECT_NE(text.find(":32"), std::string::npos) << text;
    EXPECT_EQ(NSLocale::current().shortDateAndTime({1e300}), "");
}

}  // namespace
}  // namespace ostrel
