#include "backends/headless/HeadlessText.h"

#include <gtest/gtest.h>

namespace ostrel {

namespace {

const UIFont ten = UIFont::system(10);  // 5 points a letter, 10 a wide character, 14 a line

TEST(HeadlessText, LinesBreakWhereWordsEnd) {
    struct Case {
        const char* what;
        std::string text;
        CGFloat width;
        std::vector<std::string> lines;
    };
    const Case cases[] = {
        {"nothing", "", 50, {}},
        {"fits", "one two", 35, {"one two"}},
        {"just not", "one two", 34.9, {"one", "two"}},
        {"blanks hang", "one    two", 15, {"one", "two"}},
        {"blank at the end", "one ", 15, {"one"}},
        {"a word too long", "abcdefgh", 15, {"abc", "def", "gh"}},
        {"a word too long after another", "a bcdefgh", 15, {"a", "bcd", "efg", "h"}},
        {"narrower than a letter", "ab", 1, {"a", "b"}},
        {"line breaks", "a\nb\r\nc\rd", 50, {"a", "b", "c", "d"}},
        {"empty lines", "a\n\n", 50, {"a", "", ""}},
        {"only a break", "\n", 50, {"", ""}},
        {"wide characters break anywhere", "\u6587\u7AE0\u5217\u8868", 25, {"\u6587\u7AE0", "\u5217\u8868"}},
        {"a word beside wide characters", "\u6587abc", 20, {"\u6587", "abc"}},
        {"wide beside a word", "abc\u6587", 20, {"abc", "\u6587"}},
        {"emoji", "\U0001F600\U0001F600", 10, {"\U0001F600", "\U0001F600"}},
        {"unbounded", "one two three", CGFLOAT_MAX_TEXT, {"one two three"}},
    };
    for (const Case& c : cases)
        EXPECT_EQ(HeadlessTextMeasurer::lines(c.text, ten, c.width), c.lines) << c.what;
}

TEST(HeadlessText, SizesAreThoseOfTheLines) {
    HeadlessTextMeasurer measurer;
    struct Case {
        std::string text;
        CGFloat width;
        int maximumLines;
        CGSize size;
        int lines;
    };
    const Case cases[] = {
        {"", 100, 0, {0, 0}, 0},           {"one two", 100, 0, {35, 14}, 1},
        {"one three", 30, 0, {25, 28}, 2}, {"one three", 30, 1, {15, 14}, 1},
        {"a\nb\nc", 30, 2, {5, 28}, 2},    {"a\r\nb", CGFLOAT_MAX_TEXT, 1, {15, 14}, 1},
        {"e\u0301", 100, 0, {5, 14}, 1},   {"\u6587a", 100, 0, {15, 14}, 1},
    };
    for (const Case& c : cases) {
        const TextMetrics metrics = measurer.measure(c.text, ten, c.width, c.maximumLines);
        EXPECT_EQ(metrics.size, c.size) << c.text;
        EXPECT_EQ(metrics.lineCount, c.lines) << c.text;
        EXPECT_EQ(metrics.lineHeight, 14) << c.text;
    }
    const std::string text = "the quick brown fox";
    const CGFloat width = measurer.singleLineWidth(text, UIFont::system(13.7));
    EXPECT_EQ(measurer.measure(text, UIFont::system(13.7), width).lineCount, 1)
        << "a text fits its own width";
}

TEST(HeadlessText, DatesAreEnglishAndUniversal) {
    const HeadlessLocale locale;
    const std::pair<const char*, const char*> cases[] = {{"2026-11-21T02:32:38Z", "11/21/26, 2:32 AM"},
                                                         {"2026-01-02T00:05:00Z", "1/2/26, 12:05 AM"},
                                                         {"2000-12-31T12:00:59Z", "12/31/00, 12:00 PM"},
                                                         {"1969-07-20T23:59:00+01:00", "7/20/69, 10:59 PM"}};
    for (const auto& [iso, expected] : cases)
        EXPECT_EQ(locale.shortDateAndTime(*NSDate::fromISO8601(iso)), expected);
}

}  // namespace

}  // namespace ostrel
