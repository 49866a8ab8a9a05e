#include "tests/backends/ffmpeg/ClipProbe.h"
#include "tests/backends/ffmpeg/FfmpegTest.h"

namespace ostrel {
namespace {

/// What comes out of each kind of clip.
class SourceTest : public FfmpegTest {
protected:
    struct Expected {
        int width, height;
        double seconds;
        int channels = 2;
        int frames = 0;  // 0: not looked at
    };

    void expectConverts(const std::string& path, const Expected& expected) {
        SCOPED_TRACE(path);
        const Outcome outcome = convert(path, out());
        ASSERT_TRUE(outcome.succeeded())
            << (outcome.error ? outcome.error->localizedDescription : "no error told");
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
        EXPECT_EQ(clip->profile, 100);  // High
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
        expectConverts(maker.plain(c.name, "640x480", 1, c.encoding), {480, 360, 1, 2, 30});
}

TEST_F(SourceTest, AFewRunsOfChunksMayReachFarIntoTheIndex) {
    // At 25 pictures and 46.875 packets of sound a second a run of chunks ends with every eighth.
    expectConverts(
        maker.make("runs.mov", "-f lavfi -i testsrc2=s=320x240:r=25:d=4 -f lavfi -i sine=440:r=48000:d=4 " +
                                   quick + "-c:a aac"),
        {320, 240, 4, 2, 100});
}

TEST_F(SourceTest, PicturesFitTheBoxInBothOrientationsWithEvenSidesAndAreNeverEnlarged) {
    struct Case {
        const char* size;
        int width, height;
    };
    for (const Case& c : {Case{"1920x1080", 640, 360}, Case{"1080x1920", 360, 640}, Case{"643x481", 482, 360},
                          Case{"320x241", 320, 240}, Case{"1000x1000", 360, 360}, Case{"16x2000", 6, 640},
                          Case{"2x2", 2, 2}, Case{"640x360", 640, 360}})
        expectConverts(maker.plain(std::string("size") + c.size + ".mp4", c.size, 0.5,
                                   quick + "-an -vf crop=exact=1 -pix_fmt yuv444p"),
                       {c.width, c.height, 0.5, 0});
}

TEST_F(SourceTest, PixelsThatAreNotSquareBecomeSquare) {
    expectConverts(maker.plain("wide.mp4", "720x576", 0.5, quick + "-an -vf setsar=64/45"),
                   {640, 360, 0.5, 0});
}

TEST_F(SourceTest, TheFrameRateIsKeptUpToThirtyAndTimesThatVaryAreKept) {
    expectConverts(maker.plain("fps60.mp4", "320x240", 2, quick + "-an", 60), {320, 240, 2, 0, 60});
    expectConverts(maker.plain("fps50.mp4", "320x240", 2, quick + "-an", 50), {320, 240, 2, 0, 60});
    expectConverts(maker.plain("fps24.mp4", "320x240", 2, quick + "-an", 24), {320, 240, 2, 0, 48});
    expectConverts(maker.plain("varying.mp4", "320x240", 2,
                               quick + "-an -vf \"select='not(between(mod(n,10),3,6))'\" -vsync vfr"),
                   {320, 240, 2, 0, 36});
}

TEST_F(SourceTest, TimesThatBeginElsewhereAndEditListsKeepPictureAndSoundTogether) {
    maker.plain("long.mov", "320x240", 2, quick + "-bf 2 -g 30 -c:a aac");
    expectConverts(maker.make("late.mkv", "-i {long.mov} -c copy -output_ts_offset 5"), {320, 240, 2});
    expectConverts(
        maker.make("early.mkv", "-i {long.mov} -c copy -output_ts_offset -1 -avoid_negative_ts disabled"),
        {320, 240, 2});
    expectConverts(maker.make("edited.mp4", "-ss 0.5 -i {long.mov} -c copy"), {320, 240, 1.5});
    expectConverts(maker.make("fragments.mp4", "-i {long.mov} -c copy -movflags +frag_keyframe+empty_moov"),
                   {320, 240, 2});
}

TEST_F(SourceTest, ASoundThatPausesIsHeardAtItsTime) {
    // The tone is cut out between 0.5 and 1.5 seconds, and the gap is in the times, not in the samples.
    expectConverts(
        maker.make("pause.mkv", "-f lavfi -i testsrc2=s=320x240:r=30:d=2 -f lavfi -i sine=440:r=48000:d=2 "
                                "-af \"aselect='not(between(t,0.5,1.5))'\" " +
                                    quick + "-c:a pcm_s16le"),
        {320, 240, 2});
}

TEST_F(SourceTest, OfSeveralTracksTheFirstPictureAndTheBestSoundAreTaken) {
    expectConverts(
        maker.make("tracks.mkv",
                   "-f lavfi -i testsrc2=s=640x360:r=30:d=1 -f lavfi -i testsrc=s=320x240:r=30:d=1 "
                   "-f lavfi -i sine=300:d=0.4 -f lavfi -i sine=500:d=1 -map 0 -map 1 -map 2 -map 3 " +
                       quick + "-c:a aac -ac:a:0 1 -ac:a:1 2 -disposition:a:0 0 -disposition:a:1 0"),
        {640, 360, 1});
}

TEST_F(SourceTest, SoundOfSixChannelsAndOfNinetySixKilohertzBecomesStereoAndNoneStaysNone) {
    expectConverts(maker.plain("six.mkv", "320x240", 1, quick + "-ac 6 -c:a ac3"), {320, 240, 1});
    expectConverts(maker.plain("high.mov", "320x240", 1, quick + "-ar 96000 -c:a pcm_s16le"), {320, 240, 1});
    expectConverts(maker.plain("mono.mov", "320x240", 1, quick + "-ar 8000 -ac 1 -c:a pcm_s16le"),
                   {320, 240, 1});
    expectConverts(maker.plain("mute.mov", "320x240", 1, quick + "-an"), {320, 240, 1, 0});
}

TEST_F(SourceTest, InterlacedLinesAreJoined) {
    // Fields of a moving picture, woven: each pair of lines is from two moments, so neighbouring lines differ.
    expectConverts(maker.plain("fields.mp4", "640x480", 1,
                               quick + "-an -vf interlace -flags +ilme+ildct -x264-params tff=1", 60),
                   {480, 360, 1, 0, 30});
}

TEST_F(SourceTest, TenBitsAndHighDynamicRangeBecomeEightBitsOfStandardRange) {
    const std::string hevc =
        "-an -c:v libx265 -preset ultrafast -pix_fmt yuv420p10le -tag:v hvc1 -x265-params "
        "log-level=none:colorprim=bt2020:colormatrix=bt2020nc:transfer=";
    // A grey of half the code values, which PQ (SMPTE ST 2084) shows at about 92 cd/m2 and HLG at a fifth of its peak.
    const std::string grey = "-f lavfi -i color=gray:s=320x240:r=30:d=0.5 ";
    for (const std::string transfer : {"smpte2084", "arib-std-b67"}) {
        expectConverts(maker.make("hdr-" + transfer + ".mov", grey + hevc + transfer), {320, 240, 0.5, 0});
        EXPECT_EQ(last_.transfer, "bt709");
        EXPECT_EQ(last_.matrix, "bt709");
        EXPECT_GT(last_.brightness.front(), 60);
        EXPECT_LT(last_.brightness.front(), 190);
    }
    // Black stays black, and white becomes nearly white.
    expectConverts(
        maker.make("hdr-black.mov", "-f lavfi -i color=black:s=320x240:r=30:d=0.2 " + hevc + "smpte2084"),
        {320, 240, 0.2, 0});
    EXPECT_NEAR(last_.brightness.front(), 16, 2);
    expectConverts(
        maker.make("hdr-white.mov", "-f lavfi -i color=white:s=320x240:r=30:d=0.2 " + hevc + "smpte2084"),
        {320, 240, 0.2, 0});
    EXPECT_GT(last_.brightness.front(), 215);
}

TEST_F(SourceTest, FullRangeIsCompressedToLimitedRange) {
    expectConverts(
        maker.make("full.mov",
                   "-f lavfi -i color=black:s=320x240:r=30:d=0.2 -pix_fmt yuvj420p -c:v mjpeg -q:v 1"),
        {320, 240, 0.2, 0});
    EXPECT_NEAR(last_.brightness.front(), 16, 1.5);
}

TEST_F(SourceTest, ColourTagsThatContradictTheirSamplesAreNoObstacle) {
    maker.plain("tagged.mp4", "320x240", 0.2, quick + "-an");
    // Numbers of ITU-T H.273: RGB, YCgCo, constant luminance, chromaticity-derived, and a reserved one.
    for (const std::string tags : {"matrix_coefficients=0", "matrix_coefficients=8", "matrix_coefficients=10",
                                   "matrix_coefficients=12:transfer_characteristics=10",
                                   "matrix_coefficients=3:colour_primaries=3:transfer_characteristics=3"})
        expectConverts(maker.make("tags.mp4", "-i {tagged.mp4} -c copy -bsf:v h264_metadata=" + tags),
                       {320, 240, 0.2, 0});
}

TEST_F(SourceTest, TheLowPresetKeepsItsNumbers) {
    const std::string path =
        maker.plain("noisy.mp4", "640x360", 4, quick + "-vf noise=alls=60:allf=t -c:a aac");
    AVAssetExportSession session(asset(path), std::string(AVAssetExportPresetLowQuality));
    session.setOutputURL(NSURL::fileURLWithPath(out()));
    session.setOutputFileType(AVFileTypeMPEG4);
    std::atomic<bool> isFinished{false};
    session.exportAsynchronouslyWithCompletionHandler([&] { isFinished = true; });
    ASSERT_TRUE(loop->run([&] { return isFinished.load(); }, 60));
    ASSERT_EQ(session.status(), AVAssetExportSessionStatus::completed);
    const auto clip = probeClip(out());
    ASSERT_TRUE(clip);
    EXPECT_EQ(clip->width, 320);
    EXPECT_EQ(clip->height, 180);
    EXPECT_EQ(clip->channels, 1);
    EXPECT_NEAR(clip->frames, 60, 1);
    // 200 kbit/s and what the buffer gives in advance.
    EXPECT_LT(static_cast<double>(clip->videoBytes) * 8, 4 * 200e3 + 400e3);
    EXPECT_FALSE(clip->isIndexInFront);
}

TEST_F(SourceTest, TheMediumPresetHoldsItsCeilingOnNoise) {
    const std::string path =
        maker.plain("noisy.mp4", "640x360", 4, quick + "-vf noise=alls=60:allf=t -c:a aac");
    ASSERT_TRUE(convert(path, out()).succeeded());
    const auto clip = probeClip(out());
    ASSERT_TRUE(clip);
    EXPECT_LT(static_cast<double>(clip->videoBytes) * 8, 4 * 1e6 + 2e6);
    EXPECT_GT(static_cast<double>(clip->videoBytes) * 8, 4 * 0.7e6);
}

}  // namespace
}  // namespace ostrel
