#pragma once

#include "platform/graphics/TextMeasurer.h"

#include <cstddef>
#include <list>
#include <map>
#include <string>
#include <unordered_map>

namespace ostrel {

/// Measures text with the layout that paints it. The last 4,096 answers are kept, for at most 4 MiB of text. Main thread.
class QtTextMeasurer final : public TextMeasurer {
public:
    TextMetrics measure(std::string_view text, const UIFont& font, CGFloat width, int maximumLines) override;
    CGFloat lineHeight(const UIFont& font) override;
    std::size_t offsetAtPoint(std::string_view text, const TextLayout& layout, CGPoint point) override;

    std::size_t cachedCount() const { return recent_.size(); }

private:
    struct Entry {
        std::size_t hash;
        std::string text;
        UIFont font;
        CGFloat width;
        int maximumLines;
        TextMetrics metrics;
    };
    using Entries = std::list<Entry>;

    Entries recent_;  // the last used first
    std::unordered_map<std::size_t, Entries::iterator> byHash_;
    std::size_t textBytes_ = 0;
    std::map<std::pair<std::string, CGFloat>, CGFloat> lineHeights_;
};

}  // namespace ostrel
