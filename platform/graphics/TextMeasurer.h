#pragma once

#include "platform/graphics/Geometry.h"
#include "platform/graphics/UIFont.h"

#include <memory>
#include <string>
#include <string_view>

namespace ostrel {

enum class NSTextAlignment { left, center, right, natural };
/// How text that does not fit is treated: broken between words, between characters, or cut with an ellipsis at the end.
enum class NSLineBreakMode { byWordWrapping, byCharWrapping, byTruncatingTail };

/// The largest width or height: "unbounded".
inline constexpr CGFloat CGFLOAT_MAX_TEXT = 3.4028234663852886e38;

/// How a text is laid out.
struct TextLayout {
    UIFont font;
    CGFloat width = CGFLOAT_MAX_TEXT;  ///< of the lines, points
    NSTextAlignment alignment = NSTextAlignment::left;
    NSLineBreakMode lineBreakMode = NSLineBreakMode::byWordWrapping;
    int maximumLines = 0;  ///< 0: no limit
};

struct TextMetrics {
    CGSize size;  ///< the bounding rectangle of all lines, leading included, not rounded
    int lineCount = 0;
    CGFloat lineHeight = 0;  ///< of one line in this font
};

/// Measures text as the backend will draw it. Answers are cached by the backend. Main thread.
class TextMeasurer {
public:
    virtual ~TextMeasurer() = default;

    /// Lays `text` out in lines of at most `width` points (line-fragment origin, font leading); at most `maximumLines`
    /// when that is above 0. Empty text has size 0 by 0 and no lines.
    virtual TextMetrics measure(std::string_view text, const UIFont& font, CGFloat width,
                                int maximumLines = 0) = 0;
    virtual CGFloat lineHeight(const UIFont& font) = 0;
    /// Says that this will be asked for soon; a backend may measure it on another thread meanwhile.
    virtual void measureAhead(std::string /*text*/, const UIFont& /*font*/, CGFloat /*width*/,
                              int /*maximumLines*/ = 0) {}
    /// The place in `text` (bytes, between characters) that is nearest to `point`, in points from the upper left corner
    /// of the text as it is laid out. The default finds it by measuring parts of the paragraph there, and takes all text
    /// to run from left to right; a backend knows better by its own layout.
    virtual std::size_t offsetAtPoint(std::string_view text, const TextLayout& layout, CGPoint point);
    /// The width of `text` on one line; breaks are shown as blanks.
    CGFloat singleLineWidth(std::string_view text, const UIFont& font) {
        return measure(text, font, CGFLOAT_MAX_TEXT, 1).size.width;
    }

    static TextMeasurer& shared();
    static void install(std::shared_ptr<TextMeasurer> measurer);
};

}  // namespace ostrel
