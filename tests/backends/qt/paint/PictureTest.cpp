#include "backends/qt/paint/PictureStore.h"
#include "tests/backends/qt/QtTestWindow.h"

#include <gtest/gtest.h>
#include <QBuffer>
#include <QImageWriter>
#include <string>

namespace ostrel::test {

namespace {

/// Red on the left, blue on the right, the upper half darker.
QImage sample(int width, int height) {
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const int value = 2 * y < height ? 128 : 255;
            image.setPixel(x, y, 2 * x < width ? qRgb(value, 0, 0) : qRgb(0, 0, value));
        }
    }
    return image;
}

std::string encoded(const QImage& image, const char* format, bool progressive = false) {
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    writer.setQuality(90);
    writer.setProgressiveScanWrite(progressive);
    EXPECT_TRUE(writer.write(image)) << format << ": " << writer.errorString().toStdString();
    return buffer.data().toStdString();
}

/// The JPEG with an EXIF orientation.
std::string turned(std::string jpeg, char orientation) {
    const std::string exif = std::string("\xFF\xE1\0\x22", 4) + std::string("Exif\0\0", 6) +
                             std::string("II*\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0", 18) +
                             std::string(1, orientation) + std::string(7, '\0');
    return jpeg.insert(2, exif);
}

/// The JPEG with another size in its frame header.
std::string resized(std::string jpeg, unsigned side) {
    for (std::size_t at = 2; at + 9 < jpeg.size();) {
        const auto marker = static_cast<unsigned char>(jpeg[at + 1]);
        if (marker == 0xC0 || marker == 0xC2) {
            for (const std::size_t offset : {at + 5, at + 7}) {
                jpeg[offset] = static_cast<char>(side >> 8);
                jpeg[offset + 1] = static_cast<char>(side);
            }
            break;
        }
        at += 2 + static_cast<unsigned char>(jpeg[at + 2]) * 256u + static_cast<unsigned char>(jpeg[at + 3]);
    }
    return jpeg;
}

/// The decoded picture in a view of this width; null when the bytes are no picture or cannot be decoded.
QImage shown(const std::string& bytes, double width) {
    const auto image = UIImage::imageWithData(Data::copy(bytes));
    if (!image) return {};
    PictureStore store([] {});
    const double height = width * image->size().height / image->size().width;
    return store.obtain(*image, PictureStore::keyFor(*image, width, height));
}

TEST(Pictures, AreDecodedUprightAtTheSizeTheyAreShown) {
    const QColor dark(128, 0, 0), bright(255, 0, 0), darkBlue(0, 0, 128), brightBlue(0, 0, 255);
    struct Case {
        const char* what;
        std::string bytes;
        // At a width of 60.
        QSize size;
        // Upper left, upper right, lower left, lower right.
        QColor colors[4];
    };
    const QImage wide = sample(600, 400);
    const std::string jpeg = encoded(wide, "jpeg");
    const Case cases[] = {
        {"PNG", encoded(wide, "png"), {60, 40}, {dark, darkBlue, bright, brightBlue}},
        {"JPEG", jpeg, {60, 40}, {dark, darkBlue, bright, brightBlue}},
        {"progressive JPEG", encoded(wide, "jpeg", true), {60, 40}, {dark, darkBlue, bright, brightBlue}},
        {"WebP", encoded(wide, "webp"), {60, 40}, {dark, darkBlue, bright, brightBlue}},
        {"JPEG mirrored", turned(jpeg, 2), {60, 40}, {darkBlue, dark, brightBlue, bright}},
        {"JPEG upside down", turned(jpeg, 3), {60, 40}, {brightBlue, bright, darkBlue, dark}},
        {"JPEG to be turned clockwise", turned(jpeg, 6), {60, 90}, {bright, dark, brightBlue, darkBlue}},
        {"JPEG to be turned the other way", turned(jpeg, 8), {60, 90}, {darkBlue, brightBlue, dark, bright}},
        {"smaller than shown", encoded(sample(30, 20), "png"), {30, 20}, {dark, darkBlue, bright, brightBlue}},
    };
    for (const Case& c : cases) {
        const QImage picture = shown(c.bytes, 60);
        ASSERT_EQ(picture.size(), c.size) << c.what;
        for (int i = 0; i < 4; ++i) {
            const QColor found =
                picture.pixelColor((i % 2 ? 3 : 1) * picture.width() / 4, (i / 2 ? 3 : 1) * picture.height() / 4);
            EXPECT_TRUE(isNear(found, c.colors[i], 10)) << c.what << ", " << i << ": " << found.name().toStdString();
        }
    }
}

