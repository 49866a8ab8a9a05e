#include "tests/backends/ffmpeg/ClipProbe.h"
#include "tests/backends/ffmpeg/FfmpegTest.h"

#include <chrono>
#include <ctime>
#include <thread>

namespace ostrel {
namespace {

class RealConversionTest : public FfmpegTest {
protected:
    /// Takes long enough to look at the conversion, and to cancel it, while pictures are decoded.
    static std::string longClip() {
        return ClipMaker::shared().plain("long.mp4", "1280x720", 12,
                                         "-c:v libx264 -preset ultrafast -b:v 8M -pix_fmt yuv420p -c:a aac");
    }
    static std::string quickClip() { return ClipMaker::shared().plain("quick.mov", "64x64", 0.5); }
    std::vector<std::string> onlyTheResult{"out.mp4"};
};

TEST_F(RealConversionTest, ProgressIsWithinFivePointsOfTheWorkDoneAndTheFileAppearsWhole) {
    // The work done is the processor time spent. A busy machine has slower moments, which move single looks somewhat.
    const auto spent = [] { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; };
    struct Look {
        double spent;
        float progress;
    };
    std::vector<Look> looks;
    folder.write("out.mp4", "what was there");
    double before = 0;
    const auto watch = [&](AVAssetExportSession& session) {
        before = spent();
        while (session.status() < AVAssetExportSessionStatus::completed) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            const Look look{spent() - before, session.progress()};
            if (session.status() < AVAssetExportSessionStatus::completed) looks.push_back(look);
            // While the file is written it has no name. Later looks may see the published file.
            const auto names = filesIn(folder.path());
            const std::string content = folder.read("out.mp4");
            if (session.progress() > 0.95) continue;
            EXPECT_EQ(names, onlyTheResult);
            EXPECT_EQ(content, "what was there");
        }
    };
    ASSERT_EQ(exportAs(AVAssetExportPresetMediumQuality, longClip(), watch), AVAssetExportSessionStatus::completed);
    const double total = spent() - before;
    EXPECT_TRUE(probeClip(out()));
    EXPECT_EQ(filesIn(folder.path()), onlyTheResult);
    ASSERT_GT(looks.size(), 10u);
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
    using Call = WatchedFiles::Call;
    using Status = AVAssetExportSessionStatus;
    struct Case {
        // The cancel comes at this progress, or in this system call when there is one.
        float progress;
        std::optional<Call> call;
        Status status;
    };
    // The file is given its name after it was synchronised: a cancel is too late by then.
    for (const Case& c : {Case{0, {}, Status::cancelled}, Case{0.1F, {}, Status::cancelled},
                          Case{0, Call::write, Status::cancelled}, Case{0, Call::synchronise, Status::completed}}) {
        folder.write("out.mp4", "what was there");
        std::atomic<AVAssetExportSession*> running{nullptr};
        watch([&](Call now, int) {
            while (now == c.call && !running) std::this_thread::yield();
            if (now == c.call) running.load()->cancelExport();
            return true;
        });
        const auto cancel = [&](AVAssetExportSession& session) {
            running = &session;
            while (!c.call && session.progress() < c.progress) std::this_thread::yield();
            if (!c.call) session.cancelExport();
        };
        EXPECT_EQ(exportAs(AVAssetExportPresetMediumQuality, c.call ? quickClip() : longClip(), cancel), c.status);
        EXPECT_EQ(folder.read("out.mp4") == "what was there", c.status == Status::cancelled);
        EXPECT_EQ(probeClip(out()).has_value(), c.status == Status::completed);
        EXPECT_EQ(filesIn(folder.path()), onlyTheResult);
    }
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
    using Text = std::optional<std::string>;
    struct Case {
        const char *name, *arguments, *place;
        Text latitude, longitude, altitude, device, software;
        const char* date;
    };
    for (const Case& c :
         {Case{"camera.mov",
               "-movflags use_metadata_tags -metadata "
               "com.apple.quicktime.location.ISO6709=+31.2304+121.4737+012.345/ "
               "-metadata com.apple.quicktime.model='Camera 7' -metadata com.apple.quicktime.software=9.1 "
               "-metadata com.apple.quicktime.creationdate=2026-11-21T10:32:38+0800",
               "+31.2304+121.4737+012.345/", "+31.2304", "+121.4737", "+012.345", "Camera 7", "9.1",
               "2026-11-21T02:32:38Z"},
          // User data of other cameras. Without an altitude the text of the place is too short to be cut.
          Case{"other.mov",
               "-metadata location=-33.8568+151.2153/ -metadata model='Phone' "
               "-metadata creation_time=2025-01-02T03:04:05Z",
               "-33.8568+151.2153/", Text(), Text(), Text(), "Phone", Text(), "2025-01-02T03:04:05Z"}}) {
        const std::string path = ClipMaker::shared().make(
            c.name, "-f lavfi -i testsrc2=s=64x64:r=30:d=0.1 -c:v libx264 -preset ultrafast -pix_fmt yuv420p " +
                        std::string(c.arguments));
        ASSERT_TRUE(convert(path, out()).succeeded());
        for (const std::string& clip : {path, out()}) {
            SCOPED_TRACE(clip);
            NSArticleVideoObject item;
            copyCaptureMetadata(*asset(clip), item);
            EXPECT_EQ(item.latitude(), c.latitude);
            EXPECT_EQ(item.longitude(), c.longitude);
            EXPECT_EQ(item.altitude(), c.altitude);
            EXPECT_EQ(item.device(), c.device);
            if (c.software) {
                EXPECT_EQ(item.software(), c.software);
            }
            EXPECT_EQ(item.date(), NSDate::fromISO8601(c.date));
        }
        const auto facts = asset(out())->metadata();
        EXPECT_TRUE(std::any_of(facts.begin(), facts.end(), [&](const AVMetadataItem& fact) {
            return fact.commonKey == AVMetadataCommonKeyLocation && fact.stringValue() == c.place;
        }));
        // Some players know only the file's own creation time.
        EXPECT_EQ(probeClip(out())->metadata["creation_time"].substr(0, 19), std::string(c.date).substr(0, 19));
    }
}

TEST_F(RealConversionTest, DurationsAreInWholeSecondsAndPicturesThoseOfTheirTimes) {
    // Black, then white, with one keyframe and B-pictures; the edit list of the cut clip begins in the white.
    const auto steps = [](const std::string& name, int black, const std::string& white, int rate) {
        const std::string look = ":s=64x64:r=" + std::to_string(rate) + ":d=";
        return ClipMaker::shared().make(
            name, "-f lavfi -i color=black" + look + std::to_string(black) + " -f lavfi -i color=white" + look + white +
                      " -filter_complex concat=n=2:v=1 -c:v libx264 -preset ultrafast -bf 2 -g 9999 "
                      "-sc_threshold 0 -pix_fmt yuv420p");
    };
    const std::string late = steps("late.mov", 10, "1", 30), early = steps("early.mp4", 1, "1.9", 10);
    const std::string cut = ClipMaker::shared().make("cut-in.mov", "-ss 10.5 -i {late.mov} -c copy");
    struct Case {
        std::string path;
        float seconds;
        int brightness;
    };
    for (const Case& c : {Case{late, 11, 0}, Case{early, 2, 0}, Case{cut, 0, 255}, Case{quickClip(), 0, -1}}) {
        SCOPED_TRACE(c.path);
        std::shared_ptr<const UIImage> image;
        float seconds = -1;
        ASSERT_TRUE(NSMov2Mp4().mp4Information(NSURL::fileURLWithPath(c.path), image, seconds));
        EXPECT_EQ(seconds, c.seconds);
        if (c.brightness >= 0) {
            EXPECT_EQ(image->cgImage()->row(30)[120], c.brightness);
        }
    }
    const auto file = asset(early)->file();
    for (const auto& [time, brightness] : {std::pair{CMTimeMake(19, 10), 255},
                                           {CMTimeMake(0, 5), 0},
                                           {CMTimeMake(95, 100), 0},
                                           {CMTimeMake(1, 1), 255},
                                           {CMTimeMake(100, 1), 255}}) {
        const auto image = file->copyImage(time, nullptr);
        ASSERT_TRUE(image);
        EXPECT_EQ(image->row(30)[120], brightness) << time.value;
    }
}

}  // namespace
}  // namespace ostrel
