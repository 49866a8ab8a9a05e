#include "platform/graphics/CGBitmapContext.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace ostrel {

namespace {

/// The transform that applies `first`, then `second`.
CGAffineTransform joined(const CGAffineTransform& first, const CGAffineTransform& second) {
    const CGPoint origin = second.apply({first.tx, first.ty});
    return {second.a * first.a + second.c * first.b,
            second.b * first.a + second.d * first.b,
            second.a * first.c + second.c * first.d,
            second.b * first.c + second.d * first.d,
            origin.x,
            origin.y};
}

std::uint32_t loadPixel(const std::uint8_t* at) {
    std::uint32_t pixel;
    std::memcpy(&pixel, at, sizeof pixel);
    return pixel;
}

/// Source over destination (Porter and Duff), colours multiplied by alpha.
void blend(std::uint8_t* pixel, const std::array<double, 4>& source) {
    const double rest = 1 - source[3] / 255;
    for (std::size_t channel = 0; channel < 4; ++channel)
        pixel[channel] =
            static_cast<std::uint8_t>(std::lround(std::clamp(source[channel] + pixel[channel] * rest, 0.0, 255.0)));
}

}  // namespace

std::unique_ptr<CGBitmapContext> CGBitmapContext::make(int width, int height) {
    auto canvas = CGImage::make(width, height);
    if (!canvas) return nullptr;
    std::memset(canvas->row(0), 0, canvas->bytesPerRow() * static_cast<std::size_t>(height));
    return std::make_unique<CGBitmapContext>(std::move(canvas));
}

CGBitmapContext::CGBitmapContext(std::shared_ptr<CGImage> canvas) : canvas_(std::move(canvas)) {}

void CGBitmapContext::concatenate(const CGAffineTransform& change) { transform_ = joined(change, transform_); }

void CGBitmapContext::drawImage(const CGRect& rect, const CGImage& image) {
    // From the picture's pixels (rows from the top) to the rectangle, whose smallest y is the picture's lower
    // edge.
    const CGAffineTransform toRect{rect.width() / image.width(),    0,           0,
                                   -rect.height() / image.height(), rect.minX(), rect.maxY()};
    const CGAffineTransform toCanvas = joined(toRect, transform_);
    if (!drawByQuarters(toCanvas, image)) drawInterpolated(toCanvas, image);
}

/// Copies the picture when its pixels coincide with pixels of the canvas; false otherwise.
bool CGBitmapContext::drawByQuarters(const CGAffineTransform& toCanvas, const CGImage& image) {
    // In pixels: transforms computed in single precision are off by up to this much at the far edge.
    constexpr double tolerance = 1.0 / 256;
    const double reach = std::max(image.width(), image.height());
    const auto isClose = [&](double value, double whole, double scale) {
        return std::abs(value - whole) * scale <= tolerance;
    };
    const std::array<double, 4> parts{toCanvas.a, toCanvas.b, toCanvas.c, toCanvas.d};
    std::array<int, 4> whole{};
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (!(std::abs(parts[i]) < 2)) return false;
        whole[i] = static_cast<int>(std::lround(parts[i]));
        if (!isClose(parts[i], whole[i], reach)) return false;
    }
    const auto [a, b, c, d] = whole;
    const bool isQuarterTurn = std::abs(a * d - b * c) == 1 && a * b == 0 && a * c == 0;
    const double left = std::round(toCanvas.tx), top = std::round(toCanvas.ty);
    if (!isQuarterTurn || !isClose(toCanvas.tx, left, 1) || !isClose(toCanvas.ty, top, 1)) return false;
    if (!(std::abs(left) < 1e9 && std::abs(top) < 1e9) || !image.isOpaque()) return false;

    // The target pixel of the source pixel (0, 0): after a turn, another corner of that pixel is its upper
    // left one.
    const std::int64_t firstX = static_cast<std::int64_t>(left) + std::min({0, a, c, a + c});
    const std::int64_t firstY = static_cast<std::int64_t>(top) + std::min({0, b, d, b + d});
    // Blocks keep the rows of both pictures in the processor's cache while columns become rows.
    constexpr int block = 32;
    for (int blockY = 0; blockY < image.height(); blockY += block) {
        for (int blockX = 0; blockX < image.width(); blockX += block) {
            const int endY = std::min(blockY + block, image.height());
            const int endX = std::min(blockX + block, image.width());
            for (int y = blockY; y < endY; ++y) {
                const std::uint8_t* source = image.row(y) + static_cast<std::size_t>(blockX) * CGImage::bytesPerPixel;
                for (int x = blockX; x < endX; ++x, source += CGImage::bytesPerPixel) {
                    const std::int64_t toX = firstX + a * x + c * y, toY = firstY + b * x + d * y;
                    if (toX < 0 || toY < 0 || toX >= canvas_->width() || toY >= canvas_->height()) continue;
                    std::uint8_t* target =
                        canvas_->row(static_cast<int>(toY)) + static_cast<std::size_t>(toX) * CGImage::bytesPerPixel;
                    const std::uint32_t pixel = loadPixel(source);
                    std::memcpy(target, &pixel, sizeof pixel);
                }
            }
        }
    }
    return true;
}

void CGBitmapContext::drawInterpolated(const CGAffineTransform& toCanvas, const CGImage& image) {
    const double determinant = toCanvas.a * toCanvas.d - toCanvas.b * toCanvas.c;
    if (!(std::abs(determinant) > 1e-12)) return;
    for (int y = 0; y < canvas_->height(); ++y) {
        std::uint8_t* target = canvas_->row(y);
        for (int x = 0; x < canvas_->width(); ++x, target += CGImage::bytesPerPixel) {
            const double dx = x + 0.5 - toCanvas.tx, dy = y + 0.5 - toCanvas.ty;
            const double u = (toCanvas.d * dx - toCanvas.c * dy) / determinant;
            const double v = (toCanvas.a * dy - toCanvas.b * dx) / determinant;
            if (!(u >= 0 && v >= 0 && u < image.width() && v < image.height())) continue;
            const double left = std::floor(u - 0.5), top = std::floor(v - 0.5);
            const double right = u - 0.5 - left, lower = v - 0.5 - top;
            std::array<double, 4> sum{};
            for (const int row : {0, 1}) {
                const int sourceY = std::clamp(static_cast<int>(top) + row, 0, image.height() - 1);
                for (const int column : {0, 1}) {
                    const int sourceX = std::clamp(static_cast<int>(left) + column, 0, image.width() - 1);
                    const double weight = (row ? lower : 1 - lower) * (column ? right : 1 - right);
                    const std::uint8_t* pixel =
                        image.row(sourceY) + static_cast<std::size_t>(sourceX) * CGImage::bytesPerPixel;
                    for (std::size_t channel = 0; channel < 4; ++channel) sum[channel] += weight * pixel[channel];
                }
            }
            blend(target, sum);
        }
    }
}

}  // namespace ostrel
