#include "backends/headless/HeadlessPlatform.h"
#include "platform/uikit/controls/UIButton.h"
#include "platform/uikit/view/UIScrollView.h"

#include <gtest/gtest.h>

namespace ostrel {
namespace {

class ScrollLog final : public UIScrollViewDelegate {
public:
    void scrollViewWillBeginDragging(UIScrollView&) override { events.push_back("drag"); }
    void scrollViewDidEndDragging(UIScrollView&, bool flies) override {
        events.push_back(flies ? "let fly" : "let go");
    }
    void scrollViewDidEndDecelerating(UIScrollView&) override { events.push_back("rest"); }
    void scrollViewDidScroll(UIScrollView&) override { ++steps; }
    std::vector<std::string> events;
    int steps = 0;
};

class ScrollViewTest : public ::testing::Test {
protected:
    explicit ScrollViewTest(UIUserInterfaceIdiom idiom = UIUserInterfaceIdiom::phone) : platform({375, 600}, idiom) {
        scroll = make<UIScrollView>(CGRect{0, 0, 375, 600});
        scroll->setContentSize({375, 5000});
        scroll->setScrollViewDelegate(log);
        platform.window().addSubview(scroll);
        platform.settle();
    }
    CGFloat y() const { return scroll->contentOffset().y; }
    void expectAtRest(CGFloat offset) {
        EXPECT_EQ(y(), offset);
        EXPECT_FALSE(platform.backend().framesWanted());
    }
    bool scrollPrecisely(CGFloat dy) { return scroll->scrollBy({.location = {}, .dx = 0, .dy = dy, .precise = true}); }

