#include "platform/graphics/TextMeasurer.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace ostrel {

namespace {

// The UTF-8 lead byte from U+2000 on, where lines may break anywhere.
constexpr unsigned char firstIdeograph = 0xE2;

/// Bytes. In a longer paragraph the beginning of a line is estimated from its index among the lines, because
/// measuring parts of the paragraph would block the main loop for too long.
constexpr std::size_t longestSearched = 8 * 1024;

bool isContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

std::size_t previousPlace(std::string_view text, std::size_t place) {
    do --place;
    while (place > 0 && isContinuation(text[place]));
    return place;
}

std::vector<std::size_t> placesIn(std::string_view text, std::size_t begin, std::size_t end) {
    std::vector<std::size_t> places;
    for (std::size_t i = begin; i < end; ++i) {
        if (!isContinuation(text[i])) places.push_back(i);
    }
    places.push_back(end);
    return places;
}

/// One laid out paragraph.
struct Paragraph {
    TextMeasurer& measurer;
    std::string_view text;
    const UIFont& font;
    CGFloat width;
    int lines;

    /// The byte offset of a line's beginning. A prefix of a paragraph breaks into the same lines as the whole
    /// paragraph; only its last word may differ.
    std::size_t lineStart(int line) const {
        if (line <= 0) return 0;
        if (line >= lines) return text.size();
        if (text.size() > longestSearched) {
            std::size_t place = text.size() * static_cast<std::size_t>(line) / static_cast<std::size_t>(lines);
            while (place > 0 && isContinuation(text[place])) --place;
            return place;
        }
        const auto places = placesIn(text, 0, text.size());
        const auto first = std::partition_point(places.begin(), places.end(), [&](std::size_t end) {
            return end == 0 || measurer.measure(text.substr(0, end), font, width).lineCount <= line;
        });
        if (first == places.end()) return text.size();
        const std::size_t found = previousPlace(text, *first);
        std::size_t word = found;
        while (word > 0) {
            const std::size_t before = previousPlace(text, word);
            const auto lead = static_cast<unsigned char>(text[before]);
            if (lead == ' ' || lead == '\t' || lead == '-' || lead >= firstIdeograph) break;
            word = before;
        }
        const bool fits = measurer.singleLineWidth(text.substr(word, *first - word), font) <= width;
        return fits ? word : found;
    }

    std::size_t offsetInLine(int line, CGFloat x, CGFloat room, NSTextAlignment alignment) const {
        const std::size_t begin = lineStart(line);
        std::size_t end = std::max(begin, lineStart(line + 1));
        // Blanks at the end of a line hang beyond the edge and have no width.
        while (end < text.size() && end > begin && text[end - 1] == ' ') --end;
        const auto places = placesIn(text, begin, end);
        const auto widthTo = [&](std::size_t place) {
            return place > begin ? measurer.singleLineWidth(text.substr(begin, place - begin), font) : 0;
        };
        const bool isMoved = alignment == NSTextAlignment::center || alignment == NSTextAlignment::right;
        if (isMoved && room < CGFLOAT_MAX_TEXT) {
            const CGFloat free = std::max(0.0, room - widthTo(end));
            x -= alignment == NSTextAlignment::center ? free / 2 : free;
        }
        const auto after =
            std::partition_point(places.begin(), places.end(), [&](std::size_t place) { return widthTo(place) <= x; });
        if (after == places.begin()) return begin;
        if (after == places.end()) return end;
        const std::size_t left = *(after - 1);
        return x - widthTo(left) < widthTo(*after) - x ? left : *after;
    }
};

}  // namespace

std::size_t TextMeasurer::offsetAtPoint(std::string_view text, const TextLayout& layout, CGPoint point) {
    const UIFont& font = layout.font;
    const bool oneLine = layout.maximumLines == 1;
    const CGFloat width = oneLine ? CGFLOAT_MAX_TEXT : layout.width;
    // A text of one line has only this line to choose, whatever the point's y is.
    if (oneLine) point.y = 0;
    if (point.y < 0) return 0;
    CGFloat top = 0;
    for (std::size_t begin = 0;;) {
        const std::size_t end = oneLine ? text.size() : std::min(text.find_first_of("\r\n", begin), text.size());
        const TextMetrics metrics = measure(text.substr(begin, end - begin), font, width, layout.maximumLines);
        const Paragraph paragraph{*this, text.substr(begin, end - begin), font, width, std::max(1, metrics.lineCount)};
        const CGFloat height = std::max(metrics.size.height, lineHeight(font));
        if (point.y < top + height) {
            const int lines = paragraph.lines;
            const int line = std::clamp(static_cast<int>((point.y - top) * lines / height), 0, lines - 1);
            if (paragraph.text.empty()) return begin;
            return begin + paragraph.offsetInLine(line, point.x, layout.width, layout.alignment);
        }
        if (end == text.size()) return end;
        top += height;
        begin = end + (text.substr(end, 2) == "\r\n" ? 2 : 1);
    }
}

}  // namespace ostrel
