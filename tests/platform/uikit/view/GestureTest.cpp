#include "backends/headless/HeadlessPlatform.h"
#include "platform/uikit/controls/UIButton.h"
#include "platform/uikit/view/UIGestureRecognizer.h"

#include <gtest/gtest.h>

namespace ostrel {

namespace {

using Log = std::vector<std::string>;

class TouchedView final : public UIView {
public:
    TouchedView(CGRect frame, std::string name, Log& log) : UIView(frame), name_(std::move(name)), log_(log) {}
    void touchesBegan(const UITouch&) override { log_.push_back(name_ + " began"); }
    void touchesMoved(const UITouch&) override { log_.push_back(name_ + " moved"); }
    void touchesEnded(const UITouch&) override { log_.push_back(name_ + " ended"); }
    void touchesCancelled(const UITouch&) override { log_.push_back(name_ + " cancelled"); }
    bool scrollBy(const UIScrollEvent&) override {
        log_.push_back(name_ + " scrolled");
        return scrolls;
    }
    void hoverDidChange(bool inside) override { log_.push_back(name_ + (inside ? " entered" : " left")); }
    bool scrolls = false;

private:
    std::string name_;
    Log& log_;
};

const char* nameOf(UIGestureRecognizerState state) {
    constexpr const char* names[] = {"possible", "began", "changed", "ended", "cancelled", "failed"};
    return names[static_cast<int>(state)];
}

/// An outer view that contains an inner one at (50, 50).
class GestureTest : public ::testing::Test {
protected:
    using enum UITouchPhase;
    void SetUp() override {
        platform.window().addSubview(outer);
        outer->addSubview(inner);
    }
    template <class Recognizer>
    std::shared_ptr<Recognizer> watch(UIView& view, const std::string& name) {
        auto recognizer = make<Recognizer>([this, name](UIGestureRecognizer& r) {
            if (r.state() != UIGestureRecognizerState::changed) log.push_back(name + " " + nameOf(r.state()));
        });
        view.addGestureRecognizer(recognizer);
        return recognizer;
    }
    Log taken() { return std::exchange(log, {}); }
    Log tapAt(CGPoint point) {
        platform.tap(point);
        return taken();
    }
    void touches(std::initializer_list<std::pair<UITouchPhase, CGPoint>> steps) {
        for (const auto& [phase, point] : steps) platform.touch(phase, point);
    }

