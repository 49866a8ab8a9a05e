#include "platform/foundation/values/Text.h"
#include "platform/foundation/runloop/NSLog.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace ostrel {
namespace {

TEST(Text, ReplacesFromLeftToRightOnce) {
    struct Case {
        const char* text;
        const char* from;
        const char* to;
        const char* result;
    };
    const Case cases[] = {
        {"a\r\nb\r\n", "\r\n", "\n", "a\nb\n"},
        {"aaa", "aa", "a", "aa"},
        {"aa", "a", "aa", "aaaa"},
        {"", "a", "b", ""},
        {"abc", "b", "", "ac"},
        {"abc", "x", "y", "abc"},
        {"abc", "", "x", "abc"},
    };
    for (const Case& one : cases)
        EXPECT_EQ(replacingOccurrences(one.text, one.from, one.to), one.result) << one.text;
}

TEST(Text, FindsWhereUtf8Ends) {
    struct Case {
        std::string text;
        std::size_t valid;
    };
    const Case cases[] = {
        {"", 0},
        {"plain text of more than eight bytes", 35},
        {"12345678\xC3\xA9", 10},
        {"ab\xC3", 2},
        {"ab\xC3(", 2},
        {"\xE6\x96\x87", 3},
        {"\xE6\x96", 0},
        {"\xF0\x9F\x98\x80!", 5},
        {"\xF0\x9F\x98", 0},
        {"x\xC0\x80", 1},          // overlong NUL
        {"x\xE0\x9F\xBF", 1},      // overlong
        {"x\xF0\x8F\xBF\xBF", 1},  // overlong
        {"\xED\x9F\xBF", 3},
        {"x\xED\xA0\x80", 1},  // a surrogate
        {"\xF4\x8F\xBF\xBF", 4},
        {"x\xF4\x90\x80\x80", 1},  // beyond U+10FFFF
        {"x\xF5\x80\x80\x80", 1},
        {"12345678\x80", 8},
        {"1234567\xFFzzzzzzzz", 7},
        {std::string("\0", 1), 1},
    };
    for (const Case& one : cases) EXPECT_EQ(validUtf8Prefix(one.text), one.valid) << one.text;
}

TEST(Text, FillsTheFirstLongOnly) {
    EXPECT_EQ(formatLong("%ld min ago", 5), "5 min ago");
    EXPECT_EQ(formatLong("\xE5\x89\x8D %ld/%ld", -3), "\xE5\x89\x8D -3/%ld");
    EXPECT_EQ(formatLong("100%% %d %s", 5), "100%% %d %s");
}

class NSLogTest : public testing::Test {
protected:
    NSLogTest() {
        former_ = setLogSink([this](std::string_view line) { lines_.emplace_back(line); });
    }
    ~NSLogTest() override { setLogSink(std::move(former_)); }
    std::vector<std::string> lines_;

private:
    LogSink former_;
};

TEST_F(NSLogTest, FillsPlaceholdersInOrder) {
    NSLog("Error:%@", "broken");
    NSLog("%@%@|%@", std::optional<std::string>(), std::string("%@"), std::string_view("c"));
    NSLog("%@ and %@", "one");
    NSLog("none", "left over");
    NSLog("as it is: %@ 100%");
    EXPECT_EQ(lines_, (std::vector<std::string>{"Error:broken", "(null)%@|c", "one and %@", "none",
                                                "as it is: %@ 100%"}));
}

TEST_F(NSLogTest, KeepsEachMessageOnOneLine) {
    NSLog("a\nb\r\nc\rd%@", "\n");
    EXPECT_EQ(lines_, std::vector<std::string>{"a\\nb\\nc\\nd\\n"});
}

TEST_F(NSLogTest, ThreadsLogOneLineAtATime) {
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([] {
            for (int i = 0; i < 100; ++i) NSLog("line %@", decimalText(i));
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(lines_.size(), 400u);
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
