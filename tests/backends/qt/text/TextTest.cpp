#include "backends/qt/paint/DisplayList.h"
#include "backends/qt/text/QtFonts.h"
#include "backends/qt/text/QtTextMeasurer.h"
#include "backends/qt/text/TextBlock.h"

#include <cmath>
#include <gtest/gtest.h>
#include <QImage>
#include <set>

namespace ostrel::test {

namespace {

/// The rectangle of the pixels that are not white, in points.
QRectF inkOf(const QImage& image, double scale) {
    int x0 = image.width(), x1 = -1, y0 = image.height(), y1 = -1;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qGray(image.pixel(x, y)) > 200) continue;
            x0 = std::min(x0, x), x1 = std::max(x1, x), y0 = std::min(y0, y), y1 = std::max(y1, y);
        }
    }
    return x1 < 0 ? QRectF() : QRectF(x0 / scale, y0 / scale, (x1 + 1 - x0) / scale, (y1 + 1 - y0) / scale);
}

QImage painted(const TextContent& content, CGSize size, double scale) {
    auto state = std::make_shared<ViewState>();
    state->frame = {{}, size};
    state->backgroundColor = UIColor::white();
    state->content = content;
    DisplayList list;
    list.entries.push_back({state, 1, {}, false});
    list.scale = scale;
    list.isOpaque = true;
    list.ground = UIColor::white();
    return paintDisplayList(list, QRect(0, 0, int(std::ceil(size.width * scale)), int(std::ceil(size.height * scale))));
}

TextContent content(std::string text, UIFont font, int lines = 0) {
    return {.text = std::move(text),
            .font = std::move(font),
            .color = UIColor::black(),
            .lineBreakMode = NSLineBreakMode::byWordWrapping,
            .numberOfLines = lines,
            .vertical = TextContent::Vertical::top};
}

TEST(Text, IsPaintedAsLargeAsItMeasures) {
    struct Case {
        const char* text;
        UIFont font;
        double width;
        int lines;
    };
    const Case cases[] = {
        {"HHHHHH", UIFont::system(17), 1000, 1},
        {"HHHHHH", UIFont::fontWithName("PingFangSC-Thin", 40), 1000, 1},
        {"HHHHHH", UIFont::mediumSystem(13.5), 1000, 1},
        {"HHHHHH", UIFont::fontWithName("Courier-Bold", 15), 1000, 1},
        {"敏捷的棕色狐狸", UIFont::fontWithName("PingFangSC-Light", 15), 1000, 1},
        {"HHHH HHHH HHHH HHHH HHHH HHHH", UIFont::system(15), 100, 0},
        {"敏捷的棕色狐狸跳过了懒狗敏捷的棕色狐狸跳过了懒狗", UIFont::system(15), 120, 0},
        {"H\nH\nH", UIFont::system(15), 200, 0},
        {"HHHHHHHHHHHHHHHHHHHHHHHHHHHHHHHHHHHHHH", UIFont::system(15), 90, 0},
    };
    QtTextMeasurer measurer;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text + std::string(" ") + c.font.name);
        const TextMetrics metrics = measurer.measure(c.text, c.font, c.width, c.lines);
        EXPECT_NEAR(metrics.size.height, metrics.lineCount * metrics.lineHeight, 0.01);
        EXPECT_LE(metrics.size.width, c.width + 0.1);
        for (const double scale : {1.0, 2.0, 3.0}) {
            // In exactly the measured size no line wraps differently; the insets show ink beyond that size.
            TextContent shown = content(c.text, c.font, c.lines);
            shown.insets = {20, 20, 20, 20};
            const CGSize room{metrics.size.width + 40, metrics.size.height + 40};
            const QRectF ink = inkOf(painted(shown, room, scale), scale);
            const double em = c.font.pointSize;
            EXPECT_NEAR(ink.left(), 20, em * 0.2) << scale;
            EXPECT_NEAR(ink.right(), 20 + metrics.size.width, em * 0.3) << scale;
            EXPECT_GT(ink.top(), 20 - 1 / scale) << scale;
            EXPECT_LT(ink.bottom(), 20 + metrics.size.height + 1 / scale) << scale;
            EXPECT_GT(ink.height(), metrics.size.height - metrics.lineHeight) << "all lines are there " << scale;
        }
    }
}

