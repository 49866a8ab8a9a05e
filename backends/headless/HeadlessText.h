#pragma once

#include "platform/foundation/runloop/NSDate.h"
#include "platform/graphics/TextMeasurer.h"

#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// Measures text with fixed metrics, so that layouts are the same on every machine. A character is half the
/// point size wide; from U+1100 on (CJK, emoji) it is as wide as the point size; combining marks have no
/// width. A line is 1.4 times the point size high. Lines break at blanks, which hang beyond the edge, beside
/// wide characters, and within a word that is longer than a line.
class HeadlessTextMeasurer final : public TextMeasurer {
public:
    TextMetrics measure(std::string_view text, const UIFont& font, CGFloat width, int maximumLines = 0) override;
    CGFloat lineHeight(const UIFont& font) override { return 1.4 * font.pointSize; }

    /// The lines that `measure` counts, without their line breaks.
    static std::vector<std::string> lines(std::string_view text, const UIFont& font, CGFloat width);
    /// The width of one line without the blanks at its end.
    static CGFloat lineWidth(std::string_view line, const UIFont& font);
};

/// English dates in UTC: "11/21/26, 2:32 AM".
class HeadlessLocale final : public NSLocale {
public:
    std::string shortDateAndTime(NSDate date) const override;
    std::vector<std::string> preferredLanguages() const override { return languages; }

    std::vector<std::string> languages{"en"};
};

}  // namespace ostrel