    Log log;  // declared first: the window still reports in its destructor
    HeadlessPlatform platform;
    std::shared_ptr<TouchedView> outer = make<TouchedView>(CGRect{0, 0, 300, 300}, "outer", log);
    std::shared_ptr<TouchedView> inner = make<TouchedView>(CGRect{50, 50, 100, 100}, "inner", log);
};

TEST_F(GestureTest, TheDeepestTapWinsAndTheViewIsToldOnce) {
    watch<UITapGestureRecognizer>(*outer, "outer tap");
    EXPECT_EQ(tapAt({60, 60}), (Log{"inner began", "inner cancelled", "outer tap ended"}));
    watch<UITapGestureRecognizer>(*inner, "inner tap");
    EXPECT_EQ(tapAt({60, 60}), (Log{"inner began", "inner cancelled", "inner tap ended"}));
    EXPECT_EQ(tapAt({10, 10}), (Log{"outer began", "outer cancelled", "outer tap ended"}));
}

TEST_F(GestureTest, APanTakesTheTouchFromViewTapAndPress) {
    watch<UITapGestureRecognizer>(*inner, "tap");
    watch<UILongPressGestureRecognizer>(*inner, "press");
    const auto pan = watch<UIPanGestureRecognizer>(*outer, "pan");
    platform.drag({60, 60}, {60, 100}, 2);
    const Log events = taken();
    EXPECT_EQ(std::count(events.begin(), events.end(), "inner cancelled"), 1);
    EXPECT_EQ(std::count(events.begin(), events.end(), "inner ended"), 0);
    EXPECT_EQ((Log{events.end() - 2, events.end()}), (Log{"pan began", "pan ended"}));
    EXPECT_EQ(pan->state(), UIGestureRecognizerState::possible) << "ready for the next touch";
}

TEST_F(GestureTest, PansBeginOnTheirAxisOnly) {
    using Axis = UIPanGestureRecognizer::Axis;
    const auto pan = watch<UIPanGestureRecognizer>(*inner, "pan");
    const std::tuple<UIPanGestureRecognizer::Axis, CGPoint, bool> cases[] = {
        {Axis::any, {60, 66}, false},       {Axis::any, {66, 67}, true},        {Axis::vertical, {60, 80}, true},
        {Axis::vertical, {80, 62}, false},  {Axis::horizontal, {80, 62}, true}, {Axis::horizontal, {62, 80}, false},
        {Axis::horizontal, {40, 60}, true}, {Axis::vertical, {60, 40}, true}};
    for (const auto& [axis, to, begins] : cases) {
        pan->axis = axis;
        platform.drag({60, 60}, to);
        const Log events = taken();
        EXPECT_EQ(std::count(events.begin(), events.end(), "pan began"), begins) << to.x << ", " << to.y;
    }
}

TEST_F(GestureTest, APanMeasuresFromWhereItBegan) {
    CGPoint last, velocity;
    const auto pan = make<UIPanGestureRecognizer>([&](UIGestureRecognizer& r) {
        last = static_cast<UIPanGestureRecognizer&>(r).translation();
        velocity = static_cast<UIPanGestureRecognizer&>(r).velocity();
    });
    pan->axis = UIPanGestureRecognizer::Axis::vertical;
    inner->addGestureRecognizer(pan);
    platform.drag({60, 60}, {60, 180}, 0.2);
    EXPECT_NEAR(last.y, 120 - pan->threshold, 1e-6);
    EXPECT_NEAR(velocity.y, 600, 30);
    platform.drag({60, 60}, {60, 180}, 0.2, true);
    EXPECT_EQ(velocity.y, 0) << "a finger that rested flings nothing";
}

TEST_F(GestureTest, EdgeButtonAndPointerDecideWhetherAPanCounts) {
    const auto pan = watch<UIPanGestureRecognizer>(*outer, "pan");
    const auto begins = [&](CGPoint from) {
        log.clear();
        platform.drag(from, {from.x + 60, from.y});
        return std::count(log.begin(), log.end(), "pan began") == 1;
    };
    pan->edgeWidth = 20;
    EXPECT_TRUE(begins({10, 10}));
    EXPECT_FALSE(begins({30, 10}));
    pan->edgeWidth = 0;
    pan->allowsPointer = false;
    EXPECT_TRUE(begins({30, 10}));
    platform.touchType = UITouchType::pointer;
    EXPECT_FALSE(begins({30, 10}));
    pan->allowsPointer = true;
    EXPECT_TRUE(begins({30, 10}));
    platform.touchButton = UIButtonMask::secondary;
    EXPECT_FALSE(begins({30, 10}));
}

TEST_F(GestureTest, ALongPressBeginsByTimeAndFailsByMoving) {
    watch<UILongPressGestureRecognizer>(*inner, "press");
    platform.press({60, 60}, 0.49);
    EXPECT_EQ(taken(), (Log{"inner began", "inner ended"}));
    platform.press({60, 60}, 0.51);
    EXPECT_EQ(taken(), (Log{"inner began", "inner cancelled", "press began", "press ended"}));
    touches({{began, {60, 60}}, {moved, {60, 75}}});
    platform.advance(1);
    platform.touch(UITouchPhase::ended, {60, 75});
    EXPECT_EQ(taken(), (Log{"inner began", "inner moved", "inner ended"}));
    for (const auto type : {UITouchType::direct, UITouchType::pointer}) {
        platform.touchType = type;
        touches({{began, {60, 60}}, {moved, {66, 68}}});
        platform.advance(0.51);
        touches({{moved, {90, 90}}, {cancelled, {90, 90}}});
        EXPECT_EQ(taken(), (Log{"inner began", "inner moved", "inner cancelled", "press began", "press cancelled"}))
            << "10 points count as still; once begun it may go anywhere";
    }
}

TEST_F(GestureTest, ARecogniserThatMayNotBeginLeavesTheTouchToTheOthers) {
    const auto tap = watch<UITapGestureRecognizer>(*inner, "inner tap");
    watch<UITapGestureRecognizer>(*outer, "outer tap");
    tap->shouldBegin = [](UIGestureRecognizer&) { return false; };
    EXPECT_EQ(tapAt({60, 60}).back(), "outer tap ended");
    tap->shouldBegin = nullptr;
    tap->setEnabled(false);
    EXPECT_EQ(tapAt({60, 60}).back(), "outer tap ended");
    tap->setEnabled(true);
    EXPECT_EQ(tapAt({60, 60}).back(), "inner tap ended");
    inner->removeGestureRecognizer(tap);
    EXPECT_EQ(tapAt({60, 60}).back(), "outer tap ended");
    inner->addGestureRecognizer(tap);
    EXPECT_EQ(tapAt({60, 60}).back(), "inner tap ended");
}

TEST_F(GestureTest, ATapOnAControlIsTheControls) {
    watch<UITapGestureRecognizer>(*outer, "outer tap");
    const auto button = make<UIButton>(UIButton::Type::custom, CGRect{200, 200, 50, 50});
    button->addTarget([this] { log.push_back("pressed"); }, UIControlEvent::touchUpInside);
    outer->addSubview(button);
    EXPECT_EQ(tapAt({210, 210}), (Log{"pressed"}));
    button->setEnabled(false);
    EXPECT_EQ(tapAt({210, 210}), (Log{"outer tap ended"}));
}

TEST_F(GestureTest, AViewThatLeavesUnderTheFingerIsToldAndForgotten) {
    watch<UIPanGestureRecognizer>(*inner, "pan");
    touches({{began, {60, 60}}, {moved, {60, 80}}});
    inner->removeFromSuperview();
    inner.reset();
    touches({{moved, {60, 90}}, {ended, {60, 90}}});
    EXPECT_EQ(taken(), (Log{"inner began", "inner cancelled", "pan began", "pan cancelled"}));

    platform.touch(UITouchPhase::began, {10, 10});
    outer->removeFromSuperview();
    platform.touch(UITouchPhase::ended, {10, 10});
    EXPECT_EQ(taken(), (Log{"outer began", "outer cancelled"}));
}

TEST_F(GestureTest, ActionsMayEndTheirOwnView) {
    const auto tap = make<UITapGestureRecognizer>([this](UIGestureRecognizer&) {
        outer->removeFromSuperview();
        inner.reset();
        outer.reset();
    });
    inner->addGestureRecognizer(tap);
    platform.tap({60, 60});
    EXPECT_FALSE(outer);
    EXPECT_EQ(tap->view(), nullptr);
}

TEST_F(GestureTest, FingersAreIndependentAndACancelledTouchIsNoTap) {
    watch<UITapGestureRecognizer>(*outer, "tap");
    platform.touch(UITouchPhase::began, {10, 10}, 1);
    platform.touch(UITouchPhase::began, {60, 60}, 2);
    platform.touch(UITouchPhase::ended, {60, 60}, 2);
    EXPECT_EQ(taken(), (Log{"outer began", "inner began", "inner ended"})) << "the recogniser watches the first finger";
    platform.touch(UITouchPhase::cancelled, {10, 10}, 1);
    EXPECT_EQ(taken(), (Log{"outer cancelled"}));
    platform.touch(UITouchPhase::began, {10, 10}, 1);
    platform.window().setActive(false);
    EXPECT_EQ(taken(), (Log{"outer began", "outer cancelled"}));
    platform.touch(UITouchPhase::ended, {10, 10}, 1);
    EXPECT_EQ(taken(), Log{});
}

TEST_F(GestureTest, ScrollingGoesUpUntilAViewScrolls) {
    platform.scroll({60, 60}, -10);
    EXPECT_EQ(taken(), (Log{"inner scrolled", "outer scrolled"}));
    inner->scrolls = true;
    platform.scroll({60, 60}, -10);
    EXPECT_EQ(taken(), (Log{"inner scrolled"}));
}

TEST_F(GestureTest, HoverTellsEachViewOnceOnItsWayInAndOut) {
    platform.hover({10, 10});
    platform.hover({60, 60});
    platform.hover({61, 61});
    EXPECT_EQ(taken(), (Log{"outer entered", "inner entered"}));
    platform.window().sendHover({}, false);
    EXPECT_EQ(taken(), (Log{"inner left", "outer left"}));
}

}  // namespace

}  // namespace ostrel
