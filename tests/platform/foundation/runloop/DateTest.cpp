#include "platform/foundation/runloop/NSDate.h"

#include <gtest/gtest.h>

#include <cmath>

namespace ostrel {
namespace {

TEST(NSDate, ReadsISO8601) {
    const std::tuple<const char*, double> cases[] = {
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
    for (const auto& [text, seconds] : cases)
        EXPECT_NEAR(NSDate::fromISO8601(text).value_or(NSDate{NAN}).secondsSince1970, seconds, 1e-6) << text;
}

TEST(NSDate, RejectsTextsThatAreNoMoment) {
    // Each text differs from the valid 2026-11-21T02:32:38Z in one part.
    std::vector<std::string> texts = {
        "", "null", "2026-11-21", "2026-11-21T", "20261121T023238Z", "2016-12-31T23:59:60+01:00"};
    for (const char* date : {"2026-13-01", "2026-00-01", "2026-11-31", "2026-11-00", "2025-02-29", "1900-02-29",
                             "0000-01-01", "-026-11-21", "2026-1a-21", "2026/11/21", " 2026-11-21"})
        texts.push_back(date + std::string("T02:32:38Z"));
    for (const char* time : {"02:32", "02:32:38.", "02:32:38.1234567891", "02:32:38,5", "24:00:00", "02:60:00",
                             "02:32:61", "02:32:60", "23:59:60", " 2:32:38"})
        texts.push_back("2026-11-21T" + std::string(time) + "Z");
    for (const char* zone : {"+0800", "+8:00", "+08", "+24:00", "+08:60", "Z ", "ZZ"})
        texts.push_back("2026-11-21T02:32:38" + std::string(zone));
    texts.push_back("2026-11-21T02:32");
    ASSERT_TRUE(NSDate::fromISO8601("2026-11-21T02:32:38Z"));
    for (const std::string& text : texts) EXPECT_FALSE(NSDate::fromISO8601(text)) << text;
}

TEST(NSLocale, TakesLanguagesFromTheEnvironment) {
    using Tags = std::vector<std::string>;
    const char* const names[] = {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"};
    for (const char* name : names) unsetenv(name);
    const std::tuple<const char*, const char*, Tags> cases[] = {
        {"LANG", "", {"en"}},
        {"LANG", "C.UTF-8", {"en"}},
        {"LANG", "zh_CN.UTF-8", {"zh-CN"}},
        {"LANGUAGE", "de:fr_CA:zh_CN", {"de", "fr-CA", "zh-CN"}}};
    for (const auto& [name, value, tags] : cases) {
        setenv(name, value, 1);
        EXPECT_EQ(NSLocale::current().preferredLanguages(), tags) << value;
    }
    for (const char* name : names) unsetenv(name);
}

TEST(NSLocale, ShortDateShowsTheDayAndTheTime) {
    const std::string text = NSLocale::current().shortDateAndTime({1795228358});
    EXPECT_NE(text.find("21"), std::string::npos) << text;
    EXPECT_NE(text.find(":32"), std::string::npos) << text;
    EXPECT_EQ(NSLocale::current().shortDateAndTime({1e300}), "");
}

}  // namespace
}  // namespace ostrel
