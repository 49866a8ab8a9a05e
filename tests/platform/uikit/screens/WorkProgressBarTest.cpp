#include "tests/platform/uikit/screens/ControllerTestSupport.h"

#include "platform/uikit/screens/WorkProgressBar.h"

namespace ostrel {
namespace {

class WorkProgressBarTest : public ControllerTest {
protected:
    std::shared_ptr<NSProgress> start(const std::string& title, bool isCancellable = true) {
        auto work = NSProgress::progressWithTotalUnitCount(100);
        work->setLocalizedDescription(title);
        if (isCancellable) work->setCancellationHandler([this, title] { cancelled.push_back(title); });
        work->publish();
        return work;
    }
    void SetUp() override {
        navigation = stackOf({"A"});
        WorkProgressBar::addTo(*navigation);
        show(navigation);
    }
    /// Where the screen begins.
    CGFloat top() { return navigation->topViewController()->view()->convertPointToView({}, nullptr).y; }
    std::shared_ptr<UINavigationController> navigation;
    std::vector<std::string> cancelled;
};

TEST_F(WorkProgressBarTest, ComesWithWorkThatLastsAndGoesWithIt) {
    const CGFloat without = top();
    auto brief = start("brief");
    advance(0.2);
    brief.reset();
    advance(2);
    EXPECT_EQ(top(), without) << "over before it would have been seen";

    const auto work = start("Converting");
    settle();
    EXPECT_EQ(top(), without + WorkProgressBar::height);
    EXPECT_TRUE(platform_.sees("Converting"));
    for (int percent = 1; percent <= 10; ++percent) {
        work->setCompletedUnitCount(percent);
        advance(1);
    }
    EXPECT_TRUE(platform_.sees("2 min left"));
    press(button(*navigation, "Cancel, Converting"));
    settle();
    EXPECT_EQ(cancelled, CallLog{"Converting"});
    EXPECT_TRUE(platform_.sees("Cancelling…"));
    work->unpublish();
    settle();
    EXPECT_EQ(top(), without);
    EXPECT_FALSE(platform_.sees("Converting"));
}

TEST_F(WorkProgressBarTest, ListsWorkOfWhichEachPieceCanBeCancelled) {
    const auto first = start("First"), second = start("Second"), third = start("Third", false);
    settle();
    EXPECT_TRUE(platform_.sees("First"));
    EXPECT_TRUE(platform_.sees("3"));
    EXPECT_FALSE(platform_.sees("Second"));
    ASSERT_TRUE(platform_.tapText("First"));
    settle();
    EXPECT_TRUE(platform_.sees("Third"));
    UIViewController& list = *navigation->presentedViewController();
    press(button(list, "Cancel, Second"));
    EXPECT_EQ(cancelled, CallLog{"Second"});
    const UIView* const none = button(list, "Cancel, Third");
    EXPECT_TRUE(!none || none->isHidden()) << "it cannot be cancelled";
    second->unpublish();
    settle();
    EXPECT_FALSE(platform_.sees("Second"));
    first->unpublish();
    third->unpublish();
    settle();
    EXPECT_FALSE(navigation->presentedViewController()) << "an empty list closes";

    const auto last = start("Last");
    settle();
    const std::weak_ptr<UIViewController> gone = navigation;
    navigation.reset();
    window().setRootViewController(nullptr);
    settle();
    EXPECT_TRUE(gone.expired()) << "work under way keeps no screen";
}

TEST(RemainingTime, IsRoundedToWhatItIsWorth) {
    HeadlessPlatform platform;
    const std::pair<double, const char*> cases[] = {
        {0, "A few seconds left"}, {5, "A few seconds left"}, {5.1, "10 sec left"},
        {55, "55 sec left"},       {55.1, "1 min left"},      {61, "2 min left"},
        {3540, "59 min left"},     {3541, "1 hr 0 min left"}, {7261, "2 hr 2 min left"}};
    for (const auto& [seconds, text] : cases) EXPECT_EQ(remainingTimeText(seconds), text) << seconds;
    EXPECT_EQ(remainingTimeText(std::nullopt), "");
}

}  // namespace
}  // namespace ostrel
