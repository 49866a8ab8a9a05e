#include "tests/backends/ffmpeg/ClipProbe.h"
#include "tests/backends/ffmpeg/FfmpegTest.h"

#include <chrono>

namespace ostrel {
namespace {

using Seconds = std::chrono::duration<double>;

class RealConversionTest : public FfmpegTest {
protected:
    /// Takes a second or more to convert.
    std::string slowClip() {
        return ClipMaker::shared().plain("slow.mp4", "1920x1080", 5,
                                         "-c:v libx264 -preset ultrafast -b:v 8M -pix_fmt yuv420p -c:a aac");
    }
    std::string quickClip() { return ClipMaker::shared().plain("quick.mov", "320x240", 1); }
};

TEST_F(RealConversionTest, ProgressRisesAndIsWithinFivePointsOfTheWorkDone) {
    struct Look {
        double seconds;
        float progress;
    };
    std::vector<Look> looks;
    const std::string clip = slowClip();
    const auto start = std::chrono::steady_clock::now();
    const auto elapsed = [&] { return Seconds(std::chrono::steady_clock::now() - start).count(); };
    const Outcome outcome = convert(clip, out(), [&](AVAssetExportSession&, float done) {
        looks.push_back({elapsed(), done});
    });
    const double total = elapsed();
    ASSERT_TRUE(outcome.succeeded());
    ASSERT_GT(looks.size(), 4u);
    double sumOfErrors = 0;
    for (std::size_t i = 0; i < looks.size(); ++i) {
        if (i > 0) {
            EXPECT_GE(looks[i].progress, looks[i - 1].progress);
        }
        sumOfErrors += std::abs(looks[i].progress - looks[i].seconds / total);
    }
    // The share of time is the share of work only on an idle machine; on average it is near enough on a busy one.
    EXPECT_LT(sumOfErrors / static_cast<double>(looks.size()), 0.15);
}

TEST_F(RealConversionTest, TheMainLoopKeepsTurningWhileAConversionRuns) {
    const std::string clip = slowClip();
    int turns = 0;
    double longest = 0;
    auto last = std::chrono::steady_clock::now();
    const auto timer = NSTimer::scheduledTimer(1.0 / 120, true, [&](NSTimer&) {
        const auto now = std::chrono::steady_clock::now();
        longest = std::max(longest, Seconds(now - last).count());
        last = now;
        ++turns;
    });
    const auto start = last;
    ASSERT_TRUE(convert(clip, out()).succeeded());
    timer->invalidate();
    const double seconds = Seconds(std::chrono::steady_clock::now() - start).count();
    // A loop that waited for the conversion would not turn at all; how often is for the benchmark to say.
    EXPECT_GT(turns, 10) << seconds << " s, the longest wait was " << longest << " s";
}

TEST_F(RealConversionTest, ACancelEndsWithinATenthOfASecondAndLeavesNothing) {
    const std::string before = folder.write("out.mp4", "what was there");
    std::chrono::steady_clock::time_point cancelledAt;
    const Outcome outcome = convert(slowClip(), out(), [&](AVAssetExportSession& session, float done) {
        if (done < 0.2 || cancelledAt.time_since_epoch().count()) return;
        cancelledAt = std::chrono::steady_clock::now();
        session.cancelExport();
    });
    // A hundred milliseconds, and what a loaded machine of two cores adds.
    EXPECT_LT(Seconds(std::chrono::steady_clock::now() - cancelledAt).count(), 0.25);
    EXPECT_EQ(outcome.finishedCalls, 1);
    EXPECT_TRUE(outcome.error);
    EXPECT_LT(outcome.last, 1);
    EXPECT_EQ(folder.read("out.mp4"), "what was there");
    EXPECT_EQ(filesIn(folder.path()), (std::vector<std::string>{"out.mp4"}));
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
