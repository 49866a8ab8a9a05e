#include "backends/qt/window/InputTranslation.h"
#include "tests/backends/qt/QtTestWindow.h"

#include <gtest/gtest.h>
#include <QKeyEvent>
#include <QPointingDevice>
#include <QTest>
#include <QWheelEvent>

namespace ostrel::test {

namespace {

/// Records the touches and presses that reach the view.
class RecordingView final : public UIView {
public:
    using UIView::UIView;
    std::vector<UITouch> touches;
    std::vector<UIPress> presses;
    bool usesKeys = true;

    void touchesBegan(const UITouch& touch) override { touches.push_back(touch); }
    void touchesMoved(const UITouch& touch) override { touches.push_back(touch); }
    void touchesEnded(const UITouch& touch) override { touches.push_back(touch); }
    void touchesCancelled(const UITouch& touch) override { touches.push_back(touch); }
    bool pressesBegan(const UIPress& press) override {
        presses.push_back(press);
        return usesKeys;
    }
    bool canBecomeFirstResponder() const override { return true; }
};

struct Fixture {
    std::shared_ptr<UIWindow> uiWindow = make<UIWindow>(CGSize{200, 200});
    std::shared_ptr<RecordingView> view = make<RecordingView>(CGRect(0, 0, 200, 200));
    std::unique_ptr<QtTestWindow> window;
    Fixture() {
        uiWindow->addSubview(view);
        window = std::make_unique<QtTestWindow>(uiWindow);
        uiWindow->makeFirstResponder(view.get());
        window->grab();
    }
    ~Fixture() { window.reset(); }
};

TEST(Input, PointerBecomesTouches) {
    Fixture f;
    QQuickWindow& window = f.window->window();
    QTest::mousePress(&window, Qt::LeftButton, {}, {30, 40});
    QTest::mouseMove(&window, {50, 60});
    QTest::mouseRelease(&window, Qt::LeftButton, {}, {50, 60});
    ASSERT_EQ(f.view->touches.size(), 3u);
    const UITouchPhase phases[] = {UITouchPhase::began, UITouchPhase::moved, UITouchPhase::ended};
    for (std::size_t i = 0; i < 3; ++i) {
        const UITouch& touch = f.view->touches[i];
        EXPECT_EQ(touch.phase, phases[i]) << i;
        EXPECT_EQ(touch.type, UITouchType::pointer);
        EXPECT_EQ(touch.button, UIButtonMask::primary);
        EXPECT_EQ(touch.startLocation, (CGPoint{30, 40}));
        EXPECT_EQ(touch.location, i == 0 ? (CGPoint{30, 40}) : (CGPoint{50, 60}));
    }
    f.view->touches.clear();
    QTest::mouseClick(&window, Qt::RightButton, {}, {10, 10});
    ASSERT_EQ(f.view->touches.size(), 2u);
    EXPECT_EQ(f.view->touches[0].button, UIButtonMask::secondary);
}

TEST(Input, PressesInOnePlaceAreCounted) {
    Fixture f;
    QQuickWindow& window = f.window->window();
    const std::pair<QPoint, int> clicks[] = {{{100, 100}, 1}, {{101, 100}, 2}, {{150, 100}, 1}};
    for (const auto& [point, count] : clicks) {
        f.view->touches.clear();
        QTest::mouseClick(&window, Qt::LeftButton, {}, point);
        ASSERT_EQ(f.view->touches.size(), 2u);
        EXPECT_EQ(f.view->touches[0].tapCount, count);
    }
}

TEST(Input, FingersAreDirectTouchesAndNoPointerFollows) {
    Fixture f;
    static QPointingDevice* const screen = QTest::createTouchDevice();
    QQuickWindow& window = f.window->window();
    QTest::touchEvent(&window, screen).press(3, QPoint(20, 20), &window);
    QTest::touchEvent(&window, screen).move(3, QPoint(20, 50), &window);
    QTest::touchEvent(&window, screen).release(3, QPoint(20, 50), &window);
    ASSERT_EQ(f.view->touches.size(), 3u);
    for (const UITouch& touch : f.view->touches) {
        EXPECT_EQ(touch.type, UITouchType::direct);
        EXPECT_EQ(touch.identifier, f.view->touches[0].identifier);
        EXPECT_NE(touch.identifier, 0) << "the pointer's identifier";
    }
    EXPECT_EQ(f.view->touches[2].phase, UITouchPhase::ended);
    EXPECT_EQ(f.view->touches[2].location, (CGPoint{20, 50}));
}

TEST(Input, KeysReachTheFirstResponder) {
    Fixture f;
    QTest::keyClick(&f.window->window(), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(&f.window->window(), Qt::Key_Tab, Qt::ShiftModifier);
    ASSERT_EQ(f.view->presses.size(), 2u);
    EXPECT_EQ(f.view->presses[0].key.code, UIKeyCode::other);
    EXPECT_EQ(f.view->presses[0].key.modifiers, unsigned(modifierControl));
    EXPECT_EQ(f.view->presses[1].key.code, UIKeyCode::tab);
    EXPECT_EQ(f.view->presses[1].key.modifiers, unsigned(modifierShift));
}

TEST(Input, KeysMeanWhatTheyMeanInQt) {
    using enum UIKeyCode;
    using namespace Qt;
    const std::pair<Key, UIKeyCode> keys[] = {{Key_Backtab, tab},
                                              {Key_Return, enter},
                                              {Key_Enter, enter},
                                              {Key_Escape, escape},
                                              {Key_Space, space},
                                              {Key_Left, left},
                                              {Key_Right, right},
                                              {Key_Up, up},
                                              {Key_Down, down},
                                              {Key_PageUp, pageUp},
                                              {Key_PageDown, pageDown},
                                              {Key_Home, home},
                                              {Key_End, end},
                                              {Key_Backspace, deleteBackward},
                                              {Key_Delete, deleteForward},
                                              {Key_Back, back},
                                              {Key_Menu, menu},
                                              {Key_F5, f5},
                                              {Key_Q, other}};
    for (const auto& [key, code] : keys) {
        const QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, QStringLiteral("\u6587"), true);
        const UIPress press = toPress(event);
        EXPECT_EQ(press.key.code, code) << key;
        EXPECT_EQ(press.key.characters, "\u6587");
        EXPECT_TRUE(press.isRepeat);
    }
}

TEST(Input, WheelsScrollByNotchesAndTrackpadsByPixels) {
    struct Case {
        QPoint pixels, angle;
        double dx, dy;
        bool precise;
    };
    const Case cases[] = {
        {{}, {0, 120}, 0, 60, false}, {{}, {0, -240}, 0, -120, false},   {{}, {120, 0}, 60, 0, false},
        {{}, {0, 30}, 0, 15, true},   {{3, -7}, {24, -56}, 3, -7, true},
    };
    for (const Case& c : cases) {
        const QWheelEvent event({10, 20}, {10, 20}, c.pixels, c.angle, Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase,
                                false);
        const UIScrollEvent scroll = toScrollEvent(event);
        EXPECT_EQ(scroll.location, (CGPoint{10, 20}));
        EXPECT_DOUBLE_EQ(scroll.dx, c.dx);
        EXPECT_DOUBLE_EQ(scroll.dy, c.dy);
        EXPECT_EQ(scroll.precise, c.precise) << c.angle.y();
    }
}

}  // namespace

}  // namespace ostrel::test
