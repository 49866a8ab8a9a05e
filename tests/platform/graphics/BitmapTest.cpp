#include "platform/graphics/CGBitmapContext.h"
#include "platform/graphics/UIImage.h"
#include "tests/platform/graphics/PictureTestSupport.h"

#include <gtest/gtest.h>

namespace ostrel {
namespace {

constexpr Pixel red{255, 0, 0, 255}, blue{0, 0, 255, 255}, clear{0, 0, 0, 0};

TEST(BitmapTest, SizesWithoutAreaOrBeyondTheLimitAreRefused) {
    for (const auto& [width, height] : {std::pair{0, 5}, {5, 0}, {-1, 5}, {65501, 1}, {1, 65501}, {20000, 20000}})
        EXPECT_EQ(CGImage::make(width, height), nullptr) << width << " by " << height;
    EXPECT_NE(CGImage::make(65500, 1), nullptr);
}

TEST(BitmapTest, PngKeepsEveryPixelAndJpegNearlyEvery) {
    const auto image = draw(37, 11, [](int x, int y) { return x == 3 && y == 2 ? blue : red; });
    const auto png = CGImage::decode(image->png());
    ASSERT_NE(png, nullptr);
    EXPECT_EQ(at(*png, 3, 2), blue);
    EXPECT_EQ(at(*png, 36, 10), red);
    // White with an alpha of a quarter; colours are multiplied by alpha.
    const auto translucent = CGImage::decode(filled(2, 2, {64, 64, 64, 64})->png());
    EXPECT_EQ(at(*translucent, 1, 1), (Pixel{64, 64, 64, 64}));
    EXPECT_FALSE(translucent->isOpaque());
    const auto jpeg = CGImage::decode(filled(37, 11, {200, 100, 50, 255})->jpeg(0.7));
    ASSERT_NE(jpeg, nullptr);
    expectNear(at(*jpeg, 20, 5), {200, 100, 50, 255}, 4);
    EXPECT_GT(filled(64, 64, red)->jpeg(1).size(), filled(64, 64, red)->jpeg(0).size());
}

TEST(BitmapTest, AnImageOfABitmapIsEncodedForTheScreenAndKeepsItsPixels) {
    const auto image = UIImage::imageWithCGImage(filled(30, 20, red));
    EXPECT_EQ(image->size(), (CGSize{30, 20}));
    const auto shown = UIImage::imageWithData(image->representation(2).data);
    ASSERT_NE(shown, nullptr);
    EXPECT_EQ(shown->size(), (CGSize{30, 20}));
    EXPECT_EQ(UIImage::imageWithCGImage(nullptr), nullptr);
    const auto seen = CGImage::decode(UIImage::imageWithCGImage(filled(3, 3, clear))->representation(1).data);
    ASSERT_NE(seen, nullptr);
    EXPECT_EQ(at(*seen, 1, 1), clear);
}

TEST(BitmapContextTest, DrawsUprightOnceTheAxisIsTurnedUpAndUpsideDownBefore) {
    const auto image = draw(2, 2, [](int x, int y) { return x + y == 0 ? red : blue; });
    auto context = CGBitmapContext::make(4, 4);
    context->drawImage(CGRect(0, 0, 2, 2), *image);
    auto drawn = context->takeImage();
    EXPECT_EQ(at(*drawn, 0, 1), red);
    EXPECT_EQ(at(*drawn, 3, 3), clear);
    context = CGBitmapContext::make(4, 4);
    context->translateCTM(0, 4);
    context->scaleCTM(1, -1);
    context->drawImage(CGRect(0, 2, 2, 2), *image);
    drawn = context->takeImage();
    EXPECT_EQ(at(*drawn, 0, 0), red);
    EXPECT_EQ(at(*drawn, 1, 1), blue);
    for (int y = 0; y < 4; ++y) EXPECT_EQ(at(*drawn, 2, y), clear) << "beside the picture";
}

TEST(BitmapContextTest, ScalesSmoothlyAndBlendsOverTheCanvas) {
    const auto image = draw(2, 1, [](int x, int) { return x == 0 ? red : blue; });
    auto context = CGBitmapContext::make(8, 4);
    context->drawImage(CGRect(0, 0, 8, 4), *image);
    context->drawImage(CGRect(0, 0, 1, 1), *filled(3, 3, {0, 0, 0, 128}));
    const auto drawn = context->takeImage();
    EXPECT_EQ(at(*drawn, 0, 3), red);
    EXPECT_EQ(at(*drawn, 7, 3), blue);
    EXPECT_GT(at(*drawn, 3, 3)[0], at(*drawn, 4, 3)[0]);
    expectNear(at(*drawn, 0, 0), {127, 0, 0, 255}, 1);
}

TEST(BitmapContextTest, DrawingIsClippedToTheCanvas) {
    auto context = CGBitmapContext::make(4, 4);
    context->translateCTM(-2, 3);
    context->drawImage(CGRect(0, 0, 4, 4), *filled(4, 4, red));
    context->scaleCTM(0, 1);
    context->drawImage(CGRect(0, 0, 4, 4), *filled(4, 4, blue));
    const auto drawn = context->takeImage();
    EXPECT_EQ(at(*drawn, 1, 3), red);
    EXPECT_EQ(at(*drawn, 2, 3), clear);
    EXPECT_EQ(at(*drawn, 1, 2), clear);
}

}  // namespace
}  // namespace ostrel
