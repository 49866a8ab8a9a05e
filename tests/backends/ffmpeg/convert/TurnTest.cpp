#include "backends/ffmpeg/convert/FrameThinner.h"
#include "backends/ffmpeg/convert/PictureGeometry.h"
#include "tests/backends/ffmpeg/ClipProbe.h"
#include "tests/backends/ffmpeg/FfmpegTest.h"

namespace ostrel {
namespace {

/// Overwrites the transform in the header of the first track that has pixels (ISO/IEC 14496-12, tkhd).
std::string withTransform(std::string bytes, int a, int b, int c, int d) {
    // Version 0: the matrix begins 44 bytes after the beginning of the type.
    const std::size_t matrix = bytes.find("tkhd") + 4 + 40;
    for (const auto& [index, value] : {std::pair<std::size_t, int>{0, a}, {1, b}, {3, c}, {4, d}}) {
        const auto fixed = static_cast<std::uint32_t>(value) << 16;
        for (std::size_t i = 0; i < 4; ++i) bytes[matrix + index * 4 + i] = static_cast<char>(fixed >> (24 - 8 * i));
    }
    return bytes;
}

/// Which quarter of a picture is red: "top left" and so on.
std::string redQuarter(const UIImage& image) {
    const auto bitmap = image.cgImage();
    const auto isRed = [&](int x, int y) {
        const std::uint8_t* pixel = bitmap->row(y) + static_cast<std::size_t>(x) * CGImage::bytesPerPixel;
        return pixel[0] > 150 && pixel[1] < 110 && pixel[2] < 110;
    };
    const int w = bitmap->width(), h = bitmap->height();
    std::string found;
    for (const int y : {h / 4, h * 3 / 4}) {
        for (const int x : {w / 4, w * 3 / 4}) {
            if (isRed(x, y)) found += std::string(y < h / 2 ? "top " : "bottom ") + (x < w / 2 ? "left" : "right");
        }
    }
    return found;
}

class TurnTest : public FfmpegTest {};

TEST_F(TurnTest, EveryTurnAndMirroringIsSeenUprightInTheResult) {
    // Landscape, blue, the upper left quarter red.
    const std::string source = contentOf(ClipMaker::shared().make(
        "quarter.mov", "-f lavfi -i color=blue:s=160x90:r=30:d=0.1 -vf drawbox=w=80:h=45:color=red:t=fill "
                       "-c:v libx264 -preset ultrafast -pix_fmt yuv420p"));
    struct Case {
        int a, b, c, d;
        const char* red;
        bool isPortrait;
        // In the picture of the turned clip itself, which is not mirrored. Null: not checked.
        const char* inspected = nullptr;
    };
    for (const Case& c :
         {Case{1, 0, 0, 1, "top left", false, "top left"}, Case{0, 1, -1, 0, "top right", true, "top right"},
          Case{-1, 0, 0, -1, "bottom right", false, "bottom right"},
          Case{0, -1, 1, 0, "bottom left", true, "bottom left"}, Case{-1, 0, 0, 1, "top right", false, "top left"},
          Case{1, 0, 0, -1, "bottom left", false}, Case{0, 1, 1, 0, "top left", true},
          Case{0, -1, -1, 0, "bottom right", true}}) {
        SCOPED_TRACE(testing::Message() << c.a << " " << c.b << " " << c.c << " " << c.d);
        const std::string turned = folder.write("turned.mov", withTransform(source, c.a, c.b, c.c, c.d));
        ASSERT_TRUE(convert(turned, out()).succeeded());
        const CGSize size = c.isPortrait ? CGSize{90, 160} : CGSize{160, 90};
        for (const auto& [path, red] : {std::pair{out(), c.red}, {turned, c.inspected}}) {
            if (!red) continue;
            const auto image = picture(path);
            ASSERT_NE(image, nullptr);
            EXPECT_EQ(image->size(), size);
            EXPECT_EQ(redQuarter(*image), red);
        }
        const auto clip = probeClip(out());
        ASSERT_TRUE(clip);
        EXPECT_FALSE(clip->isTurned);
    }
}

TEST(PictureGeometryTest, SizesFitTheBoxWithoutGrowing) {
    struct Case {
        PixelSize encoded;
        double aspect;
        PixelSize fitted;
    };
    constexpr PixelSize box{640, 360};
    for (const Case& c :
         {Case{{1920, 1080}, 1, {640, 360}}, Case{{1080, 1920}, 1, {360, 640}}, Case{{1280, 720}, 0.5, {360, 406}},
          Case{{640, 480}, 2, {640, 240}}, Case{{100, 100}, 0.25, {26, 100}}, Case{{3, 3}, 1, {2, 2}},
          Case{{1, 1}, 1, {2, 2}}, Case{{16384, 1}, 1, {640, 2}}, Case{{720, 576}, 1e9, {450, 360}},
          Case{{720, 576}, -1, {450, 360}}, Case{{720, 576}, std::nan(""), {450, 360}}}) {
        const PixelSize size = fittedSize(c.encoded, c.aspect, box);
        EXPECT_EQ(size, c.fitted) << c.encoded.width << "x" << c.encoded.height << " at " << c.aspect << " became "
                                  << size.width << "x" << size.height;
    }
}

TEST(FrameThinnerTest, KeepsAtMostItsRateAndEverythingSlower) {
    struct Case {
        double framesPerSecond, jitter;
        double keptPerSecond;
    };
    for (const Case& c :
         {Case{30, 0, 30}, Case{29.97, 0.004, 29.97}, Case{60, 0, 30}, Case{59.94, 0.002, 29.97}, Case{50, 0, 30},
          Case{120, 0, 30}, Case{240, 0.001, 30}, Case{31, 0, 30}, Case{24, 0, 24}, Case{1, 0, 1}}) {
        FrameThinner thinner(90000, 30);
        int kept = 0;
        constexpr double seconds = 20;
        for (int i = 0; i < seconds * c.framesPerSecond; ++i) {
            const double time = i / c.framesPerSecond + (i % 2 ? c.jitter : 0);
            kept += thinner.keeps(std::llround(time * 90000));
        }
        EXPECT_NEAR(kept / seconds, c.keptPerSecond, 0.11) << c.framesPerSecond;
    }
}

}  // namespace
}  // namespace ostrel
