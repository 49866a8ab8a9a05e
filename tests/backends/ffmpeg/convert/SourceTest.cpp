#include "backends/ffmpeg/convert/PictureGeometry.h"
#include "tests/backends/ffmpeg/ClipProbe.h"
#include "tests/backends/ffmpeg/FfmpegTest.h"

namespace ostrel {
namespace {

/// Converts clips of each kind, and decodes the results.
class SourceTest : public FfmpegTest {
protected:
    struct Expected {
        int width, height;
        double seconds;
        int channels = 2;
        // 0: not checked.
        int frames = 0;
    };

    void expectConverts(const std::string& path, const Expected& expected) {
        SCOPED_TRACE(path);
        const Outcome outcome = convert(path, out());
        ASSERT_TRUE(outcome.succeeded()) << (outcome.error ? outcome.error->localizedDescription : "no error told");
        const auto clip = probeClip(out());
        ASSERT_TRUE(clip) << "the result cannot be decoded";
        EXPECT_EQ(clip->width, expected.width);
        EXPECT_EQ(clip->height, expected.height);
        EXPECT_NEAR(clip->duration, expected.seconds, 0.08);
        EXPECT_EQ(clip->channels, expected.channels);
        EXPECT_EQ(clip->audioCodec, expected.channels ? "aac" : "");
        if (expected.channels) {
            EXPECT_NEAR(clip->audioSeconds, expected.seconds, 0.1);
        }
        if (expected.frames) {
            EXPECT_NEAR(clip->frames, expected.frames, 1);
        }
        EXPECT_EQ(clip->videoCodec, "h264");
        constexpr int highProfile = 100;
        EXPECT_EQ(clip->profile, highProfile);
        EXPECT_EQ(clip->pixelFormat, "yuv420p");
        EXPECT_EQ(clip->range, "tv");
        EXPECT_TRUE(clip->isIndexInFront);
        EXPECT_FALSE(clip->isTurned);
        EXPECT_LE(clip->largestFrameRate, 30.6);
        // Pictures may begin two frames after the sound, as in the source.
        EXPECT_LT(std::abs(clip->firstFrame), 0.07);
        last_ = *clip;
    }

