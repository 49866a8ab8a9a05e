#include "backends/headless/VirtualTime.h"
#include "platform/foundation/runloop/NSProgress.h"
#include "platform/foundation/runloop/NSThread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <future>
#include <thread>
#include <utility>

namespace ostrel {
namespace {

class ProgressTest : public ::testing::Test {
protected:
    ~ProgressTest() override { NSProgress::removeObserver(this); }
    void observe() {
        NSProgress::addObserver(this, [this](const auto& work) {
            ++calls;
            listed = work.size();
        });
    }
    VirtualTime time;
    int calls = 0;
    std::size_t listed = 0;
};

TEST_F(ProgressTest, ObserversSeeTheListComeAndGoAtABoundedRate) {
    auto before = NSProgress::progressWithTotalUnitCount(10);
    before->publish();
    observe();
    EXPECT_EQ(listed, 1u) << "the work published before";
    auto second = NSProgress::progressWithTotalUnitCount(10);
    second->publish();
    second->publish();
    time.loop().advance(0.5);
    EXPECT_EQ(listed, 2u);
    calls = 0;
    for (int i = 0; i < 1000; ++i) {
        second->setCompletedUnitCount(i);
        time.loop().advance(0.001);
    }
    EXPECT_LE(calls, 11);
    EXPECT_GE(calls, 9);
    second.reset();  // the last owner
    time.loop().advance(0.2);
    EXPECT_EQ(listed, 1u);
    before->unpublish();
    time.loop().advance(0.2);
    EXPECT_EQ(listed, 0u);
    calls = 0;
    time.loop().advance(10);
    EXPECT_EQ(calls, 0) << "without work there are no ticks";
}

TEST_F(ProgressTest, WorkOfThreadsIsListedOnTheMainThread) {
    observe();
    std::promise<void> release;
    const auto gate = release.get_future().share();
    std::atomic<int> published = 0;
    for (int i = 0; i < 8; ++i) {
        NSThread::detachNewThread([&published, gate] {
            auto work = NSProgress::progressWithTotalUnitCount(100);
            work->publish();
            for (int step = 0; step <= 100; ++step) work->setCompletedUnitCount(step);
            ++published;
            gate.wait();
        });
    }
    while (published < 8) std::this_thread::yield();
    time.loop().advance(1);
    EXPECT_EQ(listed, 8u);
    release.set_value();
    ASSERT_TRUE(NSThread::waitForAll(10));
    time.loop().advance(1);
    EXPECT_EQ(listed, 0u);
}

TEST(ProgressOfARunLoopThatEnded, LeavesTheNextOneItsTicks) {
    const auto work = NSProgress::progressWithTotalUnitCount(1);
    int observer = 0, calls = 0;
    for (int loop = 0; loop < 2; ++loop) {
        VirtualTime time;
        NSProgress::addObserver(&observer, [&](const auto&) { ++calls; });
        work->publish();
        time.loop().advance(1);
        // A tick is waiting now and is dropped with the loop.
        EXPECT_GE(std::exchange(calls, 0), 9) << loop;
        NSProgress::removeObserver(&observer);
    }
    work->unpublish();
}

TEST_F(ProgressTest, TimeRemainingIsThatOfTheRecentPace) {
    using Fraction = std::function<double(double seconds)>;
    const std::tuple<const char*, Fraction, double, std::optional<double>> cases[] = {
        {"too early", [](double s) { return s / 100; }, 1, std::nullopt},
        {"even", [](double s) { return s / 100; }, 20, 80},
        {"slower lately", [](double s) { return s < 10 ? s / 20 : 0.5 + (s - 10) / 1000; }, 40, 470},
        {"stands still", [](double s) { return std::min(s / 100, 0.2); }, 60, std::nullopt},
        {"longer than a day", [](double s) { return s / 1e7; }, 60, std::nullopt},
        {"began anew", [](double s) { return s < 10 ? s / 20 : (s - 10) / 100; }, 20, 90},
    };
    observe();
    for (const auto& [name, fraction, at, expected] : cases) {
        auto work = NSProgress::progressWithTotalUnitCount(1'000'000'000);
        work->publish();
        for (double s = 0; s < at; s += 0.1) {
            work->setCompletedUnitCount(std::llround(fraction(s) * 1e9));
            time.loop().advance(0.1);
        }
        const auto remaining = work->estimatedTimeRemaining();
        EXPECT_EQ(remaining.has_value(), expected.has_value()) << name;
        EXPECT_NEAR(remaining.value_or(0), expected.value_or(0), expected.value_or(0) * 0.03) << name;
    }
    const auto unknown = NSProgress::progressWithTotalUnitCount(0);
    EXPECT_EQ(unknown->fractionCompleted(), std::nullopt);
}

TEST_F(ProgressTest, CancellingRunsTheHandlerOnce) {
    int cancelled = 0;
    const auto work = NSProgress::progressWithTotalUnitCount(1);
    work->cancel();
    EXPECT_FALSE(work->isCancelled()) << "it cannot be cancelled";
    work->setCancellationHandler([&] { ++cancelled; });
    work->cancel();
    work->cancel();
    EXPECT_EQ(cancelled, 1);
    EXPECT_TRUE(work->isCancelled());
}

}  // namespace
}  // namespace ostrel
