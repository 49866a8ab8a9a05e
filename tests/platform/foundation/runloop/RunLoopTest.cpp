#include "backends/headless/VirtualTime.h"
#include "platform/foundation/runloop/NSThread.h"
#include "platform/foundation/runloop/SystemRunLoop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>

namespace ostrel {
namespace {

class RunLoopTest : public testing::Test {
protected:
    Task mark(char name) {
        return [this, name] { calls_ += name; };
    }
    double now() const { return Clock::shared().monotonicSeconds(); }

    VirtualTime time_;
    VirtualRunLoop& loop_ = time_.loop();
    std::string calls_;
};

TEST_F(RunLoopTest, RunsTasksInOrderOfTimeAndOfTheCalls) {
    loop_.performAfter(2, mark('d'));
    loop_.performAfter(1, mark('c'));
    loop_.perform(mark('a'));
    loop_.performAfter(-1, mark('b'));
    loop_.runUntilIdle();
    EXPECT_EQ(calls_, "ab");
    loop_.advance(1.999);
    EXPECT_EQ(calls_, "abc");
    loop_.advance(0.001);
    EXPECT_EQ(calls_, "abcd");
}

TEST_F(RunLoopTest, ATaskOfATurnWaitsForTheNextOne) {
    loop_.perform([&] {
        calls_ += 'a';
        loop_.perform(mark('c'));
        loop_.atEndOfTurn(mark('E'));
    });
    loop_.perform(mark('b'));
    EXPECT_TRUE(loop_.runOneTurn());
    EXPECT_EQ(calls_, "abE");
    EXPECT_TRUE(loop_.runOneTurn());
    EXPECT_EQ(calls_, "abEc");
    EXPECT_FALSE(loop_.runOneTurn());
    loop_.atEndOfTurn([&] { loop_.atEndOfTurn(mark('F')); });
    loop_.runUntilIdle();
    EXPECT_EQ(calls_, "abEcF") << "the end of a turn comes also without tasks";
}

TEST_F(RunLoopTest, CancelledTasksDoNotRunNotEvenInTheSameTurn) {
    const auto later = loop_.performAfter(1, mark('x'));
    std::uint64_t sameTurn = 0;
    loop_.performAfter(0, [&] { loop_.cancel(sameTurn); });
    sameTurn = loop_.performAfter(0, mark('y'));
    loop_.cancel(later);
    loop_.cancel(12345);
    loop_.advance(2);
    EXPECT_EQ(calls_, "");
}

TEST_F(RunLoopTest, TasksSeeTheTimeTheyWereDue) {
    std::vector<double> times;
    loop_.performAfter(1.5, [&] {
        times.push_back(now());
        loop_.performAfter(1, [&] { times.push_back(now()); });
    });
    const NSDate start = NSDate::now();
    loop_.advance(180);
    EXPECT_EQ(times, (std::vector<double>{1.5, 2.5}));
    EXPECT_NEAR(NSDate::now().timeIntervalSinceDate(start), 180, 1e-6);
    time_.clock().setNow({1000});
    EXPECT_NEAR(NSDate::now().secondsSince1970, 1000, 1e-6);
    EXPECT_EQ(now(), 180);
}

TEST_F(RunLoopTest, AnEndlessChainFailsInsteadOfHanging) {
    std::function<void()> again = [&] { loop_.perform(again); };
    loop_.perform(again);
    EXPECT_THROW(loop_.runUntilIdle(), std::runtime_error);
    again = [] {};
}

using NSTimerTest = RunLoopTest;

TEST_F(NSTimerTest, FiresOnceOrRepeatsWithoutDriftUntilInvalidated) {
    const std::weak_ptr<NSTimer> once = NSTimer::scheduledTimer(0.2, false, [&](NSTimer&) { calls_ += 't'; });
    std::vector<double> times;
    const std::weak_ptr<NSTimer> timer = NSTimer::scheduledTimer(0.2, true, [&](NSTimer&) { times.push_back(now()); });
    loop_.advance(0.199);
    EXPECT_TRUE(calls_.empty() && once.lock()->isValid());
    loop_.advance(1999.801);
    EXPECT_TRUE(calls_ == "t" && once.expired());
    ASSERT_EQ(times.size(), 10'000u);
    for (std::size_t i = 0; i < times.size(); ++i) ASSERT_NEAR(times[i], 0.2 * static_cast<double>(i + 1), 1e-6);
    timer.lock()->invalidate();
    EXPECT_TRUE(timer.expired());
    loop_.advance(1);
    EXPECT_EQ(times.size(), 10'000u);
}

TEST_F(NSTimerTest, MissedFiringsAreSkippedAndTheRasterIsKept) {
    std::vector<double> times;
    const auto timer = NSTimer::scheduledTimer(1, true, [&](NSTimer&) {
        times.push_back(now());
        if (times.size() == 1) time_.clock().moveTo(TaskQueue::nanoseconds(3.5));  // a slow handler
    });
    loop_.advance(5);
    EXPECT_EQ(times, (std::vector<double>{1, 4, 5}));
    timer->invalidate();
}

TEST_F(NSTimerTest, InvalidatingWithinItsOwnHandlerIsSafe) {
    for (const double interval : {0.5, -1.0}) {
        calls_.clear();
        const auto token = std::make_shared<int>(0);
        const std::weak_ptr<NSTimer> timer = NSTimer::scheduledTimer(interval, true, [&, token](NSTimer& self) {
            if ((calls_ += 't').size() < 3) return;
            self.invalidate();
            self.invalidate();
            calls_ += *token == 0 && !self.isValid() ? '.' : 'x';
        });
        loop_.advance(5);
        EXPECT_EQ(calls_, "ttt.") << interval;
        EXPECT_TRUE(timer.expired());
        EXPECT_EQ(token.use_count(), 1) << "the handler is let go";
    }
}

TEST(NSThread, CountsDetachedThreadsUntilTheyEnded) {
    std::promise<void> release;
    const auto gate = release.get_future().share();
    auto token = std::make_shared<int>(0);
    for (int i = 0; i < 3; ++i) NSThread::detachNewThread([gate, token] { gate.wait(); });
    EXPECT_EQ(NSThread::runningCount(), 3);
    EXPECT_FALSE(NSThread::waitForAll(0.01));
    release.set_value();
    EXPECT_TRUE(NSThread::waitForAll(10));
    EXPECT_EQ(NSThread::runningCount(), 0);
    // The thread is counted until the objects of its body have been released.
    EXPECT_EQ(token.use_count(), 1);
}

TEST(NSThread, SleepersFollowVirtualTimeAndTheirTasksArriveWhileWaiting) {
    VirtualTime time;
    std::vector<double> reports;
    std::atomic<int> left = 400;
    NSThread::detachNewThread([&] {
        do {
            NSThread::sleepForTimeInterval(0.5);
            EXPECT_FALSE(RunLoop::main().isMainThread());
            RunLoop::main().perform([&] {
                EXPECT_TRUE(RunLoop::main().isMainThread());
                reports.push_back(Clock::shared().monotonicSeconds());
            });
        } while (--left > 0);
    });
    time.loop().advance(1.2);
    EXPECT_EQ(reports, (std::vector<double>{0.5, 1.0}));
    time.loop().performAfter(100, [&] { left = 1; });
    time.loop().advance(180);
    EXPECT_TRUE(time.loop().waitFor([] { return NSThread::runningCount() == 0; }));
    EXPECT_EQ(reports.size(), 203u);
    EXPECT_EQ(reports.back(), 101.5);
    EXPECT_FALSE(time.loop().waitFor([] { return false; }, 0.02));
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

TEST(SystemRunLoop, RunsOnRealTime) {
    const auto loop = std::make_shared<SystemRunLoop>();
    RunLoop::installMain(loop);
    std::string calls;
    int fired = 0;
    loop->performAfter(0.02, [&] { calls += 'b'; });
    loop->perform([&] { calls += 'a'; });
    const auto timer = NSTimer::scheduledTimer(0.005, true, [&](NSTimer&) { ++fired; });
    std::thread worker([&] { loop->perform([&] { calls += 'w'; }); });
    EXPECT_TRUE(loop->run([&] { return calls.size() == 3 && fired >= 3; }, 10));
    EXPECT_LT(calls.find('a'), calls.find('b'));
    EXPECT_FALSE(loop->run([] { return false; }, 0.01));
    worker.join();
    timer->invalidate();
    RunLoop::installMain(nullptr);
}

}  // namespace
}  // namespace ostrel
