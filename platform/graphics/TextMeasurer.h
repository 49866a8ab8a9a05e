#pragma once

#include "platform/graphics/Geometry.h"
#include "platform/graphics/UIFont.h"

#include <memory>
#include <string>
#include <string_view>

namespace ostrel {

enum class NSTextAlignment { left, center, right, natural };
/// How a text that does not fit is broken: between words, between characters, or cut with an ellipsis at its
/// end.
enum class NSLineBreakMode { byWordWrapping, byCharWrapping, byTruncatingTail };

/// A width or height without a bound.
inline constexpr CGFloat CGFLOAT_MAX_TEXT = 3.4028234663852886e38;

/// The parameters of a text's layout.
struct TextLayout {
    UIFont font;
    CGFloat width = CGFLOAT_MAX_TEXT;  ///< the width of the lines, points
    NSTextAlignment alignment = NSTextAlignment::left;
    NSLineBreakMode lineBreakMode = NSLineBreakMode::byWordWrapping;
    int maximumLines = 0;  ///< 0: no limit
};

struct TextMetrics {
    CGSize size;  ///< the bounding rectangle of all lines, leading included, not rounded
    int lineCount = 0;
    CGFloat lineHeight = 0;  ///< the height of one line in this font
};

/// Measures text as the backend draws it. The backend caches the results. Main thread.
class TextMeasurer {
public:
    virtual ~TextMeasurer() = default;

    /// Lays `text` out in lines of at most `width` points, with the font's leading, and in at most
    /// `maximumLines` lines when that is above 0. Empty text has size 0 by 0 and no lines.
    virtual TextMetrics measure(std::string_view text, const UIFont& font, CGFloat width, int maximumLines = 0) = 0;
    virtual CGFloat lineHeight(const UIFont& font) = 0;
    /// Announces that `measure` will soon be called with these arguments; a backend may measure on another
    /// thread before.
    virtual void measureAhead(std::string /*text*/, const UIFont& /*font*/, CGFloat /*width*/,
                              int /*maximumLines*/ = 0) {}
    /// The position in `text` (a byte offset between characters) nearest to `point`, in points from the upper
    /// left corner of the laid out text. The default measures parts of the paragraph at `point` and assumes
    /// that text runs from left to right; a backend can override it with its own layout.
    virtual std::size_t offsetAtPoint(std::string_view text, const TextLayout& layout, CGPoint point);
    /// The width of `text` on one line, where line breaks are blanks.
    CGFloat singleLineWidth(std::string_view text, const UIFont& font) {
        return measure(text, font, CGFLOAT_MAX_TEXT, 1).size.width;
    }

    static TextMeasurer& shared();
    static void install(std::shared_ptr<TextMeasurer> measurer);
};

}  // namespace ostrel
