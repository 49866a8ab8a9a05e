#include "backends/headless/HeadlessPlatform.h"

#include <gtest/gtest.h>

#include <optional>

namespace ostrel {

namespace {

class AnimationTest : public ::testing::Test {
protected:
    void SetUp() override {
        platform.window().addSubview(view);
        platform.settle();
    }
    const ViewState& shown() { return *platform.backend().node(view->tag())->state; }
    void animateAlpha(double alpha, double duration, std::vector<bool>& completions,
                      UIViewAnimationCurve curve = UIViewAnimationCurve::linear) {
        UIView::animate(
            duration, [&] { view->setAlpha(alpha); },
            [&completions](bool finished) { completions.push_back(finished); }, curve);
        platform.settle();
    }

    std::vector<bool> ends, others;
    HeadlessPlatform platform;
    std::shared_ptr<UIView> view = make<UIView>(CGRect{0, 0, 100, 100});
};

TEST_F(AnimationTest, TheModelChangesAtOnceAndTheScreenFollows) {
    animateAlpha(0, 1, ends);
    EXPECT_EQ(view->alpha(), 0);
    EXPECT_EQ(shown().alpha, 1);
    EXPECT_TRUE(platform.backend().framesWanted());
    platform.advance(0.5 + HeadlessPlatform::frameInterval);
    EXPECT_NEAR(shown().alpha, 0.5, 0.02);
    EXPECT_TRUE(ends.empty());
    platform.advance(0.6);
    EXPECT_EQ(shown().alpha, 0);
    EXPECT_EQ(ends, (std::vector{true}));
    EXPECT_FALSE(platform.backend().framesWanted());
    platform.advance(5);
    EXPECT_EQ(ends.size(), 1u);
}

TEST_F(AnimationTest, EveryCurveBeginsAndEndsExactlyAndNeverGoesBack) {
    for (const auto curve : {UIViewAnimationCurve::linear, UIViewAnimationCurve::easeInOut,
                             UIViewAnimationCurve::easeOut, UIViewAnimationCurve::spring}) {
        view->setFrame({0, 0, 100, 100});
        platform.settle();
        UIView::animate(
            0.5,
            [&] {
                view->setFrame(CGRect{200, 0, 100, 100});
            },
            {}, curve);
        platform.settle();
        EXPECT_EQ(shown().frame.origin.x, 0);
        CGFloat last = 0;
        for (int i = 0; i < 40; ++i) {
            platform.advance(HeadlessPlatform::frameInterval);
            EXPECT_GE(shown().frame.origin.x, last);
            last = shown().frame.origin.x;
        }
        EXPECT_EQ(last, 200);
    }
}

TEST_F(AnimationTest, AllPropertiesMove) {
    view->setBackgroundColor(UIColor::black());
    platform.settle();
    UIView::animate(
        1,
        [&] {
            view->setFrame({100, 0, 300, 100});
            view->setBoundsOrigin({0, 40});
            view->setTransform(CGAffineTransform::translation(10, 0));
            view->setBackgroundColor(UIColor::white());
        },
        {}, UIViewAnimationCurve::linear);
    platform.advance(0.5 + HeadlessPlatform::frameInterval);
    EXPECT_NEAR(shown().frame.origin.x, 50, 2);
    EXPECT_NEAR(shown().frame.size.width, 200, 4);
    EXPECT_NEAR(shown().boundsOrigin.y, 20, 1);
    EXPECT_NEAR(shown().transform.tx, 5, 0.2);
    EXPECT_NEAR(shown().backgroundColor.red, 0.5, 0.02);
}

TEST_F(AnimationTest, AnotherAnimationStartsFromTheShownValue) {
    animateAlpha(0, 1, ends);
    platform.advance(0.5 + HeadlessPlatform::frameInterval);
    const double before = shown().alpha;
    animateAlpha(1, 1, others);
    EXPECT_EQ(ends, (std::vector{false}));
    EXPECT_EQ(shown().alpha, before);
    platform.advance(0.1);
    EXPECT_TRUE(shown().alpha > before && shown().alpha < before + 0.2);
    platform.advance(2);
    EXPECT_EQ(others, (std::vector{true}));
}

TEST_F(AnimationTest, AnUnanimatedChangeEndsItAndAnotherPropertyDoesNot) {
    animateAlpha(0, 1, ends);
    platform.advance(0.3);
    view->setFrame({1, 1, 5, 5});
    platform.settle();
    EXPECT_TRUE(ends.empty());
    EXPECT_EQ(shown().frame.origin.x, 1);
    view->setAlpha(0.9);
    platform.settle();
    EXPECT_EQ(ends, (std::vector{false}));
    EXPECT_EQ(shown().alpha, 0.9);
    EXPECT_FALSE(platform.backend().framesWanted());
}

TEST_F(AnimationTest, CompletionRunsOnceHoweverItEnds) {
    const auto nothing = [] {};
    const auto parent = make<UIView>();
    const std::tuple<const char*, std::function<void()>, bool> cases[] = {
        {"by itself", nothing, true},
        {"the view leaves", [&] { view->removeFromSuperview(); }, false},
        {"its ancestor leaves", [&] { parent->removeFromSuperview(); }, false}};
    for (const auto& [what, during, finished] : cases) {
        ends.clear();
        platform.window().addSubview(parent);
        parent->addSubview(view);
        view->setAlpha(1);
        platform.settle();
        animateAlpha(0, 0.5, ends);
        platform.advance(0.1);
        during();
        platform.advance(3);
        EXPECT_EQ(ends, (std::vector{finished})) << what;
        EXPECT_FALSE(platform.backend().framesWanted()) << what;
    }
}

TEST_F(AnimationTest, WithoutMotionTheModelIsShownAtOnceAndCompletionFollows) {
    const auto expectAtOnce = [&](const char* what) {
        view->setAlpha(1);
        platform.settle();
        ends.clear();
        UIView::animate(
            1, [&] { view->setAlpha(0.25); }, [&](bool finished) { ends.push_back(finished); });
        EXPECT_TRUE(ends.empty()) << what << ": not before the caller goes on";
        platform.settle();
        EXPECT_EQ(ends, (std::vector{true})) << what;
        EXPECT_FALSE(platform.backend().framesWanted()) << what;
    };
    UIView::setReduceMotionEnabled(true);
    expectAtOnce("reduced motion");
    EXPECT_EQ(shown().alpha, 0.25);
    UIView::setReduceMotionEnabled(false);
    view->removeFromSuperview();
    expectAtOnce("in no window");
    UIView::animate(1, nullptr, [&](bool) { ends.push_back(true); });
    platform.settle();
    EXPECT_EQ(ends.size(), 2u) << "nothing changed";
}

TEST_F(AnimationTest, NestedAnimationsKeepTheirOwnTime) {
    const auto other = make<UIView>();
    platform.window().addSubview(other);
    platform.settle();
    UIView::animate(
        1,
        [&] {
            view->setAlpha(0);
            UIView::animate(
                0.2, [&] { other->setAlpha(0); }, [&](bool) { others.push_back(true); });
        },
        [&](bool) { ends.push_back(true); });
    platform.advance(0.5);
    EXPECT_EQ(others.size(), 1u);
    EXPECT_TRUE(ends.empty());
    platform.advance(1);
    EXPECT_EQ(ends.size(), 1u);
}

TEST_F(AnimationTest, AHiddenDisplayEndsAnimationsByTheClock) {
    platform.backend().onFramesWanted = [](bool) {};
    animateAlpha(0, 0.5, ends);
    platform.advance(0.9);
    EXPECT_TRUE(ends.empty());
    platform.advance(0.2);
    EXPECT_EQ(ends, (std::vector{true}));
    EXPECT_EQ(shown().alpha, 0);
}

TEST_F(AnimationTest, FrameCallbacksRunUntilTheyReturnFalse) {
    int calls = 0, cancelled = 0;
    std::uint64_t id = 0;
    id = platform.window().requestFrames([&](double) {
        ++cancelled;
        platform.window().cancelFrames(id);
        return true;
    });
    platform.window().requestFrames([&](double) { return ++calls < 3; });
    platform.advance(1);
    EXPECT_EQ(calls, 3);
    EXPECT_EQ(cancelled, 1);
    EXPECT_FALSE(platform.backend().framesWanted());
}

TEST_F(AnimationTest, KeyFramesTurnTheView) {
    const std::string key = "transform.rotation";
    const auto forwards = CAMediaTimingFillMode::forwards;
    const CAKeyframeAnimation shake{key, {-0.03, 0.03, -0.03}, 0.2, CAKeyframeAnimation::withoutEnd, false, forwards};
    const std::tuple<const char*, CAKeyframeAnimation, std::vector<std::pair<double, double>>, bool, bool> cases[] = {
        {"without end", shake, {{0, -0.03}, {0.05, 0}, {0.1, 0.03}, {0.2, -0.03}, {100.1, 0.03}}, true, true},
        {"once, then gone", {key, {0, 1}, 0.4, 1}, {{0.1, 0.25}, {0.5, 0}}, false, false},
        {"stays at its end", {key, {0, 1}, 0.4, 1, false, forwards}, {{0.3, 0.75}, {9, 1}}, false, true},
        {"half a run", {key, {0, 1}, 0.4, 0.5, false, forwards}, {{9, 0.5}}, false, true},
        {"no time", {key, {0.5, 1}, 0, 1, false}, {{0, 0.5}, {9, 0.5}}, false, true}};
    for (const auto& [what, animation, angles, isMoving, staysOnView] : cases) {
        SCOPED_TRACE(what);
        view->removeAllAnimations();
        view->addAnimationForKey(animation, "shake");
        platform.settle();
        const auto rotation = shown().rotation;
        ASSERT_TRUE(rotation);
        for (const auto& [seconds, angle] : angles)
            EXPECT_NEAR(rotation->angleAt(rotation->begin + seconds), angle, 1e-6) << seconds;
        EXPECT_EQ(rotation->isMoving(rotation->begin + 1), isMoving);
        EXPECT_FALSE(platform.backend().framesWanted()) << "the display moves it, not the main loop";
        platform.advance(1);
        EXPECT_EQ(view->animationForKey("shake") != nullptr, staysOnView);
        EXPECT_EQ(shown().rotation != nullptr, staysOnView);
    }
    view->addAnimationForKey({"position.x", {1, 2}, 1}, "shake");
    EXPECT_FALSE(view->animationForKey("shake")) << "not known; the one before has gone";
    UIView::setReduceMotionEnabled(true);
    view->addAnimationForKey(shake, "shake");
    platform.settle();
    EXPECT_EQ(shown().rotation->angleAt(platform.time().clock().monotonicSeconds() + 0.1), -0.03);
    EXPECT_FALSE(shown().rotation->isMoving(0));
    UIView::setReduceMotionEnabled(false);
}

}  // namespace

}  // namespace ostrel
