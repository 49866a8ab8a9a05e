#include "tests/platform/uikit/table/TableTestSupport.h"

namespace ostrel {
namespace {

class RefreshControlTest : public TableTest {
protected:
    void SetUp() override {
        show(30);
        control = make<UIRefreshControl>();
        control->setAttributedTitle("Loading...");
        control->addTarget([this] { ++fired; }, UIControlEvent::valueChanged);
        table->setRefreshControl(control);
        platform.settle();
    }
    const SpinnerContent* wheel() {
        const auto* node = platform.backend().node(control->subviews().front()->tag());
        return node ? std::get_if<SpinnerContent>(&node->state->content) : nullptr;
    }
    void pull(CGFloat from, CGFloat to) {
        for (CGFloat y = from; y <= to; y += 10) platform.touch(UITouchPhase::moved, {180, y});
        platform.settle();
    }
    std::shared_ptr<UIRefreshControl> control;
    int fired = 0;
};

TEST_F(RefreshControlTest, AFullPullFiresOnceAndTheWheelStaysUntilTheEnd) {
    platform.touch(UITouchPhase::began, {180, 100});
    pull(110, 160);
    EXPECT_EQ(fired, 0);
    EXPECT_FALSE(control->isHidden());
    ASSERT_TRUE(wheel());
    EXPECT_FALSE(wheel()->animating);
    EXPECT_NEAR(wheel()->progress, 0.55, 0.35);
    const CGFloat halfway = table->contentOffset().y;
    EXPECT_TRUE(halfway < 0 && halfway > -52) << "the content resists";
    pull(170, 400);
    EXPECT_EQ(fired, 1);
    EXPECT_TRUE(control->isRefreshing());
    EXPECT_TRUE(wheel()->animating);
    platform.touch(UITouchPhase::ended, {180, 400});
    platform.advance(2);
    EXPECT_EQ(table->contentOffset().y, -60);
    EXPECT_TRUE(platform.sees("Loading..."));
    EXPECT_FALSE(platform.backend().framesWanted()) << "the backend turns the wheel by itself";
    control->endRefreshing();
    platform.advance(0.1);
    EXPECT_TRUE(table->contentOffset().y > -60 && table->contentOffset().y < 0);
    platform.advance(1);
    EXPECT_EQ(table->contentOffset().y, 0);
    EXPECT_TRUE(control->isHidden());
    EXPECT_EQ(fired, 1);
}

TEST_F(RefreshControlTest, AShortPullGoesBackAndOneThatEndsUnderTheFingerDoesNotFireAgain) {
    platform.drag({180, 100}, {180, 160}, 0.2, true);
    platform.advance(1);
    EXPECT_EQ(table->contentOffset().y, 0);
    EXPECT_EQ(fired, 0);
    platform.touch(UITouchPhase::began, {180, 100});
    pull(110, 400);
    EXPECT_EQ(fired, 1);
    const CGFloat held = table->contentOffset().y;
    control->endRefreshing();
    platform.settle();
    EXPECT_EQ(table->contentOffset().y, held) << "the finger holds it";
    platform.touch(UITouchPhase::moved, {180, 410});
    EXPECT_EQ(fired, 1);
    platform.touch(UITouchPhase::ended, {180, 410});
    platform.advance(2);
    EXPECT_EQ(table->contentOffset().y, 0);
    platform.drag({180, 100}, {180, 400}, 0.3, true);
    EXPECT_EQ(fired, 2) << "the next pull counts again";
}

TEST_F(RefreshControlTest, ARefreshByTheProgramEndsAtRestWhicheverAnswerComesFirst) {
    const auto begin = [&] {
        table->setContentOffset({0, table->contentOffset().y - control->frame().height()});
        control->beginRefreshing();
        control->sendActions(UIControlEvent::valueChanged);
        platform.advance(0.5);
    };
    const auto plainAnswer = [&] {
        control->endRefreshing();
        table->reloadData();
    };
    const auto animatedAnswer = [&] {
        table->setContentOffset({0, table->contentOffset().y + control->frame().height()});
        plainAnswer();
    };
    begin();
    EXPECT_EQ(table->contentOffset().y, -60);
    animatedAnswer();
    platform.advance(0.1);
    plainAnswer();
    platform.advance(1);
    EXPECT_EQ(table->contentOffset().y, 0);

    begin();
    plainAnswer();
    platform.advance(0.1);
    animatedAnswer();
    platform.advance(1);
    EXPECT_NEAR(table->contentOffset().y, 30, 30);

    // The content of few rows cannot scroll and must not leave a gap at either end.
    source.items.resize(2);
    table->reloadData();
    platform.advance(1);
    begin();
    plainAnswer();
    animatedAnswer();
    platform.advance(1);
    EXPECT_EQ(table->contentOffset().y, 0);
}

TEST_F(RefreshControlTest, RemovingOrReplacingARefreshingControlLeavesNoGap) {
    for (const bool replaces : {false, true}) {
        table->setRefreshControl(control);
        table->setContentOffset({0, -60});
        control->beginRefreshing();
        platform.advance(0.2);
        ASSERT_EQ(table->contentOffset().y, -60);
        table->setRefreshControl(replaces ? make<UIRefreshControl>() : nullptr);
        table->reloadData();
        platform.advance(1);
        EXPECT_EQ(table->contentOffset().y, 0);
        EXPECT_EQ(control->superview(), nullptr);
        control->endRefreshing();
    }
}

TEST_F(RefreshControlTest, BeginRefreshingDoesNotScroll) {
    scrollTo(300);
    control->beginRefreshing();
    platform.advance(1);
    EXPECT_EQ(table->contentOffset().y, 300);
    control->endRefreshing();
    platform.advance(1);
    EXPECT_EQ(table->contentOffset().y, 300);
}

}  // namespace
}  // namespace ostrel