TEST(Pictures, OfAnAnimationTheFirstFrameIsShown) {
    // One pixel, red in the first frame, blue in the second.
    const std::string gif("GIF89a\1\0\1\0\x80\0\0\xFF\0\0\0\0\xFF"
                          ",\0\0\0\0\1\0\1\0\0\2\2\x44\1\0"
                          ",\0\0\0\0\1\0\1\0\0\2\2\x4C\1\0;",
                          50);
    const QImage picture = shown(gif, 10);
    ASSERT_EQ(picture.size(), QSize(1, 1));
    EXPECT_EQ(picture.pixelColor(0, 0), QColor(255, 0, 0));
}

TEST(Pictures, WhatCannotBeDecodedOrWouldTakeTooMuchIsLeftOut) {
    const QImage small = sample(64, 48);
    const std::string png = encoded(small, "png"), jpeg = encoded(small, "jpeg"), webp = encoded(small, "webp");
    std::string hugePng = png;
    hugePng.replace(16, 8, std::string("\0\0\x75\x30\0\0\x75\x30", 8));
    std::string damaged = png;
    damaged.replace(damaged.size() / 2, 8, "????????");
    const std::pair<const char*, std::string> cases[] = {
        {"PNG of 30,000 by 30,000", hugePng},
        {"progressive JPEG of 30,000 by 30,000", resized(encoded(small, "jpeg", true), 30000)},
        {"damaged PNG", damaged},
        {"WebP cut short", webp.substr(0, webp.size() / 3)},
        {"JPEG without a scan", jpeg.substr(0, 400)},
        {"one kind's header, another's contents", png.substr(0, 33) + jpeg},
        {"HTML", "<!DOCTYPE html><title>404</title>"},
    };
    for (const auto& [what, bytes] : cases) EXPECT_TRUE(shown(bytes, 320).isNull()) << what;
    EXPECT_EQ(shown("\x89" + png.substr(1), 32).size(), QSize(32, 24)) << "the bytes count, there is no name";
}

TEST(Pictures, OfAJpegCutShortTheFirstPartIsShown) {
    const std::string jpeg = encoded(sample(640, 480), "jpeg");
    const QImage picture = shown(jpeg.substr(0, jpeg.size() * 2 / 3), 320);
    ASSERT_EQ(picture.size(), QSize(320, 240));
    EXPECT_TRUE(isNear(picture.pixelColor(10, 10), QColor(128, 0, 0), 10));
}

TEST(Pictures, OneStaysUntilTheNextIsDecoded) {
    const auto solid = [](const QColor& color, int side) {
        QImage image(side, side, QImage::Format_RGB32);
        image.fill(color);
        return UIImage::imageWithData(Data::copy(encoded(image, "png")));
    };
    QtTestWindow window;
    Spec picture = box({0, 0, 150, 150}, {});
    picture.state.content = ImageContent{solid(Qt::red, 300), UIViewContentMode::scaleAspectFit, {}};
    const auto tags =
        window.mount(box({0, 0, 200, 200}, UIColor::white(), {surface({0, 0, 200, 200}, UIColor::white(), {picture})}));
    window.grab();
    ASSERT_EQ(window.at(75, 75), QColor(Qt::red));
    // Decoding takes longer than several frames.
    std::get<ImageContent>(picture.state.content).image = solid(Qt::blue, 3000);
    window.mount({Mutation::update(tags[2], std::make_shared<ViewState>(picture.state), changedContent)});
    QColor seen;
    EXPECT_TRUE(waitUntil([&] {
        seen = window.window().grabWindow().pixelColor(QPoint(75, 75) * static_cast<int>(window.scale()));
        EXPECT_TRUE(seen == QColor(Qt::red) || seen == QColor(Qt::blue)) << seen.name().toStdString();
        return seen == QColor(Qt::blue);
    }));
}

TEST(Pictures, KeysStayWithinWhatAPictureMayTake) {
    const std::string bytes = encoded(sample(40, 40), "png");
    const std::pair<QSize, CGSize> cases[] = {{{30000, 30000}, {30000, 30000}},
                                              {{65500, 10}, {60000, 9}},
                                              {{10, 65500}, {365, 60000}},
                                              {{4000, 3000}, {4000, 3000}}};
    const auto big = [](int v) { return std::string{char(v >> 24), char(v >> 16), char(v >> 8), char(v)}; };
    for (const auto& [pixels, size] : cases) {
        std::string png = bytes;
        png.replace(16, 8, big(pixels.width()) + big(pixels.height()));
        const auto image = UIImage::imageWithData(Data::copy(png));
        ASSERT_TRUE(image);
        const PictureKey key = PictureStore::keyFor(*image, size.width, size.height);
        EXPECT_GE(key.width, 1);
        EXPECT_GE(key.height, 1);
        EXPECT_LE(std::int64_t(key.width) * key.height, 8 << 20);
        EXPECT_LE(std::max(key.width, key.height), 8192);
    }
}

}  // namespace

}  // namespace ostrel::test
