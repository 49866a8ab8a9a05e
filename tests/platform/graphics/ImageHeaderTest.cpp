#include "platform/graphics/UIImage.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <random>

namespace ostrel {

namespace {

std::string big16(unsigned v) { return {static_cast<char>(v >> 8), static_cast<char>(v)}; }
std::string big32(unsigned v) { return big16(v >> 16) + big16(v & 0xFFFF); }
std::string little16(unsigned v) { return {static_cast<char>(v), static_cast<char>(v >> 8)}; }
std::string little24(unsigned v) { return little16(v & 0xFFFF) + static_cast<char>(v >> 16); }
std::string little32(unsigned v) { return little16(v & 0xFFFF) + little16(v >> 16); }

std::string png(unsigned width, unsigned height) {
    return "\x89PNG\r\n\x1A\n" + big32(13) + "IHDR" + big32(width) + big32(height) + std::string("\x08\x06\0\0\0", 5);
}

std::string segment(unsigned char marker, const std::string& body) {
    return std::string("\xFF") + static_cast<char>(marker) + big16(static_cast<unsigned>(body.size() + 2)) + body;
}

std::string frame(unsigned char marker, unsigned width, unsigned height) {
    return segment(marker, "\x08" + big16(height) + big16(width) + std::string("\x01\x01\x11\0", 4));
}

std::string exif(unsigned orientation, bool little, unsigned type = 3) {
    const auto s = [&](unsigned v) { return little ? little16(v) : big16(v); };
    const auto l = [&](unsigned v) { return little ? little32(v) : big32(v); };
    return segment(0xE1, std::string("Exif\0\0", 6) + (little ? "II" : "MM") + s(42) + l(8) + s(2) + s(271) + s(2) +
                             l(1) + l(0) + s(274) + s(type) + l(1) + s(orientation) + s(0) + l(0));
}

std::string jpeg(const std::string& segments) { return "\xFF\xD8" + segments + "\xFF\xDA"; }

std::string webp(const std::string& chunk, const std::string& body) {
    return "RIFF" + little32(static_cast<unsigned>(body.size() + 12)) + "WEBP" + chunk +
           little32(static_cast<unsigned>(body.size())) + body;
}

std::string vp8l(unsigned width, unsigned height) {
    return webp("VP8L", "\x2F" + little32((width - 1) | (height - 1) << 14));
}

std::string vp8(unsigned width, unsigned height) {
    return webp("VP8 ", std::string("\x10\x02\0\x9D\x01\x2A", 6) + little16(width) + little16(height));
}

std::string vp8x(unsigned width, unsigned height) {
    return webp("VP8X", std::string("\x10\0\0\0", 4) + little24(width - 1) + little24(height - 1));
}

TEST(ImageHeader, ReadsFormatSizeAndOrientation) {
    constexpr auto isPng = ImageFormat::png, isGif = ImageFormat::gif, isJpeg = ImageFormat::jpeg,
                   isWebP = ImageFormat::webp;
    const std::string jfif = segment(0xE0, std::string("JFIF\0\1\1\0\0\1\0\1\0\0", 14));
    const std::string large = frame(0xC0, 640, 480), small = frame(0xC0, 6, 4);
    const std::string tables = segment(0xC4, "tables") + segment(0xDB, "more");
    const std::string broken = segment(0xE1, std::string("Exif\0\0II*\0\xFF\xFF\xFF\xFF", 14));
    const std::tuple<const char*, ImageFormat, int, int, int, std::string> cases[] = {
        {"PNG", isPng, 300, 200, 1, png(300, 200)},
        {"largest", isPng, 65500, 1, 1, png(65500, 1)},
        {"GIF 87a", isGif, 10, 20, 1, "GIF87a" + little16(10) + little16(20)},
        {"GIF 89a", isGif, 300, 1, 1, "GIF89a" + little16(300) + little16(1)},
        {"JPEG", isJpeg, 640, 480, 1, jpeg(jfif + large)},
        {"progressive", isJpeg, 640, 480, 1, jpeg(jfif + frame(0xC2, 640, 480))},
        {"tables before the frame", isJpeg, 6, 4, 1, jpeg(tables + frame(0xC1, 6, 4))},
        {"fill bytes", isJpeg, 6, 4, 1, jpeg("\xFF\xFF" + small)},
        {"turned by a quarter", isJpeg, 480, 640, 6, jpeg(exif(6, true) + large)},
        {"upside down, big-endian", isJpeg, 640, 480, 3, jpeg(jfif + exif(3, false) + large)},
        {"mirrored and turned", isJpeg, 480, 640, 8, jpeg(exif(8, false) + large)},
        {"orientation beyond the scale", isJpeg, 640, 480, 1, jpeg(exif(9, true) + large)},
        {"orientation of another type", isJpeg, 640, 480, 1, jpeg(exif(6, true, 4) + large)},
        {"broken EXIF", isJpeg, 6, 4, 1, jpeg(broken + small)},
        {"lossy WebP", isWebP, 550, 368, 1, vp8(550, 368)},
        {"lossy WebP to be scaled", isWebP, 550, 368, 1, vp8(550 | 0x4000, 368 | 0x8000)},
        {"lossless WebP", isWebP, 16384, 5, 1, vp8l(16384, 5)},
        {"extended WebP", isWebP, 1000, 65500, 1, vp8x(1000, 65500)},
    };
    for (const auto& [what, format, width, height, orientation, bytes] : cases) {
        const auto header = ImageHeader::read(Data::copy(bytes));
        ASSERT_TRUE(header) << what;
        EXPECT_EQ(header->format, format) << what;
        EXPECT_EQ(header->pixelWidth, width) << what;
        EXPECT_EQ(header->pixelHeight, height) << what;
        EXPECT_EQ(header->orientation, orientation) << what;
        // A file that is cut before the end of its size is no picture, and is never read beyond its end.
        bool wasRead = true;
        for (std::size_t length = bytes.size(); length-- > 0;) {
            const bool isRead = ImageHeader::read(Data::copy(std::string_view(bytes).substr(0, length))).has_value();
            EXPECT_TRUE(wasRead || !isRead) << what << ", " << length << " bytes";
            wasRead = isRead;
        }
        EXPECT_FALSE(wasRead);
    }
}

TEST(ImageHeader, CountsTheBytesThatADecoderKeepsOfAJpegInSeveralScans) {
    // Three components, of which the first has twice the resolution in both directions.
    const auto threeComponents = [](unsigned char marker) {
        return segment(marker, "\x08" + big16(16) + big16(33) + std::string("\x03\x01\x22\0\x02\x11\1\x03\x11\1", 10));
    };
    const std::string tables = segment(0xC4, "tables");
    const std::string all("\xFF\xDA\0\x0C\x03\x01\0\x02\x11\x03\x11\0\x3F\0", 14),
        one("\xFF\xDA\0\x08\x01\x01\0\0\x3F\0", 10);
    // 3 by 1 units of 16 by 16 pixels, of 6 blocks of 64 coefficients each.
    constexpr std::int64_t whole = 3 * 6 * 64 * 2;
    const std::tuple<const char*, std::string, std::int64_t> cases[] = {
        {"one scan", threeComponents(0xC0) + tables + all, 0},
        {"one scan, extended", threeComponents(0xC1) + all, 0},
        {"a scan each", threeComponents(0xC0) + tables + one, whole},
        {"progressive", threeComponents(0xC2) + all, whole},
        {"no scan", threeComponents(0xC0) + tables, whole},
    };
    for (const auto& [what, bytes, expected] : cases) {
        const auto header = ImageHeader::read(Data::copy("\xFF\xD8" + bytes));
        ASSERT_TRUE(header) << what;
        EXPECT_EQ(header->coefficientBytes, expected) << what;
    }
}

TEST(ImageHeader, RejectsOtherBytes) {
    const std::pair<const char*, std::string> cases[] = {
        {"nothing", ""},
        {"text", "<html><body>404</body></html>"},
        {"a size of nothing", png(0, 10)},
        {"too large", png(65501, 10)},
        {"far too large", png(0xFFFFFFFF, 0xFFFFFFFF)},
        {"too large WebP", vp8x(65501, 1)},
        {"PNG without IHDR", std::string(png(1, 1)).replace(12, 4, "IDAT")},
        {"JPEG without a frame", jpeg(segment(0xE0, "x"))},
        {"JPEG of unknown height", jpeg(frame(0xC0, 640, 0))},
        {"segment shorter than its length", "\xFF\xD8\xFF\xE0" + big16(60000)},
        {"segment length 0", "\xFF\xD8\xFF\xE0" + big16(0) + std::string(100, '\0')},
        {"frame too short", jpeg(segment(0xC0, "abc"))},
        {"no marker where one has to be", "\xFF\xD8\xFF\xE0" + big16(3) + "abcdefgh"},
        {"WebP with another chunk", webp("VP8Z", std::string(20, 'x'))},
        {"lossy WebP without its start code", webp("VP8 ", std::string(20, 'x'))},
        {"lossless WebP without its signature", webp("VP8L", std::string(20, 'x'))},
    };
    for (const auto& [what, bytes] : cases) EXPECT_FALSE(ImageHeader::read(Data::copy(bytes))) << what;
}

TEST(ImageHeader, RandomDamageIsHarmless) {
    const auto seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const std::string files[] = {png(9, 9), jpeg(exif(6, true) + frame(0xC0, 9, 9)), vp8(9, 9), vp8l(9, 9), vp8x(9, 9)};
    for (int i = 0; i < 20000; ++i) {
        std::string bytes = files[random() % std::size(files)];
        for (unsigned k = random() % 4; k-- > 0;) bytes[random() % bytes.size()] = static_cast<char>(random());
        bytes.resize(random() % (bytes.size() + 1));
        const auto header = ImageHeader::read(Data::copy(bytes));
        if (!header) continue;
        EXPECT_TRUE(header->pixelWidth >= 1 && header->pixelWidth <= 65500);
        EXPECT_TRUE(header->pixelHeight >= 1 && header->pixelHeight <= 65500);
    }
}

TEST(ImageFiles, AFileAndItsNeighboursAreOnePicture) {
    const TemporaryFolder folder;
    const std::string path = folder.write("a.b.png", png(10, 20));
    folder.write("a.b@2x.png", png(20, 40));
    folder.write("a.b@3x.png", "broken");
    const auto image = UIImage::imageWithContentsOfFile(path);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->size(), (CGSize{10, 20}));
    EXPECT_EQ(image->representation(1).scale, 1);
    EXPECT_EQ(image->representation(1.25).scale, 2);
    EXPECT_EQ(image->representation(3).scale, 2) << "the largest there is";
    EXPECT_EQ(UIImage::imageWithContentsOfFile(path), image);
    EXPECT_EQ(UIImage::imageWithContentsOfFile(folder.write("text.png", "text")), nullptr);
    EXPECT_EQ(UIImage::imageWithContentsOfFile(folder.path("none.png")), nullptr);