    HeadlessPlatform platform;
    std::shared_ptr<ScrollLog> log = std::make_shared<ScrollLog>();
    std::shared_ptr<UIScrollView> scroll;
};

class MacScrollViewTest : public ScrollViewTest {
protected:
    MacScrollViewTest() : ScrollViewTest(UIUserInterfaceIdiom::mac) { platform.touchType = UITouchType::pointer; }
};

TEST_F(ScrollViewTest, ASlowDragLeavesTheContentWhereTheFingerDidAndPressesNoButton) {
    const auto button = make<UIButton>(UIButton::Type::custom, CGRect{0, 450, 375, 100});
    int pressed = 0;
    button->addTarget([&] { ++pressed; }, UIControlEvent::touchUpInside);
    scroll->addSubview(button);
    platform.drag({100, 500}, {100, 300}, 0.5, true);
    // The first 8 points are the threshold of the drag.
    EXPECT_EQ(y(), 192);
    EXPECT_EQ(log->events, (std::vector<std::string>{"drag", "let go"}));
    platform.advance(2);
    expectAtRest(192);
    EXPECT_TRUE(!button->isHighlighted() && pressed == 0);
    platform.tap(*button);
    EXPECT_EQ(pressed, 1);
}

TEST_F(ScrollViewTest, AFlingSlowsDownAndComesToRest) {
    platform.drag({100, 500}, {100, 300}, 0.1);
    EXPECT_TRUE(scroll->isDecelerating());
    const CGFloat released = y();
    platform.advance(0.2);
    const CGFloat early = y() - released;
    platform.advance(0.2);
    const CGFloat later = y() - released - early;
    EXPECT_GT(early, 100);
    EXPECT_GT(later, 0);
    EXPECT_LT(later, early);
    platform.advance(5);
    EXPECT_FALSE(scroll->isDecelerating());
    EXPECT_FALSE(platform.backend().framesWanted());
    EXPECT_EQ(log->events, (std::vector<std::string>{"drag", "let fly", "rest"}));
    EXPECT_EQ(y() * 64, std::floor(y() * 64));
}

TEST_F(ScrollViewTest, TheEndsGiveWayAndPullBack) {
    const std::pair<CGFloat, CGFloat> ends[] = {{0, 0}, {4400, 4400}};
    for (const auto& [start, rest] : ends) {
        scroll->setContentOffset({0, start});
        const CGFloat way = start == 0 ? 200 : -200;
        platform.drag({100, 300}, {100, 300 + way}, 0.3, true);
        EXPECT_NEAR(std::abs(y() - rest), 82, 33) << "the content resists";
        platform.advance(2);
        expectAtRest(rest);
    }
    scroll->setContentOffset({0, 200});
    platform.drag({100, 100}, {100, 500}, 0.1);
    platform.advance(4);
    EXPECT_EQ(y(), 0) << "a fling into the end";
}

TEST_F(ScrollViewTest, ContentThatFitsOrIsSwitchedOffStays) {
    scroll->setScrollEnabled(false);
    platform.drag({100, 500}, {100, 300});
    platform.scroll({100, 300}, -60);
    platform.key(UIKeyCode::pageDown);
    EXPECT_EQ(y(), 0);
    scroll->setScrollEnabled(true);
    scroll->setContentSize({375, 400});
    platform.drag({100, 500}, {100, 300});
    EXPECT_EQ(y(), 0);
    EXPECT_FALSE(scroll->scrollBy({.location = {100, 100}, .dx = 0, .dy = -60}));
}

TEST_F(ScrollViewTest, TheWheelIsSmoothAndAddsUpAndATrackpadIsImmediate) {
    for (int notch = 0; notch < 2; ++notch) platform.window().sendScroll({.location = {100, 300}, .dx = 0, .dy = -60});
    platform.advance(0.03);
    EXPECT_GT(y(), 0);
    EXPECT_LT(y(), 120);
    platform.advance(1);
    EXPECT_EQ(y(), 120);
    EXPECT_TRUE(scrollPrecisely(7.5));
    EXPECT_EQ(y(), 112.5);
    EXPECT_TRUE(scrollPrecisely(500));
    EXPECT_EQ(y(), 0);
    EXPECT_FALSE(scrollPrecisely(1)) << "the outer scroll view scrolls";
    EXPECT_FALSE(scrollPrecisely(std::nan("")));
}

TEST_F(ScrollViewTest, AnimatedOffsetsArriveExactlyAndReducedMotionJumps) {
    scroll->setContentOffset({0, 333}, true);
    platform.advance(0.15);
    EXPECT_GT(y(), 50);
    EXPECT_LT(y(), 300);
    platform.advance(0.5);
    expectAtRest(333);
    UIView::setReduceMotionEnabled(true);
    scroll->setContentOffset({0, 1000}, true);
    EXPECT_EQ(y(), 1000);
    UIView::setReduceMotionEnabled(false);
}

TEST_F(ScrollViewTest, ADragContinuesFromAnOffsetSetDuringIt) {
    scroll->setContentOffset({0, 1000});
    platform.touch(UITouchPhase::began, {100, 300});
    platform.touch(UITouchPhase::moved, {100, 280});
    EXPECT_EQ(y(), 1012);
    scroll->setContentOffset({0, 2000});
    platform.touch(UITouchPhase::moved, {100, 270});
    EXPECT_EQ(y(), 2010);
    platform.touch(UITouchPhase::cancelled, {100, 270});
    platform.advance(1);
    EXPECT_EQ(y(), 2010);
}

TEST_F(ScrollViewTest, InsetsWidenTheLimitsAndTheTopStaysTheTop) {
    scroll->setContentInset({44, 0, 30, 0});
    EXPECT_EQ(y(), -44);
    EXPECT_EQ(scroll->maximumOffsetY(), 5000 + 30 - 600);
    scroll->setContentOffset({0, 4430});
    scroll->setContentInset({44, 0, 0, 0});
    EXPECT_EQ(y(), 4400);
    scroll->scrollRectToVisible({0, 4420, 10, 10}, false);
    EXPECT_EQ(y(), 4420 - 44);
}

TEST_F(ScrollViewTest, TheIndicatorShowsTheOffsetAndFades) {
    platform.drag({100, 500}, {100, 300}, 0.5, true);
    const auto bar = scroll->subviews().back();
    EXPECT_EQ(bar->alpha(), 1);
    EXPECT_EQ(bar->frame().width(), 3);
    EXPECT_GT(bar->frame().minY(), y());
    EXPECT_LT(bar->frame().maxY(), y() + 600);
    platform.advance(2.5);
    EXPECT_EQ(bar->alpha(), 0);
    EXPECT_FALSE(platform.backend().framesWanted());
}

TEST_F(MacScrollViewTest, ThePointerDragsTheBarButNotTheContent) {
    platform.drag({100, 500}, {100, 300});
    EXPECT_EQ(y(), 0);
    platform.scroll({100, 300}, -60);
    platform.advance(0.5);
    const auto bar = scroll->subviews().back();
    const CGPoint grip = platform.middleOf(*bar);
    platform.drag(grip, {grip.x, grip.y + 1000}, 0.2, true);
    EXPECT_EQ(y(), 4400);
    platform.hover(platform.middleOf(*bar));
    EXPECT_EQ(bar->frame().width(), 10);
}

TEST(ScrollMotion, RubberBandIsUndoneByItsInverseAndTheWayDoesNotDependOnTheFrames) {
    for (const CGFloat offset : {-300.0, -1.0, 0.0, 55.0, 100.0, 130.0, 900.0}) {
        const CGFloat shown = ScrollMotion::rubberBanded(offset, 0, 100, 600);
        EXPECT_NEAR(ScrollMotion::unbanded(shown, 0, 100, 600), offset, 1e-6);
        EXPECT_LE(std::abs(shown - std::clamp(offset, 0.0, 100.0)), std::abs(offset - std::clamp(offset, 0.0, 100.0)));
    }
    const auto way = [](double frame) {
        ScrollMotion motion;
        motion.fling(0, 1000, 0, 1e6);
        while (motion.step(frame, 0, 1e6)) {}
        return motion.position();
    };
    // The distance in points in which a fling of 1000 points a second slows down to the velocity of rest.
    EXPECT_NEAR(way(1 / 60.0), way(1 / 144.0), 0.5);
    EXPECT_NEAR(way(1 / 60.0), (12 - 1000) / (1000 * std::log(0.998)), 0.5);
}

TEST(NestedScrollTest, ADragThatTheInnerViewCannotFollowScrollsTheOuterView) {
    HeadlessPlatform platform;
    const auto outer = make<UIScrollView>(CGRect{0, 0, 375, 667});
    const auto inner = make<UIScrollView>(CGRect{0, 0, 375, 400});
    outer->setContentSize({375, 2000});
    inner->setContentSize({375, 500});
    outer->addSubview(inner);
    platform.window().addSubview(outer);
    platform.drag({100, 300}, {100, 250}, 0.2, true);
    EXPECT_GT(inner->contentOffset().y, 30);
    EXPECT_EQ(outer->contentOffset().y, 0);
    inner->setContentOffset({0, 100});
    platform.drag({100, 300}, {100, 200}, 0.2, true);
    EXPECT_EQ(inner->contentOffset().y, 100);
    EXPECT_GT(outer->contentOffset().y, 80);
    platform.drag({100, 200}, {100, 250}, 0.2, true);
    EXPECT_LT(inner->contentOffset().y, 70) << "the other way the inner view can follow";
}

}  // namespace
}  // namespace ostrel
