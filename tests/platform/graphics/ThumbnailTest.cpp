#include "platform/graphics/ImageDecoder.h"
#include "platform/graphics/ImageThumbnail.h"
#include "platform/graphics/UIImage.h"
#include "tests/platform/graphics/PictureTestSupport.h"

#include <gtest/gtest.h>

namespace ostrel {
namespace {

/// Red at the upper left, green at the upper right, blue at the lower left, grey at the lower right.
Pixel quarters(bool isRight, bool isLower) {
    if (isLower) return isRight ? std::array{128, 128, 128, 255} : std::array{0, 0, 255, 255};
    return isRight ? std::array{0, 255, 0, 255} : std::array{255, 0, 0, 255};
}

/// `jpeg` with an EXIF segment that states the orientation (TIFF 6.0, tag 274).
Data withOrientation(const Data& jpeg, char orientation) {
    std::string bytes(jpeg.view());
    std::string exif("\xFF\xE1\0\x22"
                     "Exif\0\0II*\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0\x01\0\0\0\0\0\0\0",
                     36);
    exif[28] = orientation;
    return Data::take(bytes.insert(2, exif));
}

TEST(Thumbnail, IsTheMiddleOfThePictureAtEverySize) {
    // The thumbnail must not contain the dark frame beside (or above and below) the middle square.
    for (const auto& [width, height] : {std::pair{900, 300}, {300, 900}, {301, 300}, {640, 480}, {4000, 3000}}) {
        const int square = std::min(width, height), left = (width - square) / 2, top = (height - square) / 2;
        const auto picture = draw(width, height, [&](int x, int y) {
            const bool isInside = x >= left && x < left + square && y >= top && y < top + square;
            return isInside ? quarters(x >= left + square / 2, y >= top + square / 2) : std::array{0, 0, 0, 255};
        });
        for (const Data& data : {picture->jpeg(0.95), picture->png()}) {
            for (const int side : {1, 97, 240, 5000}) {
                const auto small = squareThumbnail(data, side);
                const std::string where =
                    std::to_string(width) + "x" + std::to_string(height) + " to " + std::to_string(side);
                ASSERT_TRUE(small) << where;
                EXPECT_EQ(small->width(), std::min(side, square)) << where;
                EXPECT_EQ(small->height(), small->width());
                if (side < 97) continue;
                const int low = small->width() / 5, high = small->width() * 4 / 5;
                for (const auto& [x, y] : {std::pair{low, low}, {high, low}, {low, high}, {high, high}})
                    expectNear(at(*small, x, y), quarters(x == high, y == high), 12, where);
            }
        }
    }
}

TEST(Thumbnail, EveryPixelCountsByItsArea) {
    // One pixel in 25 is white, and alpha counts like a colour.
    const auto picture = draw(50, 50, [](int x, int y) {
        return x % 5 == 2 && y % 5 == 3 ? std::array{250, 250, 250, 250} : std::array{0, 0, 0, 0};
    });
    for (const int side : {10, 5, 1}) {
        const auto small = squareThumbnail(*picture, {}, side);
        for (int i = 0; i < side * side; ++i)
            expectNear(at(*small, i % side, i / side), {10, 10, 10, 10}, 0, std::to_string(side));
    }
    // Sizes that do not divide each other keep the average.
    const auto odd = squareThumbnail(*filled(7, 7, {200, 100, 50, 255}), {}, 3);
    for (int i = 0; i < 9; ++i) expectNear(at(*odd, i % 3, i / 3), {200, 100, 50, 255}, 1, "7 to 3");
}

TEST(Thumbnail, AndTheWholePictureAreUprightAsOrientationAndTransformSay) {
    // Which stored corner is seen at the upper left and at the upper right: 0 to 3 in reading order.
    const std::tuple<char, CGAffineTransform, int, int> cases[] = {
        {1, {1, 0, 0, 1}, 0, 1}, {2, {-1, 0, 0, 1}, 1, 0}, {3, {-1, 0, 0, -1}, 3, 2}, {4, {1, 0, 0, -1}, 2, 3},
        {5, {0, 1, 1, 0}, 0, 2}, {6, {0, 1, -1, 0}, 2, 0}, {7, {0, -1, -1, 0}, 3, 1}, {8, {0, -1, 1, 0}, 1, 3}};
    const auto picture = draw(90, 60, [](int x, int y) { return quarters(x >= 45, y >= 30); });
    const Data jpeg = picture->jpeg(0.95);
    for (const auto& [orientation, transform, upperLeft, upperRight] : cases) {
        const Data file = withOrientation(jpeg, orientation);
        const std::string where = "orientation " + std::to_string(orientation);
        for (const auto& seen : {squareThumbnail(file, 40), squareThumbnail(*picture, transform, 40)}) {
            ASSERT_TRUE(seen);
            expectNear(at(*seen, 8, 8), quarters(upperLeft % 2, upperLeft / 2), 14, where);
            expectNear(at(*seen, 32, 8), quarters(upperRight % 2, upperRight / 2), 14, where);
        }
        const auto whole = UIImage::imageWithData(file)->cgImage();
        ASSERT_EQ(whole->width(), orientation < 5 ? 90 : 60) << where;
        expectNear(at(*whole, 8, 8), quarters(upperLeft % 2, upperLeft / 2), 14, where);
        expectNear(at(*whole, 52, 8), quarters(upperRight % 2, upperRight / 2), 14, where);
    }
}

TEST(Thumbnail, UnusablePicturesGetASentence) {
    const auto picture = draw(64, 64, [](int x, int y) { return std::array{x * 3, y * 3, (x * y) % 255, 255}; });
    const std::string png(picture->png().view()), jpeg(picture->jpeg(0.9).view());
    std::string hugePng = png, hugeJpeg = jpeg;
    hugePng.replace(16, 8, std::string("\0\0\x4E\x20\0\0\x4E\x20", 8));  // 20,000 by 20,000
    const auto frame = hugeJpeg.find("\xFF\xC0");
    ASSERT_NE(frame, std::string::npos);
    hugeJpeg.replace(frame + 5, 4, "\x4E\x20\x4E\x20");
    std::string damaged = png;
    for (std::size_t i = 60; i < 90; ++i) damaged[i] = static_cast<char>(~damaged[i]);
    const std::tuple<const char*, std::string, std::string> cases[] = {
        {"empty", "", "It is no picture in a known format."},
        {"text", "hello", "It is no picture in a known format."},
        {"start of a JPEG", jpeg.substr(0, 3), "It is no picture in a known format."},
        {"truncated PNG", png.substr(0, png.size() / 2), "The picture is damaged."},
        {"damaged PNG", damaged, "The picture is damaged."},
        {"PNG signature", png.substr(0, 8), "It is no picture in a known format."},
        {"header alone", png.substr(0, 33), "The picture is damaged."},
        {"20,000 by 20,000 PNG", hugePng, "The picture is too large."},
        {"20,000 by 20,000 JPEG", hugeJpeg, "The picture is too large."},
        {"GIF without a decoder", std::string("GIF89a\1\0\1\0\0\0\0", 13), "The picture is damaged."}};
    for (const auto& [name, bytes, sentence] : cases) {
        std::string error;
        EXPECT_FALSE(squareThumbnail(Data::copy(bytes), 32, &error)) << name;
        EXPECT_EQ(error, sentence) << name;
        EXPECT_EQ(CGImage::decode(Data::copy(bytes)), nullptr) << name;
    }
    // One pixel is a picture. A JPEG that ends early is one too, because its upper part is complete.
    EXPECT_EQ(squareThumbnail(filled(1, 1, {9, 8, 7, 255})->png(), 240)->width(), 1);
    EXPECT_TRUE(squareThumbnail(Data::copy(std::string_view(jpeg).substr(0, jpeg.size() - 40)), 32));
}

TEST(Thumbnail, OtherFormatsAreAskedOfTheInstalledDecoder) {
    const Data gif = Data::copy(std::string_view("GIF89a\4\0\2\0\0\0\0", 13));
    installImageDecoder([](const Data& data) {
        return data.view().starts_with("GIF") ? filled(4, 2, {1, 2, 3, 255}) : nullptr;
    });
    const auto small = squareThumbnail(gif, 8);
    const auto image = UIImage::imageWithData(gif);
    installImageDecoder({});
    ASSERT_TRUE(small);
    EXPECT_EQ(at(*small, 1, 1), (std::array{1, 2, 3, 255}));
    ASSERT_TRUE(image);
    EXPECT_FALSE(image->cgImage()) << "the decoder was taken out";
}

}  // namespace
}  // namespace ostrel
