#include "platform/graphics/CGImage.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace ostrel {

namespace {
constexpr int largestBitmapSide = 65500;
}

void CGImage::FreePixels::operator()(std::uint8_t* pixels) const {
    ::operator delete[](pixels, std::align_val_t{alignment});
}

CGImage::CGImage(int width, int height, Pixels pixels) : width_(width), height_(height), pixels_(std::move(pixels)) {}

std::shared_ptr<CGImage> CGImage::make(int width, int height) {
    if (width < 1 || height < 1 || width > largestBitmapSide || height > largestBitmapSide) return nullptr;
    if (std::int64_t{width} * height > largestPixelCount) return nullptr;
    const std::size_t bytes = static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * bytesPerPixel;
    Pixels pixels(static_cast<std::uint8_t*>(::operator new[](bytes, std::align_val_t{alignment}, std::nothrow)));
    if (!pixels) return nullptr;
    return std::make_shared<CGImage>(width, height, std::move(pixels));
}

bool CGImage::isOpaque() const {
    for (int y = 0; y < height_; ++y) {
        const std::uint8_t* pixel = row(y);
        for (int x = 0; x < width_; ++x, pixel += bytesPerPixel) {
            if (pixel[3] != 255) return false;
        }
    }
    return true;
}

}  // namespace ostrel