    ClipMaker& maker = ClipMaker::shared();
    ProbedClip last_;
};

const std::string quick = "-c:v libx264 -preset ultrafast -pix_fmt yuv420p ";
/// Side of pictures whose size does not matter.
constexpr int side = 64;
const std::string small = "64x64";

TEST_F(SourceTest, EveryContainerAndCodecIsRead) {
    struct Case {
        const char *name, *encoding;
    };
    for (const Case& c : {
             Case{"h264-aac.mov", "-c:v libx264 -preset ultrafast -pix_fmt yuv420p -c:a aac"},
             Case{"hevc-ac3.mp4", "-c:v libx265 -preset ultrafast -x265-params log-level=none -c:a ac3"},
             Case{"vp8-vorbis.webm", "-c:v libvpx -deadline realtime -cpu-used 8 -c:a libvorbis"},
             Case{"vp9-opus.webm", "-c:v libvpx-vp9 -deadline realtime -cpu-used 8 -c:a libopus"},
             Case{"av1-opus.mkv", "-c:v libsvtav1 -preset 12 -pix_fmt yuv420p -c:a libopus"},
             Case{"mpeg4-mp3.avi", "-c:v mpeg4 -c:a libmp3lame"},
             Case{"mpeg4-aac.mp4", "-c:v mpeg4 -c:a aac"},
             Case{"mpeg4-aac.mov", "-c:v mpeg4 -c:a aac"},
             Case{"vp9-opus.mp4", "-c:v libvpx-vp9 -deadline realtime -cpu-used 8 -c:a libopus"},
             Case{"mjpeg-mp3.mp4", "-c:v mjpeg -pix_fmt yuvj420p -c:a libmp3lame"},
             Case{"mjpeg-pcm.avi", "-c:v mjpeg -pix_fmt yuvj422p -c:a pcm_s16le"},
             Case{"prores-pcm.mov", "-c:v prores -c:a pcm_s24be"},
             Case{"h264-flac.mkv", "-c:v libx264 -preset ultrafast -pix_fmt yuv444p -c:a flac"},
         })
        // Higher than the box, so that every format is also scaled.
        expectConverts(maker.plain(c.name, "64x720", 0.5, c.encoding), {56, 640, 0.5, 2, 15});
}

TEST_F(SourceTest, AFewRunsOfChunksMayReachFarIntoTheIndex) {
    // At 25 pictures and 46.875 packets of sound a second a run of chunks ends with every eighth.
    expectConverts(maker.make("runs.mov", "-f lavfi -i testsrc2=s=64x64:r=25:d=4 "
                                          "-f lavfi -i sine=440:r=48000:d=4 " +
                                              quick + "-c:a aac"),
                   {side, side, 4, 2, 100});
}

TEST_F(SourceTest, PicturesFitTheBoxInBothOrientationsWithSquarePixelsAndEvenSidesAndAreNeverEnlarged) {
    struct Case {
        const char* size;
        int width, height;
        const char* filter = "crop=exact=1 -pix_fmt yuv444p";
    };
    for (const Case& c : {Case{"1920x1080", 640, 360}, Case{"1080x1920", 360, 640}, Case{"643x481", 482, 360},
                          Case{"320x241", 320, 240}, Case{"1000x1000", 360, 360}, Case{"16x2000", 6, 640},
                          Case{"2x2", 2, 2}, Case{"640x360", 640, 360}, Case{"720x576", 640, 360, "setsar=64/45"}})
        expectConverts(maker.plain(std::string("size") + c.size + ".mp4", c.size, 0.1, quick + "-an -vf " + c.filter),
                       {c.width, c.height, 0.1, 0});
}

TEST_F(SourceTest, FrameRatesAreKeptUpToThirtyAndTimesThatVaryOrBeginElsewhereAreKept) {
    expectConverts(maker.plain("fps60.mp4", small, 2, quick + "-an", 60), {side, side, 2, 0, 60});
    expectConverts(maker.plain("fps50.mp4", small, 2, quick + "-an", 50), {side, side, 2, 0, 60});
    expectConverts(maker.plain("fps24.mp4", small, 2, quick + "-an", 24), {side, side, 2, 0, 48});
    expectConverts(
        maker.plain("varying.mp4", small, 2, quick + "-an -vf \"select='not(between(mod(n,10),3,6))'\" -vsync vfr"),
        {side, side, 2, 0, 36});
    maker.plain("base.mov", small, 2, quick + "-bf 2 -g 30 -c:a aac");
    const std::pair<const char*, double> copies[] = {
        {"-i {base.mov} -c copy -output_ts_offset 5", 2},
        {"-i {base.mov} -c copy -output_ts_offset -1 -avoid_negative_ts disabled", 2},
        {"-ss 0.5 -i {base.mov} -c copy -f mp4", 1.5},
        {"-i {base.mov} -c copy -f mp4 -movflags +frag_keyframe+empty_moov", 2}};
    for (const auto& [arguments, seconds] : copies)
        expectConverts(maker.make("copy.mkv", arguments), {side, side, seconds});
}

TEST_F(SourceTest, TheBestSoundIsTakenAsStereoWithItsPausesAndNoneStaysNone) {
    expectConverts(maker.plain("six.mkv", small, 1, quick + "-ac 6 -c:a ac3"), {side, side, 1});
    expectConverts(maker.plain("high.mov", small, 1, quick + "-ar 96000 -c:a pcm_s16le"), {side, side, 1});
    expectConverts(maker.plain("mono.mov", small, 1, quick + "-ar 8000 -ac 1 -c:a pcm_s16le"), {side, side, 1});
    expectConverts(maker.plain("mute.mov", small, 1, quick + "-an"), {side, side, 1, 0});
    // The tone is cut out between 0.5 and 1.5 seconds, and the gap is in the times, not in the samples.
    expectConverts(maker.make("pause.mkv", "-f lavfi -i testsrc2=s=64x64:r=30:d=2 -f lavfi -i sine=440:r=48000:d=2 "
                                           "-af \"aselect='not(between(t,0.5,1.5))'\" " +
                                               quick + "-c:a pcm_s16le"),
                   {side, side, 2});
    // Of two tracks of pictures the first one counts, of two of sound the one with more channels.
    expectConverts(
        maker.make("tracks.mkv", "-f lavfi -i testsrc2=s=96x64:r=30:d=1 -f lavfi -i testsrc=s=64x64:r=30:d=1 "
                                 "-f lavfi -i sine=300:d=0.4 -f lavfi -i sine=500:d=1 -map 0 -map 1 -map 2 -map 3 " +
                                     quick + "-c:a aac -ac:a:0 1 -ac:a:1 2 -disposition:a:0 0 -disposition:a:1 0"),
        {96, 64, 1});
}

TEST_F(SourceTest, InterlacedLinesAreJoined) {
    // Interlaced fields of a moving picture: neighbouring lines are of two moments.
    expectConverts(maker.plain("fields.mp4", "160x120", 0.5,
                               quick + "-an -vf interlace -flags +ilme+ildct -x264-params tff=1", 60),
                   {160, 120, 0.5, 0, 15});
}

TEST_F(SourceTest, HighDynamicRangeTenBitsAndFullRangeBecomeEightBitsOfStandardAndLimitedRange) {
    const std::string hevc = "-an -c:v libx265 -preset ultrafast -pix_fmt yuv420p10le -tag:v hvc1 -x265-params "
                             "log-level=none:colorprim=bt2020:colormatrix=bt2020nc:transfer=";
    struct Case {
        const char* colour;
        std::string encoding;
        double darkest, brightest;
    };
    for (const Case& c : {// A grey of half the code values, which PQ (SMPTE ST 2084) shows at about 92 cd/m2 and
                          // HLG at a fifth of its peak.
                          Case{"gray", hevc + "smpte2084", 60, 190}, Case{"gray", hevc + "arib-std-b67", 60, 190},
                          Case{"black", hevc + "smpte2084", 14, 18}, Case{"white", hevc + "smpte2084", 215, 256},
                          Case{"black", "-pix_fmt yuvj420p -c:v mjpeg -q:v 1", 14.5, 17.5}}) {
        expectConverts(maker.make("colour.mov",
                                  std::string("-f lavfi -i color=") + c.colour + ":s=64x64:r=30:d=0.1 " + c.encoding),
                       {side, side, 0.1, 0});
        if (c.encoding.starts_with(hevc)) {
            EXPECT_EQ(last_.transfer, "bt709");
            EXPECT_EQ(last_.matrix, "bt709");
        }
        EXPECT_GT(last_.brightness.front(), c.darkest);
        EXPECT_LT(last_.brightness.front(), c.brightest);
    }
}

TEST_F(SourceTest, ColourTagsThatContradictTheirSamplesAreNoObstacle) {
    maker.plain("tagged.mp4", small, 0.1, quick + "-an");
    // Numbers of ITU-T H.273: RGB, YCgCo, constant luminance, chromaticity-derived, and a reserved one.
    for (const std::string tags : {"matrix_coefficients=0", "matrix_coefficients=8", "matrix_coefficients=10",
                                   "matrix_coefficients=12:transfer_characteristics=10",
                                   "matrix_coefficients=3:colour_primaries=3:transfer_characteristics=3"})
        expectConverts(maker.make("tags.mp4", "-i {tagged.mp4} -c copy -bsf:v h264_metadata=" + tags),
                       {side, side, 0.1, 0});
}

TEST_F(SourceTest, ThePresetsKeepTheirNumbersOnNoise) {
    struct Case {
        std::string_view preset;
        PixelSize size;
        int channels, frames;
        // The bits of a second at the largest rate plus the buffer; the least that noise takes.
        double mostBits, leastBits;
    };
    for (const Case& c : {Case{AVAssetExportPresetMediumQuality, {640, 360}, 2, 30, 1e6 + 2e6, 0.7e6},
                          Case{AVAssetExportPresetLowQuality, {320, 180}, 1, 15, 200e3 + 400e3, 100e3}}) {
        SCOPED_TRACE(c.preset);
        const std::string noisy = maker.plain("noisy.mp4", "640x360", 1, quick + "-vf noise=alls=60:allf=t -c:a aac");
        ASSERT_EQ(exportAs(c.preset, noisy), AVAssetExportSessionStatus::completed);
        const auto clip = probeClip(out());
        ASSERT_TRUE(clip);
        EXPECT_EQ((PixelSize{clip->width, clip->height}), c.size);
        EXPECT_EQ(clip->channels, c.channels);
        EXPECT_NEAR(clip->frames, c.frames, 1);
        EXPECT_LT(static_cast<double>(clip->videoBytes) * 8, c.mostBits);
        EXPECT_GT(static_cast<double>(clip->videoBytes) * 8, c.leastBits);
        // Only the editor asks for the index in front.
        EXPECT_FALSE(clip->isIndexInFront);
    }
}

}  // namespace
}  // namespace ostrel
