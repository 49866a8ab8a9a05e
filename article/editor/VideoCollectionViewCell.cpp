#include "article/editor/VideoCollectionViewCell.h"

#include <cmath>
#include <cstdint>
#include <cstdio>

namespace ostrel {

namespace {

/// "%.0f": to the nearest whole number, exact halves to the even one.
std::string rounded(float value) {
    char text[64];
    std::snprintf(text, sizeof text, "%.0f", static_cast<double>(value));
    return text;
}

}  // namespace

std::string VideoCollectionViewCell::durationString(float seconds) {
    if (!std::isfinite(seconds) || seconds >= 0x1p63f) return "0:00";
    if (seconds < 10.0f) return "0:0" + rounded(seconds);
    if (seconds < 60.0f) return "0:" + rounded(seconds);
    const auto whole = static_cast<std::int64_t>(seconds);
    if (seconds < 3600.0f) {
        char tail[8];
        std::snprintf(tail, sizeof tail, "%02d", static_cast<int>(whole % 60));
        return rounded(seconds / 60.0f) + ":" + tail;
    }
    return rounded(seconds / 3600.0f) + ":" + durationString(static_cast<float>(whole % 3600));
}

}  // namespace ostrel
