#include "backends/headless/HeadlessPlatform.h"
#include "platform/foundation/runloop/NSThread.h"
#include "platform/uikit/screens/UINavigationController.h"
#include "reader/screens/ReaderLogController.h"

#include <gtest/gtest.h>

namespace ostrel {
namespace {

class ReaderLogTest : public ::testing::Test {
protected:
    void show() {
        controller = make<ReaderLogController>(log, std::function<void()>());
        platform.window().setRootViewController(make<UINavigationController>(controller));
        platform.advance(1);
    }
    void append(int count) {
        for (int i = 0; i < count; ++i) log->append("line " + std::to_string(++written));
        platform.advance(0.5);
    }
    bool sees(int line) { return platform.sees("line " + std::to_string(line)); }
    HeadlessPlatform platform;
    std::shared_ptr<ReaderLog> log = std::make_shared<ReaderLog>();
    std::shared_ptr<ReaderLogController> controller;
    int written = 0;
};

TEST_F(ReaderLogTest, KeepsTheLastLinesAndTellsAtABoundedRate) {
    int told = 0;
    log->addObserver(this, [&] { ++told; });
    for (int thread = 0; thread < 4; ++thread) {
        NSThread::detachNewThread([log = log] {
            for (int i = 0; i < 1000; ++i) log->append("x");
        });
    }
    ASSERT_TRUE(NSThread::waitForAll(10));
    platform.advance(1);
    EXPECT_EQ(told, 1);
    const auto lines = log->lines();
    ASSERT_EQ(lines.size(), ReaderLog::mostLines);
    EXPECT_EQ(lines.back().number, 4000u);
    EXPECT_EQ(lines.front().number, 4001 - ReaderLog::mostLines);
    // "ö" is two bytes: a long line is cut between characters.
    std::string wide = "a";
    while (wide.size() <= ReaderLog::longestLine) wide += "ö";
    log->append(wide);
    EXPECT_EQ(log->lines().back().text, wide.substr(0, ReaderLog::longestLine - 1) + "…");
    log->removeObserver(this);
}

TEST_F(ReaderLogTest, FollowsTheEndUntilSomebodyScrollsAway) {
    show();
    EXPECT_TRUE(platform.sees("Nothing has been logged."));
    append(200);
    EXPECT_TRUE(sees(200));
    EXPECT_FALSE(sees(1));
    platform.scroll({180, 300}, 2000);
    platform.advance(1);
    EXPECT_FALSE(controller->isFollowing());
    append(50);
    EXPECT_FALSE(sees(250)) << "the lines that the user reads stay on screen";
    ASSERT_TRUE(platform.tapText("Follow"));
    platform.advance(1);
    EXPECT_TRUE(sees(250));
    append(3000);
    EXPECT_TRUE(sees(3250));
}

TEST_F(ReaderLogTest, CopiesAndClears) {
    std::string copied;
    UIApplication::sharedApplication().setPasteboardText = [&](const std::string& text) { copied = text; };
    show();
    append(3);
    ASSERT_TRUE(platform.tapText("Copy All"));
    EXPECT_EQ(std::ranges::count(copied, '\n'), 3);
    EXPECT_NE(copied.find(" line 2\n"), std::string::npos);
    EXPECT_TRUE(platform.sees("Copied"));
    platform.advance(3);
    EXPECT_TRUE(platform.sees("Copy All"));
    ASSERT_TRUE(platform.tapText("Clear"));
    platform.advance(1);
    EXPECT_FALSE(sees(3));
    EXPECT_TRUE(platform.sees("Nothing has been logged."));
    append(1);
    EXPECT_TRUE(sees(4));
    UIApplication::sharedApplication().setPasteboardText = nullptr;
}

}  // namespace
}  // namespace ostrel
