#pragma once

#include "platform/foundation/values/Value.h"
#include "platform/graphics/TextMeasurer.h"
#include "platform/uikit/view/UIWindow.h"

#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>

namespace ostrel {

/// Between a picture or video and its row's edges, points.
inline constexpr float detailSpace = 5.0f;

/// Records may state any size, and nobody scrolls through a row millions of points high: a picture that would be shown
/// higher is fitted into this height, points. Pictures of 1 to 16 are still shown at the full width of a wide window.
inline constexpr float largestPictureHeight = 16'384;

/// A number of a record in single precision; 0 for what is missing, no number, or beyond that precision.
inline float recordFloat(const Dictionary& record, std::string_view key) {
    const auto value = static_cast<float>(record[key].number());
    return std::isfinite(value) ? value : 0;
}

/// The fraction dropped; what no integer holds becomes the largest.
inline std::int64_t truncated(float value) {
    if (!(value < 0x1p62f)) return std::int64_t{1} << 62;
    return value > -0x1p62f ? static_cast<std::int64_t>(value) : -(std::int64_t{1} << 62);
}

/// The width of the application's first window; 0 without one.
inline CGFloat firstWindowWidth() {
    const UIWindow* const window = UIApplication::sharedApplication().firstWindow();
    return window ? window->frame().width() : 0;
}

/// The height of `text` in lines of at most `width` points; 0 when it is empty.
inline CGFloat textHeight(const std::string& text, const UIFont& font, CGFloat width) {
    return text.empty() ? 0 : TextMeasurer::shared().measure(text, font, width).size.height;
}

}  // namespace ostrel
