#include "platform/foundation/runloop/RunLoop.h"
#include "tests/backends/qt/QtTestWindow.h"

#include <gtest/gtest.h>
#include <QCoreApplication>
#include <QTimer>
#include <string>
#include <thread>

namespace ostrel::test {

namespace {

TEST(QtRunLoop, RunsTasksOfOtherThreadsOnTheMainThreadInOrder) {
    RunLoop& loop = RunLoop::main();
    std::vector<int> ran;
    bool allOnMain = true, otherIsMain = true;
    std::thread other([&] {
        otherIsMain = loop.isMainThread();
        for (int i = 0; i < 500; ++i) {
            loop.perform([&, i] {
                ran.push_back(i);
                allOnMain &= loop.isMainThread();
            });
        }
    });
    EXPECT_TRUE(waitUntil([&] { return ran.size() == 500; }));
    other.join();
    EXPECT_FALSE(otherIsMain);
    EXPECT_TRUE(allOnMain);
    EXPECT_TRUE(std::is_sorted(ran.begin(), ran.end()));
}

TEST(QtRunLoop, TimesAndCancelsTasks) {
    RunLoop& loop = RunLoop::main();
    std::string ran;
    loop.performAfter(0.04, [&] { ran += "c"; });
    loop.performAfter(0.02, [&] { ran += "b"; });
    const auto cancelled = loop.performAfter(0.03, [&] { ran += "x"; });
    loop.performAfter(0, [&] { ran += "a"; });
    std::thread([&] { loop.performAfter(0.06, [&] { ran += "d"; }); }).join();
    loop.cancel(cancelled);
    EXPECT_TRUE(waitUntil([&] { return ran.size() == 4; }));
    EXPECT_EQ(ran, "abcd");
}

TEST(QtRunLoop, EndsATurnBeforeItWaits) {
    RunLoop& loop = RunLoop::main();
    std::string ran;
    // An event of Qt, not a task of the loop, requests the end of the turn.
    QTimer::singleShot(0, [&] {
        loop.atEndOfTurn([&] { ran += "end"; });
        ran += "event ";
    });
    loop.performAfter(0.05, [&] { ran += " later"; });
    EXPECT_TRUE(waitUntil([&] { return ran.ends_with("later"); }));
    EXPECT_EQ(ran, "event end later");
}

}  // namespace

}  // namespace ostrel::test
