#include "platform/graphics/CGBitmapContext.h"
#include "platform/graphics/UIImage.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

namespace ostrel {
namespace {

using Pixel = std::array<int, 4>;

Pixel pixelAt(const CGImage& image, int x, int y) {
    const std::uint8_t* pixel = image.row(y) + static_cast<std::size_t>(x) * CGImage::bytesPerPixel;
    return {pixel[0], pixel[1], pixel[2], pixel[3]};
}

void setPixel(CGImage& image, int x, int y, Pixel value) {
    std::uint8_t* pixel = image.row(y) + static_cast<std::size_t>(x) * CGImage::bytesPerPixel;
    for (std::size_t i = 0; i < value.size(); ++i) pixel[i] = static_cast<std::uint8_t>(value[i]);
}

std::shared_ptr<CGImage> filled(int width, int height, Pixel value) {
    auto image = CGImage::make(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) setPixel(*image, x, y, value);
    }
    return image;
}

constexpr Pixel red{255, 0, 0, 255}, blue{0, 0, 255, 255}, clear{0, 0, 0, 0};

TEST(BitmapTest, SizesWithoutAreaOrBeyondTheLimitAreRefused) {
    for (const auto& [width, height] :
         {std::pair{0, 5}, {5, 0}, {-1, 5}, {65501, 1}, {1, 65501}, {20000, 20000}})
        EXPECT_EQ(CGImage::make(width, height), nullptr) << width << " by " << height;
    EXPECT_NE(CGImage::make(65500, 1), nullptr);
}

TEST(BitmapTest, PngKeepsEveryPixelAndJpegNearlyEvery) {
    auto image = filled(37, 11, red);
    setPixel(*image, 3, 2, blue);
    const auto png = CGImage::decode(image->png());
    ASSERT_NE(png, nullptr);
    EXPECT_EQ(pixelAt(*png, 3, 2), blue);
    EXPECT_EQ(pixelAt(*png, 36, 10), red);
    const auto jpeg = CGImage::decode(filled(37, 11, {200, 100, 50, 255})->jpeg(0.7));
    ASSERT_NE(jpeg, nullptr);
    const Pixel pixel = pixelAt(*jpeg, 20, 5);
    EXPECT_NEAR(pixel[0], 200, 4);
    EXPECT_NEAR(pixel[1], 100, 4);
    EXPECT_NEAR(pixel[2], 50, 4);
    EXPECT_GT(filled(64, 64, red)->jpeg(1).size(), filled(64, 64, red)->jpeg(0).size());
}

TEST(BitmapTest, TransparencySurvivesPng) {
    // Colours are multiplied by alpha: a quarter of white.
    const auto image = CGImage::decode(filled(2, 2, {64, 64, 64, 64})->png());
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(pixelAt(*image, 1, 1), (Pixel{64, 64, 64, 64}));
    EXPECT_FALSE(image->isOpaque());
}

TEST(BitmapTest, DamagedPicturesAreNoPictures) {
    const Data png = filled(40, 40, red)->png(), jpeg = filled(40, 40, red)->jpeg(0.9);
    for (const std::string& bytes :
         {std::string(), std::string("text"), std::string("\xFF\xD8"), std::string("\x89PNG\r\n\x1A\n"),
          std::string(png.view().substr(0, png.size() / 2)), std::string(jpeg.view().substr(0, 30))})
        EXPECT_EQ(CGImage::decode(Data::copy(bytes)), nullptr) << bytes.size();
}

TEST(BitmapTest, AnImageOfABitmapIsEncodedForWhoShowsItAndKeepsItsPixels) {
    const auto image = UIImage::imageWithCGImage(filled(30, 20, red));
    EXPECT_EQ(image->size(), (CGSize{30, 20}));
    const auto shown = UIImage::imageWithData(image->representation(2).data);
    ASSERT_NE(shown, nullptr);
    EXPECT_EQ(shown->size(), (CGSize{30, 20}));
    EXPECT_EQ(UIImage::imageWithCGImage(nullptr), nullptr);
    const auto seen = CGImage::decode(UIImage::imageWithCGImage(filled(3, 3, clear))->representation(1).data);
    ASSERT_NE(seen, nullptr);
    EXPECT_EQ(pixelAt(*seen, 1, 1), clear);
}

TEST(BitmapTest, PixelsOfAPhotographStandUpright) {
    // Lying 16 by 8, its left half red: orientation 6 asks for a clockwise quarter, so that red comes on top.
    auto bitmap = filled(16, 8, blue);
    for (int y = 0; y < 8; ++y) {
        for (int x = 0; x < 8; ++x) setPixel(*bitmap, x, y, red);
    }
    std::string bytes(bitmap->jpeg(1).view());
    std::string exif("Exif\0\0II*\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0\x06\0\0\0\0\0\0\0", 32);
    // Marker APP1 and its length, 34.
    exif.insert(0, "\xFF\xE1\0\x22", 4);
    bytes.insert(2, exif);
    const auto upright = UIImage::imageWithData(Data::copy(bytes))->cgImage();
    ASSERT_NE(upright, nullptr);
    ASSERT_EQ(upright->width(), 8);
    EXPECT_GT(pixelAt(*upright, 4, 2)[0], 200);
    EXPECT_GT(pixelAt(*upright, 4, 13)[2], 200);
}

TEST(BitmapContextTest, DrawsUprightOnceTheAxisIsTurnedUpAndUpsideDownBefore) {
    auto image = filled(2, 2, blue);
    setPixel(*image, 0, 0, red);
    auto context = CGBitmapContext::make(4, 4);
    context->drawImage(CGRect(0, 0, 2, 2), *image);
    auto drawn = context->takeImage();
    EXPECT_EQ(pixelAt(*drawn, 0, 1), red);
    EXPECT_EQ(pixelAt(*drawn, 3, 3), clear);
    context = CGBitmapContext::make(4, 4);
    context->translateCTM(0, 4);
    context->scaleCTM(1, -1);
    context->drawImage(CGRect(0, 2, 2, 2), *image);
    drawn = context->takeImage();
    EXPECT_EQ(pixelAt(*drawn, 0, 0), red);
    EXPECT_EQ(pixelAt(*drawn, 1, 1), blue);
}

TEST(BitmapContextTest, ScalesWithSmoothStepsAndBlendsOverWhatIsThere) {
    auto image = filled(2, 1, red);
    setPixel(*image, 1, 0, blue);
    auto context = CGBitmapContext::make(8, 4);
    context->drawImage(CGRect(0, 0, 8, 4), *image);
    context->drawImage(CGRect(0, 0, 1, 1), *filled(3, 3, {0, 0, 0, 128}));
    const auto drawn = context->takeImage();
    EXPECT_EQ(pixelAt(*drawn, 0, 3), red);
    EXPECT_EQ(pixelAt(*drawn, 7, 3), blue);
    EXPECT_GT(pixelAt(*drawn, 3, 3)[0], pixelAt(*drawn, 4, 3)[0]);
    EXPECT_NEAR(pixelAt(*drawn, 0, 0)[0], 127, 1);
    EXPECT_EQ(pixelAt(*drawn, 0, 0)[3], 255);
}

TEST(BitmapContextTest, WhatLiesOutsideTheCanvasIsLeftOut) {
    auto context = CGBitmapContext::make(4, 4);
    context->translateCTM(-2, 3);
    context->drawImage(CGRect(0, 0, 4, 4), *filled(4, 4, red));
    context->scaleCTM(0, 1);
    context->drawImage(CGRect(0, 0, 4, 4), *filled(4, 4, blue));
    const auto drawn = context->takeImage();
    EXPECT_EQ(pixelAt(*drawn, 1, 3), red);
    EXPECT_EQ(pixelAt(*drawn, 2, 3), clear);
    EXPECT_EQ(pixelAt(*drawn, 1, 2), clear);
}

}  // namespace
}  // namespace ostrel
