#include "backends/headless/HeadlessText.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <utility>

namespace ostrel {

namespace {

/// Absorbs rounding errors, so that a text fits into the width that was measured for it.
constexpr CGFloat tolerance = 1e-6;

struct Character {
    std::string_view bytes;
    char32_t code;
    CGFloat ems;
    bool isBlank() const { return code == ' ' || code == '\t'; }
    bool isWide() const { return ems == 1; }
};

CGFloat widthInEms(char32_t code) {
    const bool joins = (code >= 0x0300 && code <= 0x036F) || (code >= 0x200B && code <= 0x200F) ||
                       (code >= 0xFE00 && code <= 0xFE0F) || code == 0x20E3 || code < 0x20;
    if (joins && code != '\t') return 0;
    return code >= 0x1100 ? 1 : 0.5;
}

Character next(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text.front());
    const std::size_t wanted = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
    const std::size_t length = std::min(wanted, text.size());
    char32_t code = length == 1 ? lead : lead & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) code = code << 6 | (static_cast<unsigned char>(text[i]) & 0x3F);
    return {text.substr(0, length), code, widthInEms(code)};
}

/// Breaks one paragraph (a text without line breaks) into lines.
void breakParagraph(std::string_view text, CGFloat pointSize, CGFloat width, std::vector<std::string>& lines) {
    std::string line, word;  // the line up to its last possible break, and the part after that
    CGFloat lineWidth = 0, wordWidth = 0;
    const auto endLine = [&] {
        while (!line.empty() && (line.back() == ' ' || line.back() == '\t')) line.pop_back();
        lines.push_back(std::exchange(line, {}));
        lineWidth = 0;
    };
    const auto settleWord = [&] {
        line += std::exchange(word, {});
        lineWidth += std::exchange(wordWidth, 0.0);
    };
    while (!text.empty()) {
        const Character character = next(text);
        text.remove_prefix(character.bytes.size());
        const CGFloat advance = character.ems * pointSize;
        if (character.isBlank()) {
            settleWord();
            line += character.bytes;
            lineWidth += advance;
            continue;
        }
        if (character.isWide()) settleWord();
        if (lineWidth + wordWidth + advance > width + tolerance) {
            if (!line.empty()) {
                endLine();
            }
            if (wordWidth + advance > width + tolerance && !word.empty()) {
                settleWord();
                endLine();
            }
        }
        word += character.bytes;
        wordWidth += advance;
        if (character.isWide()) settleWord();
    }
    settleWord();
    endLine();
}

}  // namespace

CGFloat HeadlessTextMeasurer::lineWidth(std::string_view line, const UIFont& font) {
    while (!line.empty() && (line.back() == ' ' || line.back() == '\t')) line.remove_suffix(1);
    CGFloat ems = 0;
    while (!line.empty()) {
        const Character character = next(line);
        line.remove_prefix(character.bytes.size());
        ems += character.ems;
    }
    return ems * font.pointSize;
}

std::vector<std::string> HeadlessTextMeasurer::lines(std::string_view text, const UIFont& font, CGFloat width) {
    std::vector<std::string> result;
    if (text.empty()) return result;
    for (;;) {
        const std::size_t end = text.find_first_of("\r\n");
        breakParagraph(text.substr(0, end), font.pointSize, width, result);
        if (end == std::string_view::npos) return result;
        text.remove_prefix(text.substr(end, 2) == "\r\n" ? end + 2 : end + 1);
    }
}

TextMetrics HeadlessTextMeasurer::measure(std::string_view text, const UIFont& font, CGFloat width, int maximumLines) {
    TextMetrics metrics{.size = {}, .lineHeight = lineHeight(font)};
    std::string oneLine;
    if (maximumLines == 1) {
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') continue;
            oneLine += text[i] == '\r' || text[i] == '\n' ? ' ' : text[i];
        }
        text = oneLine;
    }
    for (const std::string& line : lines(text, font, width)) {
        if (maximumLines > 0 && metrics.lineCount == maximumLines) break;
        ++metrics.lineCount;
        metrics.size.width = std::max(metrics.size.width, lineWidth(line, font));
    }
    metrics.size.height = metrics.lineCount * metrics.lineHeight;
    return metrics;
}

std::string HeadlessLocale::shortDateAndTime(NSDate date) const {
    using namespace std::chrono;
    const sys_seconds time{seconds(static_cast<std::int64_t>(std::floor(date.secondsSince1970)))};
    const sys_days day = floor<days>(time);
    const year_month_day calendar{day};
    const hh_mm_ss clock{time - day};
    const auto hour = clock.hours().count();
    char text[64];
    std::snprintf(text, sizeof text, "%u/%u/%02d, %d:%02d %s", unsigned(calendar.month()), unsigned(calendar.day()),
                  ((int(calendar.year()) % 100) + 100) % 100, static_cast<int>(hour % 12 == 0 ? 12 : hour % 12),
                  static_cast<int>(clock.minutes().count()), hour < 12 ? "AM" : "PM");
    return text;
}

}  // namespace ostrel
