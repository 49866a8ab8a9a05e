#include "article/media/NSMov2Mp4.h"
#include "tests/article/media/MediaTest.h"

namespace ostrel {
namespace {

class InspectionTest : public MediaTest {
protected:
    InspectionTest() { clip() = {.length = CMTimeMake(10, 1), .frame = numberedBitmap(6, 4)}; }

    bool inspect() { return NSMov2Mp4().mp4Information(url, picture, duration); }
    CGSize pictureSize() const { return picture ? picture->size() : CGSize{}; }

    std::shared_ptr<const UIImage> picture;
    float duration = -1;
};

CGAffineTransform turned(CGFloat a, CGFloat b, CGFloat c, CGFloat d) { return {a, b, c, d, 17, -5}; }

AVAssetTrack videoTrack(const CGAffineTransform& transform) {
    return {.mediaType = AVMediaType::video, .preferredTransform = transform};
}

TEST_F(InspectionTest, TheDurationIsInWholeSecondsTowardZeroAndTheFirstFrameIsAskedForInFifths) {
    const std::pair<CMTime, float> cases[] = {{{129, 10}, 12},         {{9, 10}, 0},    {{3, 1}, 3}, {{1800, 600}, 3},
                                              {{2999999, 1000000}, 2}, {{-19, 10}, -1}, {{5, 0}, 0}, {{0, 600}, 0}};
    for (const auto& [length, seconds] : cases) {
        clip().length = length;
        EXPECT_TRUE(inspect());
        EXPECT_EQ(duration, seconds) << length.value << "/" << length.timescale;
        EXPECT_EQ(media->imageTimes.back(), CMTimeMake(0, 5));
    }
}

TEST_F(InspectionTest, EachStepThatFailsIsLoggedAndLeavesThePictureAlone) {
    const auto before = UIImage::imageWithCGImage(numberedBitmap(1, 1));
    struct Case {
        std::function<void()> breakIt;
        std::string line;
        float duration;
    };
    for (const Case& c :
         {Case{[&] { clip().frame = nullptr; }, "mp4Information copyCGImage failed.", 10},
          Case{[&] { clip().givesImages = false; }, "mp4Information AVAssetImageGenerator init failed.", 10},
          Case{[&] { media->clips.clear(); }, "mp4Information AVAsset init failed.", -1}}) {
        picture = before;
        duration = -1;
        c.breakIt();
        EXPECT_FALSE(inspect());
        EXPECT_EQ(log.lines().back(), c.line);
        EXPECT_EQ(picture, before);
        EXPECT_EQ(duration, c.duration) << c.line;
    }
}

TEST_F(InspectionTest, OnlyTheThreeExactQuarterTurnsRotateThePicture) {
    using Orientation = UIImageOrientation;
    struct Case {
        CGAffineTransform transform;
        Orientation orientation;
    };
    for (const Case& c : {Case{turned(0, 1, -1, 0), Orientation::right}, Case{turned(0, -1, 1, 0), Orientation::left},
                          Case{turned(-1, 0, 0, -1), Orientation::down}, Case{turned(1, 0, 0, 1), Orientation::up},
                          Case{turned(0, 1, 1, 0), Orientation::up}, Case{turned(-1, 0, 0, 1), Orientation::up},
                          Case{turned(1, 0, 0, -1), Orientation::up}, Case{turned(0, -1, -1, 0), Orientation::up},
                          Case{turned(0, 1, -1, 0.001), Orientation::up}, Case{turned(0, 0, 0, 0), Orientation::up}}) {
        EXPECT_EQ(NSMov2Mp4::orientationOfTransform(c.transform), c.orientation)
            << c.transform.a << c.transform.b << c.transform.c << c.transform.d;
    }
}

TEST_F(InspectionTest, APortraitClipYieldsAPortraitPictureOfItsFirstVideoTrack) {
    const AVAssetTrack sound{.mediaType = AVMediaType::audio, .preferredTransform = turned(-1, 0, 0, -1)};
    clip().trackList = {sound, videoTrack(turned(0, 1, -1, 0)), videoTrack({})};
    EXPECT_TRUE(inspect());
    EXPECT_EQ(pictureSize(), (CGSize{4, 6}));
    clip().trackList = {videoTrack(turned(-1, 0, 0, -1))};
    EXPECT_TRUE(inspect());
    EXPECT_EQ(pictureSize(), (CGSize{6, 4}));
    clip().trackList = {sound};
    EXPECT_TRUE(inspect());
    EXPECT_EQ(picture->cgImage(), clip().frame);
}

TEST_F(InspectionTest, RotatingMovesEveryPixelToItsPlace) {
    constexpr int width = 300, height = 200;
    const auto source = UIImage::imageWithCGImage(numberedBitmap(width, height));
    struct Case {
        UIImageOrientation orientation;
        int width, height;
        /// Which pixel of the source is shown at (x, y).
        std::function<CGPoint(int, int)> from;
    };
    for (const Case& c :
         {Case{UIImageOrientation::up, width, height, [](int x, int y) { return CGPoint(x, y); }},
          Case{UIImageOrientation::down, width, height,
               [](int x, int y) { return CGPoint(width - 1 - x, height - 1 - y); }},
          // A quarter turn clockwise: the left column, from its bottom, becomes the top row.
          Case{UIImageOrientation::right, height, width, [](int x, int y) { return CGPoint(y, height - 1 - x); }},
          Case{UIImageOrientation::left, height, width, [](int x, int y) { return CGPoint(width - 1 - y, x); }}}) {
        SCOPED_TRACE(static_cast<int>(c.orientation));
        const auto rotated = NSMov2Mp4().rotateImage(source, c.orientation);
        ASSERT_NE(rotated, nullptr);
        const auto bitmap = rotated->cgImage();
        ASSERT_EQ(bitmap->width(), c.width);
        ASSERT_EQ(bitmap->height(), c.height);
        int wrong = 0;
        for (int y = 0; y < c.height; ++y) {
            for (int x = 0; x < c.width; ++x) {
                const CGPoint from = c.from(x, y);
                const std::uint8_t* pixel = bitmap->row(y) + static_cast<std::size_t>(x) * CGImage::bytesPerPixel;
                wrong += pixel[0] != static_cast<std::uint8_t>(static_cast<int>(from.x)) ||
                         pixel[1] != static_cast<std::uint8_t>(static_cast<int>(from.y)) || pixel[3] != 255;
            }
        }
        EXPECT_EQ(wrong, 0);
    }
    EXPECT_EQ(NSMov2Mp4().rotateImage(nullptr, UIImageOrientation::right), nullptr);
}

}  // namespace
}  // namespace ostrel
