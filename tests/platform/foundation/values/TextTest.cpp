#include "platform/foundation/values/Text.h"
#include "platform/foundation/runloop/NSLog.h"
#include "tests/support/LogCapture.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace ostrel {
namespace {

TEST(Text, ReplacesFromLeftToRightOnce) {
    const std::tuple<const char*, const char*, const char*, const char*> cases[] = {
        {"a\r\nb\r\n", "\r\n", "\n", "a\nb\n"},
        {"aaa", "aa", "a", "aa"},
        {"aa", "a", "aa", "aaaa"},
        {"", "a", "b", ""},
        {"abc", "b", "", "ac"},
        {"abc", "x", "y", "abc"},
        {"abc", "", "x", "abc"},
    };
    for (const auto& [text, from, to, result] : cases) EXPECT_EQ(replacingOccurrences(text, from, to), result) << text;
}

TEST(Text, FindsWhereUtf8Ends) {
    // The valid prefix and the rest.
    using namespace std::string_literals;
    const std::pair<std::string, std::string> cases[] = {{"", ""},
                                                         {"plain text of more than eight bytes", ""},
                                                         {"12345678\xC3\xA9", ""},
                                                         {"\0"s, ""},
                                                         {"ab", "\xC3"},
                                                         {"ab", "\xC3("},
                                                         {"\xE6\x96\x87", ""},
                                                         {"\xE0\xA0\x80\xE0\xBF\xBF", ""},
                                                         {"", "\xE6\x96"},
                                                         {"\xF0\x9F\x98\x80!", ""},
                                                         {"", "\xF0\x9F\x98"},
                                                         {"\xED\x9F\xBF", ""},
                                                         {"\xF4\x8F\xBF\xBF", ""},
                                                         {"12345678", "\x80"},
                                                         {"1234567", "\xFFzzzzzzzz"},
                                                         // Overlong forms, a surrogate, code points beyond U+10FFFF.
                                                         {"x", "\xC0\x80"},
                                                         {"x", "\xE0\x9F\xBF"},
                                                         {"x", "\xF0\x8F\xBF\xBF"},
                                                         {"x", "\xED\xA0\x80"},
                                                         {"x", "\xF4\x90\x80\x80"},
                                                         {"x", "\xF5\x80\x80\x80"}};
    for (const auto& [valid, rest] : cases) EXPECT_EQ(validUtf8Prefix(valid + rest), valid.size()) << valid + rest;
}

TEST(Text, FillsTheFirstLongOnly) {
    EXPECT_EQ(formatLong("%ld min ago", 5), "5 min ago");
    EXPECT_EQ(formatLong("\xE5\x89\x8D %ld/%ld", -3), "\xE5\x89\x8D -3/%ld");
    EXPECT_EQ(formatLong("100%% %d %s", 5), "100%% %d %s");
}

TEST(NSLog, FillsPlaceholdersInOrderAndKeepsEachMessageOnOneLine) {
    const LogCapture log;
    NSLog("Error:%@", "broken");
    NSLog("%@%@|%@", std::optional<std::string>(), std::string("%@"), std::string_view("c"));
    NSLog("%@ and %@", "one");
    NSLog("none", "left over");
    NSLog("as it is: %@ 100%");
    NSLog("a\nb\r\nc\rd%@", "\n");
    EXPECT_EQ(log.lines(), (std::vector<std::string>{"Error:broken", "(null)%@|c", "one and %@", "none",
                                                     "as it is: %@ 100%", "a\\nb\\nc\\nd\\n"}));
}

TEST(NSLog, ThreadsLogOneLineAtATime) {
    const LogCapture log;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([] {
            for (int i = 0; i < 100; ++i) NSLog("line %@", decimalText(i));
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(log.lines().size(), 400u);
}

TEST(NSLog, WithoutASinkLinesGoToStandardErrorAlsoFromWithinASink) {
    testing::internal::CaptureStderr();
    NSLog("straight");
    LogSink former = setLogSink([](std::string_view line) { NSLog("within %@", line); });
    NSLog("sunk");
    setLogSink(std::move(former));
    NSLog("again");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "straight\nwithin sunk\nagain\n");
}

}  // namespace
}  // namespace ostrel
