#include "backends/headless/HeadlessText.h"

#include <gtest/gtest.h>

namespace ostrel {

namespace {

const UIFont ten = UIFont::system(10);  // a letter is 5 points wide, a wide character 10; a line is 14 high

TEST(HeadlessText, LinesBreakWhereWordsEnd) {
    const std::tuple<const char*, std::string, CGFloat, std::vector<std::string>> cases[] = {
        {"nothing", "", 50, {}},
        {"fits", "one two", 35, {"one two"}},
        {"just not", "one two", 34.9, {"one", "two"}},
        {"blanks hang", "one    two", 15, {"one", "two"}},
        {"a word too long after another", "a bcdefgh", 15, {"a", "bcd", "efg", "h"}},
        {"narrower than a letter", "ab", 1, {"a", "b"}},
        {"line breaks", "a\nb\r\nc\rd", 50, {"a", "b", "c", "d"}},
        {"empty lines", "a\n\n", 50, {"a", "", ""}},
        {"wide characters break anywhere", "\u6587\u7AE0\u5217\u8868", 25, {"\u6587\u7AE0", "\u5217\u8868"}},
        {"wide beside a word", "abc\u6587", 20, {"abc", "\u6587"}},
    };
    for (const auto& [what, text, width, lines] : cases)
        EXPECT_EQ(HeadlessTextMeasurer::lines(text, ten, width), lines) << what;
}

TEST(HeadlessText, SizesAreThoseOfTheLines) {
    HeadlessTextMeasurer measurer;
    const std::tuple<std::string, CGFloat, int, CGSize, int> cases[] = {
        {"", 100, 0, {0, 0}, 0},           {"one two", 100, 0, {35, 14}, 1},
        {"one three", 30, 0, {25, 28}, 2}, {"one three", 30, 1, {15, 14}, 1},
        {"a\nb\nc", 30, 2, {5, 28}, 2},    {"a\r\nb", CGFLOAT_MAX_TEXT, 1, {15, 14}, 1},
        {"e\u0301", 100, 0, {5, 14}, 1},   {"\u6587a", 100, 0, {15, 14}, 1},
    };
    for (const auto& [text, width, maximumLines, size, lines] : cases) {
        const TextMetrics metrics = measurer.measure(text, ten, width, maximumLines);
        EXPECT_EQ(metrics.size, size) << text;
        EXPECT_EQ(metrics.lineCount, lines) << text;
        EXPECT_EQ(metrics.lineHeight, 14) << text;
    }
    const std::string fox = "the quick brown fox";
    const CGFloat ownWidth = measurer.singleLineWidth(fox, UIFont::system(13.7));
    EXPECT_EQ(measurer.measure(fox, UIFont::system(13.7), ownWidth).lineCount, 1) << "a text fits its own width";
}

}  // namespace

}  // namespace ostrel
