#pragma once

#include "platform/graphics/TextMeasurer.h"

#include <cstddef>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>

namespace ostrel {

/// Measures text with the layout that paints it. The 4,096 results used last are kept, for at most 4 MiB of text. One
/// thread measures texts ahead, of which at most 256 wait. Main thread.
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

    // Ordered: the entry used last comes first.
    Entries recent_;
    std::unordered_map<std::size_t, Entries::iterator> byHash_;
    std::size_t textBytes_ = 0;
    std::map<std::pair<std::string, CGFloat>, CGFloat> lineHeights_;
    // Null until the first text is to be measured ahead.
    std::unique_ptr<Ahead> ahead_;
};

}  // namespace ostrel