TEST(Text, WeightsDiffer) {
    double darker = 0;
    for (const char* name :
         {"PingFangSC-Thin", "PingFangSC-Light", "PingFangSC-Regular", "PingFangSC-Medium", "PingFangSC-Semibold"}) {
        const QImage image = painted(content("文章HHH", UIFont::fontWithName(name, 40), 1), {300, 70}, 1);
        double ink = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) ink += 255 - qGray(image.pixel(x, y));
        }
        EXPECT_GT(ink, darker * 1.05) << name;
        darker = ink;
    }
}

TEST(Text, EmptyTextHasNoSizeAndBreaksAreBlanksOnOneLine) {
    QtTextMeasurer measurer;
    const UIFont font = UIFont::system(17);
    const TextMetrics metrics = measurer.measure("", font, 100, 0);
    EXPECT_EQ(metrics.size, CGSize{});
    EXPECT_EQ(metrics.lineCount, 0);
    EXPECT_GT(metrics.lineHeight, 17);
    EXPECT_DOUBLE_EQ(measurer.singleLineWidth("one\ntwo", font), measurer.singleLineWidth("one two", font));
    EXPECT_EQ(measurer.measure("one\r\ntwo\n", font, 500, 0).lineCount, 3);
}

TEST(Text, LinesAreLimitedByNumberAndHeight) {
    const QFont font = qtFont(UIFont::system(15));
    const double line = TextBlock::lineHeight(font);
    const std::string text = "one two three four five six seven eight nine ten eleven twelve";
    struct Case {
        const char* what;
        TextBlock::Options options;
        int lines;
        bool truncated;
    };
    const auto options = [](int maximum, double height, bool cuts, bool onlyWhole) {
        TextBlock::Options made;
        made.width = 80;
        made.maximumLines = maximum;
        made.height = height;
        made.onlyWholeLines = onlyWhole;
        if (cuts) made.lineBreakMode = NSLineBreakMode::byTruncatingTail;
        return made;
    };
    const int all = TextBlock(text, font, options(0, 1e9, false, false)).lineCount();
    ASSERT_GT(all, 3);
    const Case cases[] = {
        {"no limit", options(0, 1e9, false, false), all, false},
        {"two lines", options(2, 1e9, false, false), 2, true},
        {"cut lines fit the height", options(0, line * 2.6, true, false), 2, true},
        {"whole lines only", options(0, line * 2.6, false, true), 2, true},
        {"a part of a line is shown too", options(0, line * 2.6, false, false), 3, true},
        {"one cut line stays in a box that is too low", options(0, line * 0.5, true, false), 1, true},
        {"no line is whole", options(0, line * 0.5, false, true), 0, true},
    };
    for (const Case& c : cases) {
        const TextBlock block(text, font, c.options);
        EXPECT_EQ(block.lineCount(), c.lines) << c.what;
        EXPECT_EQ(block.isTruncated(), c.truncated) << c.what;
        EXPECT_LE(block.size().width(), 80.1) << c.what;
    }
}

TEST(Text, CutLineEndsWithinItsBoxWithAnEllipsis) {
    for (const char* text : {"a long line of words that does not fit", "敏捷的棕色狐狸跳过了懒狗敏捷的棕色狐狸",
                             "WWWWWWWWWWWWWWWWWWWWW", "one\ntwo three four five six seven eight"}) {
        for (const int lines : {1, 2}) {
            TextContent shown = content(text, UIFont::system(15), lines);
            shown.lineBreakMode = NSLineBreakMode::byTruncatingTail;
            shown.insets = {0, 10, 0, 10};
            const QRectF ink = inkOf(painted(shown, {110, 60}, 2), 2);
            EXPECT_LE(ink.right(), 101) << text << lines;
            EXPECT_GT(ink.right(), 60) << text << lines;
        }
    }
}

