#include "backends/headless/VirtualTime.h"
#include "platform/foundation/runloop/NSThread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>

namespace ostrel {
namespace {

TEST(NSThread, CountsDetachedThreadsUntilTheyEnded) {
    std::promise<void> release;
    const auto gate = release.get_future().share();
    auto token = std::make_shared<int>(0);
    for (int i = 0; i < 3; ++i) {
        NSThread::detachNewThread([gate, token] { gate.wait(); });
    }
    EXPECT_EQ(NSThread::runningCount(), 3);
    EXPECT_FALSE(NSThread::waitForAll(0.01));
    release.set_value();
    EXPECT_TRUE(NSThread::waitForAll(10));
    EXPECT_EQ(NSThread::runningCount(), 0);
    // What the body held is gone before its thread counts as ended.
    EXPECT_EQ(token.use_count(), 1);
}

TEST(NSThread, SleepersFollowVirtualTime) {
    VirtualTime time;
    std::vector<double> reports;
    std::atomic<int> left = 400;
    NSThread::detachNewThread([&] {
        do {
            NSThread::sleepForTimeInterval(0.5);
            RunLoop::main().perform([&] { reports.push_back(Clock::shared().monotonicSeconds()); });
        } while (--left > 0);
    });
    time.loop().advance(1.2);
    EXPECT_EQ(reports, (std::vector<double>{0.5, 1.0}));
    time.loop().performAfter(100, [&] { left = 1; });
    time.loop().advance(180);
    EXPECT_TRUE(time.loop().waitFor([] { return NSThread::runningCount() == 0; }));
    EXPECT_EQ(reports.size(), 203u);
    EXPECT_EQ(reports.back(), 101.5);
}

TEST(NSThread, VirtualTimeThatEndsWakesSleepers) {
    std::atomic<bool> ended = false;
    {
        VirtualTime time;
        NSThread::detachNewThread([&] {
            NSThread::sleepForTimeInterval(1e6);
            ended = true;
        });
    }
    EXPECT_TRUE(ended);
}

}  // namespace
}  // namespace ostrel