    folder.write("c@2x.png", png(20, 40));
    const auto sharp = UIImage::imageWithContentsOfFile(folder.path("c.png"));
    ASSERT_TRUE(sharp);
    EXPECT_EQ(sharp->size(), (CGSize{10, 20}));
    EXPECT_NE(sharp->identifier(), image->identifier());
    EXPECT_EQ(UIImage::imageWithData(Data::copy(png(30, 30)), 3)->size(), (CGSize{10, 10}));
}

TEST(Symbols, AllAreDrawnWithinTheirSquare) {
    for (const char* name :
         {"chevron.right", "chevron.left", "chevron.down", "checkmark", "info.circle", "plus", "square.and.arrow.up",
          "xmark", "trash", "pencil", "link", "safari", "envelope", "person.crop.circle", "arrow.clockwise", "ellipsis",
          "exclamationmark.circle", "doc.on.doc"}) {
        const auto image = UIImage::systemImageNamed(name);
        ASSERT_TRUE(image && image->isSymbol()) << name;
        EXPECT_EQ(UIImage::systemImageNamed(name), image) << name;
        const Path& path = *image->path();
        const CGFloat half = path.strokeWidth / 2;
        bool open = false;
        for (const auto& element : path.elements) {
            CGPoint low = element.p1, high = element.p1;
            const Path::Verb verb = element.verb;
            if (verb == Path::Verb::close) continue;
            if (verb == Path::Verb::cubicTo) low = high = element.p3;
            if (verb == Path::Verb::ellipse) {
                low = {element.p1.x - element.p2.x, element.p1.y - element.p2.y};
                high = {element.p1.x + element.p2.x, element.p1.y + element.p2.y};
            }
            open = open || verb == Path::Verb::moveTo;
            EXPECT_TRUE(open || verb == Path::Verb::ellipse) << name << ": a line begins somewhere";
            EXPECT_GE(std::min(low.x, low.y), half) << name;
            EXPECT_LE(std::max(high.x, high.y), path.extent - half) << name;
        }
    }
    EXPECT_EQ(UIImage::systemImageNamed("unknown"), nullptr);
}

TEST(Path, AnArcStaysOnItsCircle) {
    Path path;
    path.arc(10, 10, 5, -35, -340);
    CGPoint start = path.elements.front().p1;
    for (const auto& [verb, p1, p2, end] : path.elements) {
        if (verb != Path::Verb::cubicTo) continue;
        const CGPoint middle{(start.x + 3 * p1.x + 3 * p2.x + end.x) / 8, (start.y + 3 * p1.y + 3 * p2.y + end.y) / 8};
        for (const CGPoint point : {middle, end}) EXPECT_NEAR(std::hypot(point.x - 10, point.y - 10), 5, 0.01);
        start = end;
    }
}

}  // namespace

}  // namespace ostrel
