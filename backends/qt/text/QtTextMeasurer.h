#pragma once

#include "platform/graphics/TextMeasurer.h"

#include <cstddef>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>

namespace ostrel {

/// Measures text with the layout that paints it. The last 4,096 answers are kept, for at most 4 MiB of text. What is
/// measured ahead is measured on one thread, at most 256 texts at a time. Main thread.
class QtTextMeasurer final : public TextMeasurer {
public:
    QtTextMeasurer();
    ~QtTextMeasurer() override;

    TextMetrics measure(std::string_view text, const UIFont& font, CGFloat width, int maximumLines) override;
    CGFloat lineHeight(const UIFont& font) override;
    void measureAhead(std::string text, const UIFont& font, CGFloat width, int maximumLines) override;
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
        bool asks(std::string_view otherText, const UIFont& otherFont, CGFloat otherWidth, int lines) const {
            return text == otherText && font == otherFont && width == otherWidth && maximumLines == lines;
        }
    };
    using Entries = std::list<Entry>;
    class Ahead;

    const Entry* find(std::size_t hash, std::string_view text, const UIFont& font, CGFloat width,
                      int maximumLines);
    void keep(Entry entry);

    Entries recent_;  // the last used first
    std::unordered_map<std::size_t, Entries::iterator> byHash_;
    std::size_t textBytes_ = 0;
    std::map<std::pair<std::string, CGFloat>, CGFloat> lineHeights_;
    std::unique_ptr<Ahead> ahead_;  // from the first text that is measured ahead on
};

}  // namespace ostrel
