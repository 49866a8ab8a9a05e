#pragma once

#include "platform/foundation/values/Value.h"
#include "platform/graphics/TextMeasurer.h"
#include "platform/uikit/view/UIWindow.h"

#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>

namespace ostrel {

/// The margin between a picture or a video and the edges of its row, points.
inline constexpr float detailSpace = 5.0f;

/// The radius of the corners of pictures and videos, points.
inline constexpr CGFloat pictureRadius = 6;

/// The space below the text of a row, points.
inline constexpr CGFloat roomBelowText = 5;

/// The largest height at which a picture is shown, points; a higher picture is fitted into it. Records may
/// state any size, and nobody scrolls through a row that is millions of points high. A picture 16 times as
/// high as wide still has the full width of a window of 1,024 points.
inline constexpr float largestPictureHeight = 16'384;

/// A number of a record in single precision; 0 when the key is missing, or its value is no number or too
/// large.
inline float recordFloat(const Dictionary& record, std::string_view key) {
    const auto value = static_cast<float>(record[key].number());
    return std::isfinite(value) ? value : 0;
}

/// `value` without its fraction, at most 2^62 and at least -2^62.
inline std::int64_t truncated(float value) {
    if (!(value < 0x1p62f)) return std::int64_t{1} << 62;
    return value > -0x1p62f ? static_cast<std::int64_t>(value) : -(std::int64_t{1} << 62);
}

/// The width of the application's first window, points; 0 without a window.
inline CGFloat firstWindowWidth() {
    const UIWindow* const window = UIApplication::sharedApplication().firstWindow();
    return window ? window->frame().width() : 0;
}

/// The height of `text` in lines of at most `width` points; 0 for an empty text.
inline CGFloat textHeight(const std::string& text, const UIFont& font, CGFloat width) {
    return text.empty() ? 0 : TextMeasurer::shared().measure(text, font, width).size.height;
}

}  // namespace ostrel
