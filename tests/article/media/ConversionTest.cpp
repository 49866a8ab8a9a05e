#include "article/media/NSMov2Mp4.h"
#include "tests/article/media/MediaTest.h"

#include <thread>

namespace ostrel {
namespace {

using Status = AVAssetExportSessionStatus;
const std::string medium(AVAssetExportPresetMediumQuality);
const std::string low(AVAssetExportPresetLowQuality);

class ConversionTest : public MediaTest {
protected:
    struct Call {
        bool finished;
        float progress;
        std::optional<NSError> error;
        friend bool operator==(const Call&, const Call&) = default;
    };

    void convert() {
        NSMov2Mp4().convertMovSourceURL(url, "/home/me/Documents/clip.mov",
                                        [this](bool finished, float progress, const std::optional<NSError>& error) {
                                            calls.push_back({finished, progress, error});
                                        });
    }
    ScriptedExport& running() { return *media->exports.back(); }
    /// Half a millisecond into the tick, so that sums of tenths do not matter.
    void ticks(int count) { time.loop().advance(count * 0.1 + 0.0005); }
    int progressCallsIn(double seconds) {
        const auto before = calls.size();
        time.loop().advance(seconds);
        return static_cast<int>(calls.size() - before);
    }

    std::vector<Call> calls;
};

TEST_F(ConversionTest, MediumIsPreferredToLowAndNothingElseIsTaken) {
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{low, medium}, medium}, {{medium}, medium}, {{"Highest", low}, low}, {{"Highest", "640x480"}, ""}, {{}, ""}};
    for (const auto& [offered, taken] : cases) {
        SCOPED_TRACE(testing::PrintToString(offered));
        clip().presets = offered;
        media->exports.clear();
        calls.clear();
        convert();
        ASSERT_EQ(media->exports.size(), taken.empty() ? 0u : 1u);
        if (taken.empty()) {
            time.loop().advance(5);
            EXPECT_EQ(calls, (std::vector<Call>{{true, 0, std::nullopt}})) << "at once, and without a timer";
            EXPECT_EQ(log.lines().back(), "No sutiable video quality.");
        } else {
            EXPECT_EQ(running().request.presetName, taken);
            EXPECT_EQ(running().request.outputPath, "/home/me/Documents/clip.mov");
            EXPECT_TRUE(running().request.optimizesForNetworkUse);
            running().complete(Status::completed);
        }
    }
    media->clips.clear();
    calls.clear();
    convert();
    EXPECT_EQ(calls, (std::vector<Call>{{true, 0, std::nullopt}})) << "no clip";
}

TEST_F(ConversionTest, TheHandlerHearsTheSessionsProgressEveryTenthOfASecond) {
    clip().presets = {medium};
    convert();
    EXPECT_TRUE(calls.empty());
    running().done = 0.25;
    ticks(1);
    running().done = 0.5;
    ticks(1);
    EXPECT_EQ(calls, (std::vector<Call>{{false, 0.25, std::nullopt}, {false, 0.5, std::nullopt}}));
    EXPECT_EQ(progressCallsIn(1), 10);
    running().complete(Status::completed);
}

TEST_F(ConversionTest, TheStatusDecidesWhatTheHandlerHearsAndWhetherTheTimerStops) {
    const NSError full{"The disk is full.", 28};
    struct Case {
        Status status;
        std::optional<Call> told;
        bool timerContinues;
    };
    for (const Case& c :
         {Case{Status::completed, Call{true, 1, std::nullopt}, false},
          Case{Status::failed, Call{true, 0.5, full}, false}, Case{Status::cancelled, Call{true, 0.5, full}, false},
          Case{Status::unknown, Call{true, 0.5, full}, true}, Case{Status::waiting, std::nullopt, true},
          Case{Status::exporting, std::nullopt, true}}) {
        SCOPED_TRACE(static_cast<int>(c.status));
        clip().presets = {medium};
        convert();
        running().done = 0.5;
        calls.clear();
        running().complete(c.status, full);
        ASSERT_EQ(calls.size(), c.told ? 1u : 0u);
        if (c.told) {
            EXPECT_EQ(calls.front(), *c.told);
        }
        EXPECT_EQ(progressCallsIn(1) > 0, c.timerContinues);
        // Stops a timer that still runs, for the next case.
        running().complete(Status::completed);
        time.loop().runUntilIdle();
    }
}

TEST_F(ConversionTest, TheEndIsToldOnTheThreadOfTheExportAndNoProgressFollows) {
    clip().presets = {medium};
    std::vector<std::thread::id> finishedOn;
    NSMov2Mp4().convertMovSourceURL(url, "/o.mp4", [&](bool finished, float, const std::optional<NSError>&) {
        EXPECT_TRUE(finished || finishedOn.empty());
        if (finished) finishedOn.push_back(std::this_thread::get_id());
    });
    ticks(2);
    std::thread exporting([&] { running().complete(Status::completed); });
    const auto exportingId = exporting.get_id();
    exporting.join();
    time.loop().advance(1);
    EXPECT_EQ(finishedOn, std::vector{exportingId});
}

TEST_F(ConversionTest, NothingOfAConversionIsKeptAfterItsEnd) {
    clip().presets = {medium};
    auto marker = std::make_shared<int>(0);
    const std::weak_ptr<int> kept = marker;
    NSMov2Mp4().convertMovSourceURL(url, "/o.mp4", [marker](bool, float, const std::optional<NSError>&) { ++*marker; });
    marker = nullptr;
    ticks(3);
    EXPECT_FALSE(kept.expired());
    running().complete(Status::failed, NSError{"No."});
    media->exports.clear();
    time.loop().advance(1);
    EXPECT_TRUE(kept.expired());
}

TEST_F(ConversionTest, ACancelReachesTheExport) {
    clip().presets = {low};
    const auto session = NSMov2Mp4().startConversion(url, "/o.mp4", nullptr);
    session->cancelExport();
    EXPECT_TRUE(running().isCancelled);
    running().complete(Status::cancelled, NSError{"The conversion was cancelled."});
    EXPECT_EQ(session->error(), NSError{"The conversion was cancelled."});
}

}  // namespace
}  // namespace ostrel
