#include "backends/qt/paint/ShadowBlur.h"

#include <cmath>
#include <QPainter>
#include <vector>

namespace ostrel {

namespace {

/// One pass along a line of `count` bytes that are `step` bytes apart; beyond the ends all bytes are 0.
void blurAlphaLine(uchar* line, int count, qsizetype step, int radius, std::vector<uchar>& copy) {
    for (int i = 0; i < count; ++i) copy[static_cast<std::size_t>(i)] = line[i * step];
    const int window = 2 * radius + 1;
    int sum = 0;
    for (int i = 0; i < std::min(radius, count); ++i) sum += copy[static_cast<std::size_t>(i)];
    for (int i = 0; i < count; ++i) {
        if (i + radius < count) sum += copy[static_cast<std::size_t>(i + radius)];
        if (i - radius - 1 >= 0) sum -= copy[static_cast<std::size_t>(i - radius - 1)];
        line[i * step] = static_cast<uchar>((sum + window / 2) / window);
    }
}

}  // namespace

QImage blurredShape(const QPainterPath& shape, QSize size, double sigma, const QColor& color) {
    QImage mask(size, QImage::Format_Alpha8);
    mask.fill(0);
    {
        QPainter painter(&mask);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.fillPath(shape, Qt::black);
    }
    // Three boxes of 2r + 1 have the variance r(r + 1), which must be sigma squared.
    const int radius = static_cast<int>(std::lround((std::sqrt(1 + 4 * sigma * sigma) - 1) / 2));
    if (radius > 0) {
        std::vector<uchar> copy(static_cast<std::size_t>(std::max(size.width(), size.height())));
        uchar* bits = mask.bits();
        const qsizetype stride = mask.bytesPerLine();
        for (int pass = 0; pass < 3; ++pass) {
            for (int y = 0; y < size.height(); ++y) blurAlphaLine(bits + y * stride, size.width(), 1, radius, copy);
            for (int x = 0; x < size.width(); ++x) blurAlphaLine(bits + x, size.height(), stride, radius, copy);
        }
    }
    QImage result(size, QImage::Format_ARGB32_Premultiplied);
    QRgb table[256];
    for (int a = 0; a < 256; ++a) {
        table[a] = qPremultiply(qRgba(color.red(), color.green(), color.blue(), a * color.alpha() / 255));
    }
    for (int y = 0; y < size.height(); ++y) {
        const uchar* from = mask.constScanLine(y);
        auto* to = reinterpret_cast<QRgb*>(result.scanLine(y));
        for (int x = 0; x < size.width(); ++x) to[x] = table[from[x]];
    }
    return result;
}

}  // namespace ostrel
