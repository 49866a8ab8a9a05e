#include "tests/backends/ffmpeg/ClipProbe.h"
#include "tests/backends/ffmpeg/FfmpegTest.h"

#include <cerrno>
#include <sys/resource.h>

namespace ostrel {
namespace {

class RealConversionTest : public FfmpegTest {
protected:
    static constexpr const char* slowEncoding =
        "-c:v libx264 -preset ultrafast -b:v 8M -pix_fmt yuv420p -c:a aac";
    /// Takes a second or more to convert.
    std::string slowClip() { return ClipMaker::shared().plain("slow.mp4", "1920x1080", 5, slowEncoding); }
    std::string quickClip() { return ClipMaker::shared().plain("quick.mov", "320x240", 1); }
};

TEST_F(RealConversionTest, ProgressRisesAndIsWithinFivePointsOfTheWorkDone) {
    // The work done is the processor time spent. A busy machine has slower moments, which move single looks somewhat.
    const auto spent = [] {
        rusage usage{};
        ::getrusage(RUSAGE_SELF, &usage);
        const auto seconds = [](const timeval& t) {
            return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) / 1e6;
        };
        return seconds(usage.ru_utime) + seconds(usage.ru_stime);
    };
    struct Look {
        double spent;
        float progress;
    };
    std::vector<Look> looks;
    const std::string clip = ClipMaker::shared().plain("even.mp4", "1280x720", 12, slowEncoding);
    const double before = spent();
    ASSERT_TRUE(convert(clip, out(), [&](AVAssetExportSession&, float done) {
                    looks.push_back({spent() - before, done});
                }).succeeded());
    const double total = spent() - before;
    ASSERT_GT(looks.size(), 4u);
    double sumOfErrors = 0;
    for (std::size_t i = 0; i < looks.size(); ++i) {
        if (i > 0) {
            EXPECT_GE(looks[i].progress, looks[i - 1].progress);
        }
        const double done = looks[i].spent / total;
        EXPECT_NEAR(looks[i].progress, done, 0.1);
        sumOfErrors += std::abs(looks[i].progress - done);
    }
    EXPECT_LT(sumOfErrors / static_cast<double>(looks.size()), 0.05);
}

TEST_F(RealConversionTest, ACancelAtAnyStageLeavesWhatWasThere) {
    folder.write("out.mp4", "what was there");
    for (const float moment : {0.f, 0.3f, 0.8f}) {
        SCOPED_TRACE(moment);
        const Outcome outcome = convert(slowClip(), out(), [&](AVAssetExportSession& session, float done) {
            if (done >= moment) session.cancelExport();
        });
        EXPECT_EQ(outcome.finishedCalls, 1);
        ASSERT_TRUE(outcome.error);
        EXPECT_EQ(outcome.error->code, ECANCELED);
        EXPECT_LT(outcome.last, 1);
        EXPECT_EQ(folder.read("out.mp4"), "what was there");
        EXPECT_EQ(filesIn(folder.path()), (std::vector<std::string>{"out.mp4"}));
    }
}

TEST_F(RealConversionTest, WhatStandsAtTheDestinationIsReplacedOnlyByTheWholeFile) {
    folder.write("out.mp4", "what was there");
    ASSERT_TRUE(convert(slowClip(), out(), [&](AVAssetExportSession&, float) {
                    if (!probeClip(out())) {
                        EXPECT_EQ(folder.read("out.mp4"), "what was there");
                    }
                    // While it is written the file has no name.
                    EXPECT_EQ(filesIn(folder.path()).size(), 1u);
                }).succeeded());
    EXPECT_TRUE(probeClip(out()));
    EXPECT_EQ(filesIn(folder.path()), (std::vector<std::string>{"out.mp4"}));
}

TEST_F(RealConversionTest, TheFolderOfTheDestinationIsMadeAndLinksAreFollowed) {
    ASSERT_TRUE(convert(quickClip(), folder.path("Documents/clip.mov")).succeeded());
    EXPECT_TRUE(probeClip(folder.path("Documents/clip.mov")));
    folder.write("real.mp4", "old");
    std::filesystem::create_symlink("real.mp4", folder.path("link.mp4"));
    ASSERT_TRUE(convert(quickClip(), folder.path("link.mp4")).succeeded());
    EXPECT_TRUE(std::filesystem::is_symlink(folder.path("link.mp4")));
    EXPECT_TRUE(probeClip(folder.path("real.mp4")));
}

TEST_F(RealConversionTest, TwoAtOnceDoNotDisturbEachOther) {
    std::atomic<int> finished{0}, failed{0};
    for (const std::string name : {"a.mp4", "b.mp4"}) {
        NSMov2Mp4().convertMovSourceURL(NSURL::fileURLWithPath(quickClip()), folder.path(name),
                                        [&](bool isFinished, float, const std::optional<NSError>& error) {
                                            if (!isFinished) return;
                                            if (error) ++failed;
                                            ++finished;
                                        });
    }
    ASSERT_TRUE(loop->run([&] { return finished == 2; }, 60));
    EXPECT_EQ(failed, 0);
    EXPECT_TRUE(probeClip(folder.path("a.mp4")) && probeClip(folder.path("b.mp4")));
}

TEST_F(RealConversionTest, CaptureMetadataReachTheItemAndTheResult) {
    const std::string path = ClipMaker::shared().make(
        "camera.mov",
        "-f lavfi -i testsrc2=s=320x240:r=30:d=0.3 -c:v libx264 -preset ultrafast -pix_fmt yuv420p "
        "-movflags use_metadata_tags -metadata "
        "com.apple.quicktime.location.ISO6709=+31.2304+121.4737+012.345/ "
        "-metadata com.apple.quicktime.model='Camera 7' -metadata com.apple.quicktime.software=9.1 "
        "-metadata com.apple.quicktime.creationdate=2026-11-21T10:32:38+0800");
    ASSERT_TRUE(convert(path, out()).succeeded());
    for (const std::string& clip : {path, out()}) {
        NSArticleVideoObject item;
        copyCaptureMetadata(*asset(clip), item);
        EXPECT_EQ(item.latitude(), "+31.2304");
        EXPECT_EQ(item.longitude(), "+121.4737");
        EXPECT_EQ(item.altitude(), "+012.345");
        EXPECT_EQ(item.device(), "Camera 7");
        EXPECT_EQ(item.software(), "9.1");
        EXPECT_EQ(item.date(), NSDate::fromISO8601("2026-11-21T02:32:38Z"));
    }
    // For players that know only the track's own time.
    EXPECT_EQ(probeClip(out())->metadata["creation_time"].substr(0, 19), "2026-11-21T02:32:38");
}

TEST_F(RealConversionTest, UserDataOfOtherCamerasIsReadToo) {
    const std::string path = ClipMaker::shared().make(
        "other.mov",
        "-f lavfi -i testsrc2=s=320x240:r=30:d=0.3 -c:v libx264 -preset ultrafast -pix_fmt yuv420p "
        "-metadata location=-33.8568+151.2153/ -metadata model='Phone' "
        "-metadata creation_time=2025-01-02T03:04:05Z");
    ASSERT_TRUE(convert(path, out()).succeeded());
    for (const std::string& clip : {path, out()}) {
        NSArticleVideoObject item;
        copyCaptureMetadata(*asset(clip), item);
        EXPECT_EQ(item.device(), "Phone");
        EXPECT_EQ(item.date(), NSDate::fromISO8601("2025-01-02T03:04:05Z"));
        // Without an altitude the text is too short to be cut.
        EXPECT_FALSE(item.latitude());
    }
    const auto facts = asset(out())->metadata();
    EXPECT_TRUE(std::any_of(facts.begin(), facts.end(), [](const AVMetadataItem& fact) {
        return fact.commonKey == AVMetadataCommonKeyLocation && fact.stringValue() == "-33.8568+151.2153/";
    }));
}

TEST_F(RealConversionTest, TheDurationOfTheResultIsInWholeSeconds) {
    for (const auto& [seconds, whole] : {std::pair{0.9, 0.f}, {3.0, 3.f}, {2.9, 2.f}}) {
        const std::string path =
            ClipMaker::shared().plain("length" + std::to_string(seconds) + ".mov", "64x64", seconds,
                                      "-an -c:v libx264 -preset ultrafast -pix_fmt yuv420p");
        std::shared_ptr<const UIImage> image;
        float duration = -1;
        EXPECT_TRUE(NSMov2Mp4().mp4Information(NSURL::fileURLWithPath(path), image, duration));
        EXPECT_EQ(duration, whole);
    }
}

TEST_F(RealConversionTest, TheFirstPictureIsFoundWhereverTheEditListBegins) {
    // White comes after ten seconds of black in one run of pictures; the edit list begins in the white.
    const std::string path = ClipMaker::shared().make(
        "black-white.mov",
        "-f lavfi -i color=black:s=64x64:r=30:d=10 -f lavfi -i color=white:s=64x64:r=30:d=1 "
        "-filter_complex concat=n=2:v=1 -c:v libx264 -preset ultrafast -g 9999 -sc_threshold 0 "
        "-pix_fmt yuv420p");
    const std::string cut = ClipMaker::shared().make("cut-in.mov", "-ss 10.5 -i {black-white.mov} -c copy");
    const auto brightness = [&](const std::string& clip) {
        const auto image = picture(clip);
        return image ? image->cgImage()->row(30)[120] : -1;
    };
    EXPECT_EQ(brightness(path), 0);
    EXPECT_EQ(brightness(cut), 255);
    std::shared_ptr<const UIImage> image;
    float seconds = 0;
    EXPECT_TRUE(NSMov2Mp4().mp4Information(NSURL::fileURLWithPath(path), image, seconds));
    EXPECT_EQ(seconds, 11);
}

TEST_F(RealConversionTest, ALaterPictureIsTheOneShownThen) {
    // Black for a second, then white.
    const std::string path = ClipMaker::shared().make(
        "steps.mp4",
        "-f lavfi -i color=black:s=64x64:r=10:d=1 -f lavfi -i color=white:s=64x64:r=10:d=1 "
        "-filter_complex concat=n=2:v=1 -c:v libx264 -preset ultrafast -bf 2 -g 50 -pix_fmt yuv420p");
    const auto file = asset(path)->file();
    const auto brightness = [&](CMTime time) {
        const auto image = file->copyImage(time, nullptr);
        return image ? image->row(30)[120] : -1;
    };
    EXPECT_EQ(brightness(CMTimeMake(19, 10)), 255);
    EXPECT_EQ(brightness(CMTimeMake(0, 5)), 0);
    EXPECT_EQ(brightness(CMTimeMake(95, 100)), 0);
    EXPECT_EQ(brightness(CMTimeMake(1, 1)), 255);
    EXPECT_EQ(brightness(CMTimeMake(100, 1)), 255);
}

}  // namespace
}  // namespace ostrel