TEST(Text, ShrinksToFitDownToItsLeast) {
    const std::string text = "HHHHHHHHHHHHHHHHHHHH";
    TextContent shown = content(text, UIFont::system(20), 1);
    shown.lineBreakMode = NSLineBreakMode::byTruncatingTail;
    QtTextMeasurer measurer;
    const double whole = measurer.singleLineWidth(text, shown.font);
    const double full = inkOf(painted(shown, {whole + 2, 40}, 2), 2).height();
    shown.minimumScale = 0.5;
    const QRectF shrunk = inkOf(painted(shown, {whole * 0.7, 40}, 2), 2);
    EXPECT_NEAR(shrunk.height(), full * 0.65, 1);
    EXPECT_NEAR(shrunk.width(), whole * 0.65, 4) << "13 of 20 pixels a letter: the next whole size that fits";
    const QRectF least = inkOf(painted(shown, {whole * 0.3, 40}, 2), 2);
    EXPECT_NEAR(least.height(), full * 0.5, 1);
    EXPECT_LE(least.right(), whole * 0.3 + 0.5);
}

TEST(Text, EveryCharacterIsFoundWhereItsSelectionIsShown) {
    using enum NSTextAlignment;
    const struct {
        const char* text;
        double width;
        NSTextAlignment alignment;
        int lines = 0;
    } cases[] = {
        {"one two three four", 60, left},          {"one two three four", 60, center},
        {"one\r\ntwo\n\nthree", 200, right},       {"a\xF0\x9F\x98\x80z\xC3\xA4", 200, natural},
        {"敏捷的棕色狐狸跳过了懒狗", 70, natural}, {"שלום עולם טוב", 70, natural},
        {"שלום abc עולם", 300, natural},           {"abc שלום", 300, center},
        {"a title of one line", 60, center, 1},    {"cut in its second line here", 60, left, 2},
    };
    const UIFont font = UIFont::system(15);
    QtTextMeasurer measurer;
    for (const auto& [text, width, alignment, lines] : cases) {
        SCOPED_TRACE(text);
        TextBlock::Options options;
        options.width = width;
        options.maximumLines = lines;
        options.alignment = alignment;
        if (lines > 0) options.lineBreakMode = NSLineBreakMode::byTruncatingTail;
        const TextBlock block(text, qtFont(font), options);
        const TextLayout layout{font, width, alignment, options.lineBreakMode, lines};
        const std::string_view all = text;
        std::size_t found = 0;
        for (std::size_t begin = 0, end = 0; begin < all.size(); begin = end) {
            do ++end;
            while (end < all.size() && (static_cast<unsigned char>(all[end]) & 0xC0) == 0x80);
            const auto cover = block.coverOf(TextBlock::unitsOf(all, begin), TextBlock::unitsOf(all, end), 0, 1e6);
            const char first = all[begin];
            if (first == ' ' || first == '\n' || first == '\r' || cover.empty()) continue;
            ++found;
            ASSERT_EQ(cover.size(), 1u) << begin;
            std::set<std::size_t> places;
            for (const double part : {0.2, 0.8}) {
                const QRectF& rect = cover.front();
                places.insert(
                    measurer.offsetAtPoint(all, layout, {rect.left() + rect.width() * part, rect.center().y()}));
            }
            EXPECT_EQ(places, (std::set{begin, end})) << begin;
        }
        EXPECT_GT(found, 3u);
        const auto whole = block.coverOf(0, TextBlock::unitsOf(all, all.size()), 0, 1e6);
        QRectF united;
        for (const QRectF& part : whole) united |= part;
        EXPECT_NEAR(united.height(), block.size().height(), 0.1) << "no gaps between the lines";
        EXPECT_LE(united.right(), width + 0.1);
        EXPECT_GE(united.left(), -0.1);
    }
}

