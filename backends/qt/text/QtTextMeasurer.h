#pragma once

#include "platform/foundation/values/LeastRecentlyUsedCache.h"
#include "platform/graphics/TextMeasurer.h"

#include <cstddef>
#include <map>
#include <memory>
#include <string>

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

    std::size_t cachedCount() const { return answers_.count(); }

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
    class Ahead;

    const Entry* find(std::size_t hash, std::string_view text, const UIFont& font, CGFloat width, int maximumLines);
    void keep(Entry entry);

    /// By hash; a new answer replaces the answer to another question with the same hash. The cost is the bytes of the
    /// text.
    LeastRecentlyUsedCache<std::size_t, Entry> answers_;
    std::map<std::pair<std::string, CGFloat>, CGFloat> lineHeights_;
    // Null until the first text is to be measured ahead.
    std::unique_ptr<Ahead> ahead_;
};

}  // namespace ostrel
