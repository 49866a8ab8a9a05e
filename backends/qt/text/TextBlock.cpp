#include "backends/qt/text/TextBlock.h"

#include "backends/qt/system/QtConversions.h"

#include <algorithm>
#include <cmath>
#include <QFontInfo>
#include <QPainter>
#include <QTextOption>
#include <utility>
#include <vector>

namespace ostrel {

namespace {

// Points. Qt lays out in 26.6 fixed point numbers, which overflow for much larger widths. No text wraps at this width.
constexpr double widest = 1e6;
// Few letters are narrower than this share of the font's size, so a line holds fewer than width / (share * size).
constexpr double narrowestLetter = 0.12;
// Points. Widths are added up as doubles between measuring and painting, so they may differ by rounding.
constexpr double slack = 0.05;

QTextOption optionFor(const TextBlock::Options& options) {
    QTextOption option;
    option.setUseDesignMetrics(true);
    option.setWrapMode(options.lineBreakMode == NSLineBreakMode::byCharWrapping
                           ? QTextOption::WrapAnywhere
                           : QTextOption::WrapAtWordBoundaryOrAnywhere);
    if (options.maximumLines == 1 && options.lineBreakMode == NSLineBreakMode::byTruncatingTail) {
        option.setWrapMode(QTextOption::NoWrap);
    }
    return option;
}

/// The first `units` bytes of `text`, or fewer, cut between characters.
std::string_view prefix(std::string_view text, double units) {
    if (static_cast<double>(text.size()) <= units) return text;
    auto end = static_cast<std::size_t>(units);
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
    return text.substr(0, end);
}

QString lineText(std::string_view text, bool oneLine) {
    QString result = toQString(text);
    if (result.contains(u'\r')) result.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    const QChar lineBreak = oneLine ? QChar(u' ') : QChar(QChar::LineSeparator);
    for (QChar& c : result) {
        if (c == u'\n' || c == u'\r' || c == QChar::ParagraphSeparator || (oneLine && c == QChar::LineSeparator)) {
            c = lineBreak;
        } else if (c == u'\t') {
            c = u' ';
        }
    }
    return result;
}

}  // namespace

TextBlock::TextBlock(std::string_view text, const QFont& font, const Options& options) {
    if (text.empty()) return;
    Options limits = options;
    limits.width = std::clamp(options.width, 0.0, widest);
    const double oneLine = lineHeight(font);
    boxWidth_ = limits.width;
    leastLineHeight_ = oneLine;
    const double lines = options.maximumLines > 0 ? options.maximumLines : std::ceil(options.height / oneLine) + 1;
    const double pixelSize = std::max(1, QFontInfo(font).pixelSize());
    // A character has up to four bytes.
    const double shownBytes = 4 * lines * (std::ceil(limits.width / (narrowestLetter * pixelSize)) + 16);
    const std::string_view shown = prefix(text, shownBytes);
    truncated_ = shown.size() < text.size();
    const QString string = lineText(shown, options.maximumLines == 1);
    rightToLeft_ = string.isRightToLeft();
    layout_.setText(string);
    layout_.setFont(font);
    layout_.setTextOption(optionFor(limits));
    layout_.setCacheEnabled(true);
    layOut(limits, oneLine);
}

void TextBlock::layOut(const Options& options, double fontLineHeight) {
    const bool cuts = options.lineBreakMode == NSLineBreakMode::byTruncatingTail;
    const int length = static_cast<int>(layout_.text().size());
    int start = 0, end = 0;
    double top = 0, y = 0;
    layout_.beginLayout();
    while (options.maximumLines <= 0 || lineCount_ < options.maximumLines) {
        if (!cuts && !options.onlyWholeLines && y >= options.height) break;
        QTextLine line = layout_.createLine();
        if (!line.isValid()) break;
        line.setLeadingIncluded(true);
        line.setLineWidth(options.width + slack);
        const double height = std::max(line.height(), fontLineHeight);
        // The extra pixel keeps the last line in a box whose height was measured for the text and then rounded.
        const bool fits = y + height <= options.height + 1;
        if (!fits && (options.onlyWholeLines || (cuts && lineCount_ > 0))) {
            line.setNumColumns(0);
            break;
        }
        line.setPosition({alignedX(line, options), y + (height - line.height()) / 2});
        start = line.textStart();
        end = start + line.textLength();
        top = y;
        y += height;
        width_ = std::max(width_, line.naturalTextWidth());
        ++lineCount_;
        if (!fits && cuts) break;
    }
    layout_.endLayout();
    height_ = y;
    if (end < length) truncated_ = true;
    const bool tooWide = lineCount_ > 0 && layout_.lineAt(lineCount_ - 1).naturalTextWidth() > options.width + slack;
    if (cuts && lineCount_ > 0 && (truncated_ || tooWide)) {
        truncated_ = true;
        elide(start, top, options);
    }
}

void TextBlock::elide(int start, double y, const Options& options) {
    const QString& text = layout_.text();
    const QTextLine cut = layout_.lineAt(lineCount_ - 1);
    // The cut line is laid out with the following text too, so that it also shows the beginning of a word that would
    // otherwise wrap to the next line.
    int length = cut.textLength() + 256;
    const int lineBreak = static_cast<int>(text.indexOf(QChar(QChar::LineSeparator), start));
    if (lineBreak >= 0) length = std::min(length, lineBreak - start);
    QString shown = text.mid(start, length);
    QTextOption option = optionFor(options);
    option.setWrapMode(QTextOption::NoWrap);
    const auto lay = [&](const QString& string) {
        lastLine_.setText(string);
        lastLine_.setFont(layout_.font());
        lastLine_.setTextOption(option);
        lastLine_.beginLayout();
        QTextLine line = lastLine_.createLine();
        line.setLeadingIncluded(true);
        line.setLineWidth(widest);
        lastLine_.endLayout();
        return line;
    };
    static const QString ellipsis(QChar(0x2026));
    const double ellipsisWidth = lay(ellipsis).naturalTextWidth();
    QTextLine line = lay(shown);
    int columns = line.xToCursor(std::max(0.0, options.width - ellipsisWidth) + line.x(), QTextLine::CursorOnCharacter);
    for (;;) {
        while (columns > 0 && shown.at(columns - 1).isSpace()) --columns;
        line = lay(shown.left(columns) + ellipsis);
        if (columns == 0 || line.naturalTextWidth() <= options.width + slack) break;
        lay(shown);
        columns = lastLine_.previousCursorPosition(columns);
    }
    cutStart_ = start;
    cutLength_ = columns;
    line.setPosition({alignedX(line, options), y});
    width_ = std::max(std::min(width_, options.width), line.naturalTextWidth());
}

double TextBlock::alignedX(const QTextLine& line, const Options& options) const {
    NSTextAlignment alignment = options.alignment;
    if (alignment == NSTextAlignment::natural) {
        alignment = rightToLeft_ ? NSTextAlignment::right : NSTextAlignment::left;
    }
    // The offset at which Qt itself puts the text within the width of the line.
    const double own = line.naturalTextRect().x() - line.x();
    if (options.width >= widest) return -own;
    const double room = std::max(0.0, options.width - line.naturalTextWidth());
    switch (alignment) {
    case NSTextAlignment::center: return room / 2 - own;
    case NSTextAlignment::right: return room - own;
    default: return -own;
    }
}

// Selecting

TextBlock::ShownLine TextBlock::shownLine(int index) const {
    const QTextLine line = layout_.lineAt(index);
    const bool isCut = lastLine_.lineCount() > 0 && index == lineCount_ - 1;
    if (isCut) return {lastLine_.lineAt(0), cutStart_, cutStart_ + cutLength_, cutStart_};
    return {line, line.textStart(), line.textStart() + line.textLength(), 0};
}

QRectF TextBlock::lineBox(int index) const {
    const QTextLine line = shownLine(index).line;
    // Lines whose fallback font is lower are as high as the font's own lines.
    const double height = std::max(line.height(), leastLineHeight_);
    return {0, line.y() - (height - line.height()) / 2, boxWidth_, height};
}

std::vector<QRectF> TextBlock::coverOf(int begin, int end, double top, double bottom) const {
    std::vector<QRectF> covered;
    for (int i = 0; i < lineCount_; ++i) {
        const QRectF box = lineBox(i);
        if (box.top() > bottom || box.bottom() < top) continue;
        const ShownLine line = shownLine(i);
        const int first = std::max(begin, line.start), last = std::min(end, line.end);
        // In a line that mixes two directions of writing, the selected characters need not be neighbours on screen.
        std::vector<std::pair<double, double>> parts;
        for (int at = first; at < last; ++at) {
            const auto [left, right] = std::minmax({line.line.cursorToX(at - line.offset, QTextLine::Leading),
                                                    line.line.cursorToX(at - line.offset, QTextLine::Trailing)});
            if (right <= left) continue;
            if (!parts.empty() && left <= parts.back().second + 0.5 && right >= parts.back().first - 0.5) {
                parts.back() = {std::min(left, parts.back().first), std::max(right, parts.back().second)};
            } else {
                parts.push_back({left, right});
            }
        }
        // A selection that continues in the next line covers the rest of this line, even where no text is.
        const bool hasEdge = boxWidth_ < widest;
        if (begin < line.end && end > line.end && hasEdge) {
            const QRectF ink = line.line.naturalTextRect();
            if (rightToLeft_) {
                parts.push_back({0, ink.left()});
            } else {
                parts.push_back({ink.right(), boxWidth_});
            }
        }
        for (auto [left, right] : parts) {
            // Blanks at the end of a line may lie beyond the edge of the box.
            if (hasEdge) right = std::min(right, boxWidth_);
            if (right > left) covered.push_back({left, box.top(), right - left, box.height()});
        }
    }
    return covered;
}

int TextBlock::placeAt(QPointF point) const {
    if (lineCount_ == 0 || point.y() < 0) return 0;
    int index = 0;
    while (index < lineCount_ && lineBox(index).bottom() <= point.y()) ++index;
    if (index == lineCount_ && lineCount_ > 1) return static_cast<int>(layout_.text().size());
    const ShownLine line = shownLine(std::min(index, lineCount_ - 1));
    // QTextLine::xToCursor is wrong for lines from right to left by the width of the blanks beyond their left end.
    int place = line.start;
    double nearest = std::numeric_limits<double>::infinity();
    for (int at = line.start; at < line.end && layout_.text().at(at) != QChar::LineSeparator;) {
        const int next = std::max(at + 1, layout_.nextCursorPosition(at));
        const double leading = line.line.cursorToX(at - line.offset, QTextLine::Leading);
        const double trailing = line.line.cursorToX(at - line.offset, QTextLine::Trailing);
        const auto [left, right] = std::minmax({leading, trailing});
        const double distance = std::max({0.0, left - point.x(), point.x() - right});
        if (distance < nearest) {
            nearest = distance;
            place = std::abs(point.x() - leading) <= std::abs(point.x() - trailing) ? at : next;
        }
        at = next;
    }
    return place;
}

int TextBlock::unitsOf(std::string_view text, std::size_t bytes) {
    int units = 0;
    for (std::size_t i = 0; i < std::min(bytes, text.size()); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if ((byte & 0xC0) == 0x80 || (byte == '\n' && i > 0 && text[i - 1] == '\r')) continue;
        units += byte >= 0xF0 ? 2 : 1;
    }
    return units;
}

std::size_t TextBlock::bytesOf(std::string_view text, int units) {
    std::size_t i = 0;
    for (int passed = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if ((byte & 0xC0) == 0x80 || (byte == '\n' && i > 0 && text[i - 1] == '\r')) continue;
        if (passed >= units) break;
        passed += byte >= 0xF0 ? 2 : 1;
    }
    return i;
}

void TextBlock::draw(QPainter& painter, QPointF origin, const QRectF& visible) {
    const bool cut = lastLine_.lineCount() > 0;
    const int whole = cut ? lineCount_ - 1 : lineCount_;
    const auto drawLine = [&](const QTextLine& line) {
        const double top = origin.y() + line.y();
        if (top > visible.bottom() || top + line.height() * 2 < visible.top()) return;
        line.draw(&painter, origin);
    };
    for (int i = 0; i < whole; ++i) drawLine(layout_.lineAt(i));
    if (cut) drawLine(lastLine_.lineAt(0));
}

double TextBlock::lineHeight(const QFont& font) {
    // Every block asks for its line height, and an application uses a handful of fonts: their heights are kept.
    constexpr std::size_t maximumKept = 32;
    thread_local std::vector<std::pair<QFont, double>> kept;
    for (const auto& [known, height] : kept) {
        if (known == font) return height;
    }
    QTextLayout layout(QStringLiteral("X"), font);
    QTextOption option;
    option.setUseDesignMetrics(true);
    layout.setTextOption(option);
    layout.beginLayout();
    QTextLine line = layout.createLine();
    line.setLeadingIncluded(true);
    line.setLineWidth(widest);
    layout.endLayout();
    if (kept.size() >= maximumKept) kept.clear();
    kept.emplace_back(font, line.height());
    return line.height();
}

}  // namespace ostrel