TEST(Text, LinesBeginAtTheSideAtWhichTheirScriptBegins) {
    using enum NSTextAlignment;
    const struct {
        const char* text;
        NSTextAlignment alignment;
        bool atLeft, atRight;
    } cases[] = {
        {"abc", natural, true, false},      {"שלום", natural, false, true}, {"مرحبا", natural, false, true},
        {"שלום abc", natural, false, true}, {"שלום", left, true, false},    {"abc", right, false, true},
        {"שלום", center, false, false},
    };
    for (const auto& [text, alignment, atLeft, atRight] : cases) {
        TextContent shown = content(text, UIFont::system(20));
        shown.alignment = alignment;
        const QRectF ink = inkOf(painted(shown, {200, 40}, 1), 1);
        EXPECT_EQ(ink.left() < 4, atLeft) << text;
        EXPECT_EQ(ink.right() > 196, atRight) << text;
    }
    QtTextMeasurer measurer;
    EXPECT_NE(measurer.singleLineWidth("שששש", UIFont::system(20)),
              measurer.singleLineWidth("יייי", UIFont::system(20)))
        << "a font has the script; missing characters would be boxes of one width";
}

TEST(Text, SelectedTextIsOnBlue) {
    TextContent shown = content("one two three", UIFont::system(20), 1);
    shown.insets = {5, 10, 5, 10};
    shown.selectionBegin = 4;
    shown.selectionEnd = 7;
    QtTextMeasurer measurer;
    const double begin = 10 + measurer.singleLineWidth("one ", shown.font);
    const double end = 10 + measurer.singleLineWidth("one two", shown.font);
    const QImage image = painted(shown, {200, 40}, 2);
    const auto isBlue = [&](double x) {
        const QColor color = image.pixelColor(static_cast<int>(x * 2), 14);
        return color.blue() > color.red() + 20 && color.red() > 100;
    };
    for (const auto& [x, blue] : {std::pair{begin - 2, false}, {begin + 1, true}, {end - 1, true}, {end + 2, false}})
        EXPECT_EQ(isBlue(x), blue) << x;
}

TEST(Text, VeryLongTextIsLaidOutAsFarAsItIsSeen) {
    std::string text;
    while (text.size() < 3'000'000) text += "A sentence of a very long text. ";
    TextBlock::Options options;
    options.width = 300;
    options.height = 100;
    const TextBlock wrapped(text, qtFont(UIFont::system(15)), options);
    EXPECT_LE(wrapped.lineCount(), 8);
    EXPECT_TRUE(wrapped.isTruncated());
    options.maximumLines = 1;
    options.lineBreakMode = NSLineBreakMode::byTruncatingTail;
    const TextBlock cut(text, qtFont(UIFont::system(15)), options);
    EXPECT_EQ(cut.lineCount(), 1);
    EXPECT_LE(cut.size().width(), 300.1);
}

TEST(Text, WhatIsMeasuredAheadMeasuresTheSame) {
    QtTextMeasurer ahead, plain;
    const UIFont font = UIFont::system(14);
    const auto textOf = [](int i) { return "一些 words " + std::to_string(i * 7919) + std::string(i % 60, 'm'); };
    for (int i = 0; i < 400; ++i) ahead.measureAhead(textOf(i), font, 80 + i % 3, i % 2);
    ahead.measureAhead("", font, 80, 0);
    for (int i = 0; i < 400; ++i) {
        const TextMetrics expected = plain.measure(textOf(i), font, 80 + i % 3, i % 2);
        const TextMetrics metrics = ahead.measure(textOf(i), font, 80 + i % 3, i % 2);
        EXPECT_EQ(metrics.size, expected.size) << i;
        EXPECT_EQ(metrics.lineCount, expected.lineCount) << i;
        EXPECT_EQ(metrics.lineHeight, expected.lineHeight) << i;
    }
}

TEST(Text, MeasuresAreKeptWithinABound) {
    QtTextMeasurer measurer;
    for (int i = 0; i < 5000; ++i) measurer.measure(std::to_string(i), UIFont::system(12), 100, 0);
    EXPECT_EQ(measurer.cachedCount(), 4096u);
    const TextMetrics again = measurer.measure("4999", UIFont::system(12), 100, 0);
    EXPECT_GT(again.size.width, measurer.measure("4", UIFont::system(12), 100, 0).size.width * 3.5);
}

}  // namespace

}  // namespace ostrel::test
