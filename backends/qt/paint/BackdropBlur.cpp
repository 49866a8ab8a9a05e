#include "backends/qt/paint/BackdropBlur.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace ostrel {

namespace {

constexpr int greatestReduction = 8;
// Pixels: the standard deviation with which the reduced picture is blurred at least, so that enlarging it shows no
// squares.
constexpr double leastSigma = 2;

/// One pass along a line of `count` pixels that are `step` bytes apart.
void blurPixelLine(uchar* line, int count, qsizetype step, int radius, std::vector<uchar>& copy) {
    for (int i = 0; i < count; ++i) {
        std::copy_n(line + i * step, 4, copy.begin() + static_cast<std::ptrdiff_t>(i) * 4);
    }
    const int window = 2 * radius + 1;
    const auto at = [&](int index, int part) {
        return static_cast<int>(copy[static_cast<std::size_t>(std::clamp(index, 0, count - 1) * 4 + part)]);
    };
    for (int part = 0; part < 4; ++part) {
        int sum = 0;
        for (int i = -radius; i <= radius; ++i) sum += at(i, part);
        for (int i = 0; i < count; ++i) {
            line[i * step + part] = static_cast<uchar>((sum + radius) / window);
            sum += at(i + radius + 1, part) - at(i - radius, part);
        }
    }
}

}  // namespace

QImage blurredBackdrop(const QImage& image, double sigma) {
    if (image.isNull() || !(sigma > 0)) return image;
    const int reduction = std::clamp(static_cast<int>(sigma / leastSigma), 1, greatestReduction);
    const QSize size = QSize(std::max(1, image.width() / reduction), std::max(1, image.height() / reduction));
    QImage small = reduction > 1 ? image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation) : image.copy();
    small.convertTo(QImage::Format_ARGB32_Premultiplied);
    std::vector<uchar> copy(static_cast<std::size_t>(std::max(size.width(), size.height())) * 4);
    uchar* const bits = small.bits();
    const qsizetype stride = small.bytesPerLine();
    // A box of 2r + 1 has the variance r(r + 1) / 3; those of the passes add up to sigma squared.
    double variance = sigma / reduction * sigma / reduction;
    for (int passes = 3; passes > 0; --passes) {
        const auto radius = static_cast<int>(std::lround((std::sqrt(1 + 12 * variance / passes) - 1) / 2));
        if (radius < 1) continue;
        variance = std::max(0.0, variance - radius * (radius + 1) / 3.0);
        for (int y = 0; y < size.height(); ++y) blurPixelLine(bits + y * stride, size.width(), 4, radius, copy);
        for (int x = 0; x < size.width(); ++x) blurPixelLine(bits + x * 4, size.height(), stride, radius, copy);
    }
    return small;
}

}  // namespace ostrel
