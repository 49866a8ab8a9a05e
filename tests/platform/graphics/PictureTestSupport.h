#pragma once

#include "platform/graphics/CGImage.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>

namespace ostrel {

using Pixel = std::array<int, 4>;
using Colour = std::function<Pixel(int x, int y)>;

inline std::shared_ptr<CGImage> draw(int width, int height, const Colour& colour) {
    auto image = CGImage::make(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const auto parts = colour(x, y);
            for (std::size_t i = 0; i < 4; ++i)
                image->row(y)[static_cast<std::size_t>(x) * 4 + i] = static_cast<std::uint8_t>(parts[i]);
        }
    }
    return image;
}

inline Pixel at(const CGImage& image, int x, int y) {
    const std::uint8_t* pixel = image.row(y) + static_cast<std::size_t>(x) * 4;
    return {pixel[0], pixel[1], pixel[2], pixel[3]};
}

inline std::shared_ptr<CGImage> filled(int width, int height, const Pixel& value) {
    return draw(width, height, [&](int, int) { return value; });
}

inline void expectNear(const Pixel& seen, const Pixel& wanted, int tolerance, const std::string& where = {}) {
    for (std::size_t i = 0; i < 4; ++i) EXPECT_NEAR(seen[i], wanted[i], tolerance) << where << ", channel " << i;
}

}  // namespace ostrel
