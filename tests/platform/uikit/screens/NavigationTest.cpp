#include "tests/platform/uikit/screens/ControllerTestSupport.h"

#include "platform/uikit/controls/UIButton.h"

namespace ostrel {
namespace {

class NavigationTest : public ControllerTest {};

const CallLog pushCalls{"A will-", "B load", "B will+", "A did-", "B did+"};
const CallLog popCalls{"B will-", "A load", "A will+", "B did-", "A did+"};

TEST_F(NavigationTest, PushAndPopCallInOrderWithAndWithoutMovement) {
    for (const auto idiom : {UIUserInterfaceIdiom::phone, UIUserInterfaceIdiom::mac}) {
        for (const bool animated : {false, true}) {
            UIDevice::currentDevice().setUserInterfaceIdiom(idiom);
            const auto navigation = stackOf({"A"});
            show(navigation);
            navigation->pushViewController(screen("B"), animated);
            if (animated) {
                EXPECT_EQ(log, CallLog({"A will-", "B load", "B will+"}));
            }
            settle();
            EXPECT_EQ(log, pushCalls);
            log.clear();
            navigation->popViewControllerAnimated(animated);
            settle();
            EXPECT_EQ(log, CallLog({"B will-", "A will+", "B did-", "A did+"}));
            window().setRootViewController(nullptr);
        }
    }
}

TEST_F(NavigationTest, WithReducedMotionAChangeEndsInTheNextTurn) {
    const auto navigation = stackOf({"A"});
    show(navigation);
    UIView::setReduceMotionEnabled(true);
    navigation->pushViewController(screen("B"), true);
    advance(0);
    EXPECT_EQ(log, pushCalls);
    UIView::setReduceMotionEnabled(false);
}

TEST_F(NavigationTest, AScreenPushedWhileTheStackItselfAppearsTakesItsPlace) {
    const auto first = screen("A");
    const auto navigation = make<UINavigationController>(first);
    first->onCall = [&](const std::string& call) {
        if (call == "will+") navigation->pushViewController(screen("B"), true);
    };
    show(screen("root"));
    window().setRootViewController(navigation);
    settle();
    EXPECT_EQ(first->lastCall(), "did-");
    EXPECT_TRUE(navigation->topViewController()->isAppeared());
    EXPECT_EQ(std::ranges::count(log, "B did+"), 1);
    first->onCall = nullptr;
}

TEST_F(NavigationTest, ADragFromTheEdgeGoesBackOrReturnsByWayAndVelocity) {
    struct Case {
        std::vector<CGFloat> xs;
        double rest;  ///< seconds before the finger is lifted
        bool goesBack;
    };
    const Case cases[] = {
        {{20, 100, 200, 300}, 0.3, true},                                                   // far enough
        {{20, 60, 100}, 0.3, false},                                                        // not far enough, at rest
        {{20, 60, 100}, 0, true},                                                           // flung
        {{20, 200, 300, 300, 300, 300, 300, 300, 290, 280, 270, 260, 250, 240}, 0, false},  // flung back
    };
    for (const Case& each : cases) {
        const auto navigation = stackOf({"A", "B"});
        show(navigation);
        dragBack(each.xs, false);
        if (each.rest > 0) {
            advance(each.rest);
            touch(UITouchPhase::moved, {each.xs.back(), 300});
        }
        touch(UITouchPhase::ended, {each.xs.back(), 300});
        settle();
        EXPECT_EQ(log, each.goesBack
                           ? popCalls
                           : CallLog({"B will-", "A load", "A will+", "A will-", "B will+", "A did-", "B did+"}));
        EXPECT_EQ(navigation->viewControllers().size(), each.goesBack ? 1u : 2u);
        const auto& top = navigation->topViewController()->view();
        EXPECT_TRUE(top->transform().isIdentity());
        EXPECT_EQ(top->window(), &window());
        EXPECT_NE(labelled(*navigation->navigationBar(), AccessibilityRole::text, each.goesBack ? "A" : "B"), nullptr);
        window().setRootViewController(nullptr);
    }
}

TEST_F(NavigationTest, ADragElsewhereOrAtTheRootDoesNothing) {
    const auto navigation = stackOf({"A", "B"});
    show(navigation);
    touch(UITouchPhase::began, {60, 300});
    touch(UITouchPhase::moved, {200, 300});
    touch(UITouchPhase::ended, {340, 300});
    settle();
    EXPECT_TRUE(log.empty());
    navigation->popViewControllerAnimated(false);
    log.clear();
    dragBack({40, 200, 350});
    settle();
    EXPECT_TRUE(log.empty());
}

TEST_F(NavigationTest, AChangeDuringAChangeCompletesTheFirst) {
    const auto navigation = stackOf({"A"});
    show(navigation);
    navigation->pushViewController(screen("B"), true);
    advance(0.1);
    navigation->pushViewController(screen("C"), true);
    EXPECT_EQ(log, CallLog({"A will-", "B load", "B will+", "A did-", "B did+", "B will-", "C load", "C will+"}));
    advance(0.1);
    EXPECT_EQ(navigation->popViewControllerAnimated(true)->title(), "C");
    settle();
    EXPECT_EQ(navigation->topViewController()->title(), "B");
    log.clear();
    dragBack({40, 100}, false);
    navigation->pushViewController(screen("D"), false);
    touch(UITouchPhase::moved, {300, 300});
    touch(UITouchPhase::ended, {300, 300});
    settle();
    EXPECT_EQ(navigation->viewControllers().size(), 3u);
    EXPECT_EQ(navigation->topViewController()->title(), "D");
}

TEST_F(NavigationTest, AScreenMayLeaveWhileItComes) {
    const auto navigation = stackOf({"A"});
    show(navigation);
    const auto hasty = screen("B");
    hasty->onCall = [&](const std::string& call) {
        if (call == "will+") navigation->popViewControllerAnimated(false);
    };
    navigation->pushViewController(hasty, true);
    settle();
    EXPECT_EQ(navigation->topViewController()->title(), "A");
    EXPECT_TRUE(navigation->topViewController()->isAppeared());
    EXPECT_EQ(hasty->lastCall(), "did-");
}

TEST_F(NavigationTest, PoppingToTheRootSkipsTheScreensBetween) {
    const auto navigation = stackOf({"A", "B", "C"});
    show(navigation);
    navigation->popToRootViewControllerAnimated(true);
    settle();
    EXPECT_EQ(log, CallLog({"C will-", "A load", "A will+", "C did-", "A did+"}));
    EXPECT_EQ(navigation->popViewControllerAnimated(true), nullptr);
    EXPECT_EQ(navigation->childViewControllers().size(), 1u);
}

TEST_F(NavigationTest, KeysGoBackOneScreen) {
    struct Case {
        UIKeyCode code;
        unsigned modifiers;
        std::string characters;
        bool goesBack;
    };
    const Case cases[] = {
        {UIKeyCode::escape, modifierNone, "", true},    {UIKeyCode::back, modifierNone, "", true},
        {UIKeyCode::left, modifierAlternate, "", true}, {UIKeyCode::other, modifierCommand, "[", true},
        {UIKeyCode::other, modifierNone, "[", false},   {UIKeyCode::left, modifierNone, "", false}};
    for (const Case& each : cases) {
        const auto navigation = stackOf({"A", "B"});
        show(navigation);
        EXPECT_EQ(key(each.code, each.modifiers, each.characters), each.goesBack);
        settle();
        EXPECT_EQ(navigation->viewControllers().size(), each.goesBack ? 1u : 2u);
        if (each.goesBack) {
            EXPECT_FALSE(key(each.code, each.modifiers, each.characters)) << "at the root";
        }
        window().setRootViewController(nullptr);
    }
}

TEST_F(NavigationTest, TheScreenIsAskedBeforeEscapeGoesBack) {
    const auto navigation = stackOf({"A"});
    const auto guarded = screen("B");
    guarded->onCancel = [] { return true; };
    navigation->pushViewController(guarded, false);
    show(navigation);
    EXPECT_TRUE(key(UIKeyCode::escape));
    settle();
    EXPECT_EQ(navigation->topViewController(), guarded);
}

TEST_F(NavigationTest, ScreensLieBelowTheBarAtEverySize) {
    struct Case {
        UIUserInterfaceIdiom idiom;
        CGFloat safeTop, barBottom;
    };
    for (const Case& each : {Case{UIUserInterfaceIdiom::phone, 0, 44}, Case{UIUserInterfaceIdiom::phone, 20, 64},
                             Case{UIUserInterfaceIdiom::mac, 28, 80}}) {
        UIDevice::currentDevice().setUserInterfaceIdiom(each.idiom);
        const auto navigation = stackOf({"A"});
        show(navigation);
        window().setSafeAreaInsets({each.safeTop, 0, 0, 0});
        settle();
        navigation->pushViewController(screen("B"), true);
        advance(0.1);
        window().setSize({667, 375});
        settle();
        const auto& top = *navigation->topViewController()->view();
        EXPECT_EQ(navigation->navigationBar()->frame(), (CGRect{0, 0, 667, each.barBottom}));
        EXPECT_EQ(top.convertRectToView(top.bounds(), nullptr), (CGRect{0, each.barBottom, 667, 375 - each.barBottom}));
        window().setRootViewController(nullptr);
    }
}

TEST_F(NavigationTest, AScreenThatReachesUnderTheBarDoesSoAtEverySize) {
    const auto navigation = stackOf({"A"});
    const auto under = screen("B");
    under->extendsUnderNavigationBar = true;
    show(navigation);
    window().setSafeAreaInsets({20, 0, 0, 0});
    navigation->pushViewController(under, true);
    advance(0.1);
    const auto expectWhole = [&](const char* what) {
        const UIView& view = *under->view();
        EXPECT_EQ(view.convertRectToView(view.bounds(), nullptr).size, window().frame().size) << what;
        EXPECT_EQ(view.frame().origin, (CGPoint{0, -64})) << what;
    };
    expectWhole("on its way");
    settle();
    expectWhole("there");
    EXPECT_EQ(under->view()->hitTest({100, 32}), under->view().get());
    EXPECT_TRUE(window().hitTest({100, 32})->isDescendantOfView(*navigation->navigationBar())) << "the bar is above it";
    window().setSize({667, 375});
    settle();
    expectWhole("after a turn");
    navigation->popViewControllerAnimated(true);
    settle();
    const UIView& below = *navigation->topViewController()->view();
    EXPECT_EQ(below.convertRectToView(below.bounds(), nullptr), CGRect(0, 64, 667, 375 - 64));
}

TEST_F(NavigationTest, ATurnIsToldToEveryScreenOfTheStackAndToWhatIsPresented) {
    struct Sized final : UIViewController {
        void viewWillTransitionToSize(CGSize size) override {
            UIViewController::viewWillTransitionToSize(size);
            told.push_back(size);
        }
        std::vector<CGSize> told;
    };
    const auto bottom = make<Sized>(), top = make<Sized>(), presented = make<Sized>();
    const auto navigation = make<UINavigationController>(bottom);
    show(navigation);
    navigation->pushViewController(top, false);
    settle();
    navigation->presentViewController(presented, false);
    settle();
    presented->told.clear();
    window().setSize({667, 375});
    settle();
    for (const auto& each : {bottom, top, presented}) {
        EXPECT_EQ(each->told, (std::vector<CGSize>{{667, 375}}));
    }
    EXPECT_EQ(presented->view()->frame().size, (CGSize{667, 375}));
    presented->dismissViewControllerAnimated(false);
    settle();
    EXPECT_EQ(top->view()->frame().size, (CGSize{667, 375 - 44}));
}

TEST_F(NavigationTest, TheBarShowsItemsAndFollowsTheirChanges) {
    const auto navigation = stackOf({"First"});
    const auto second = screen("Second");
    int presses = 0;
    const auto add = std::make_shared<UIBarButtonItem>(UIBarButtonItem::SystemItem::add, [&] { ++presses; });
    second->navigationItem().setRightBarButtonItem(add);
    navigation->pushViewController(second, false);
    show(navigation);
    UIView& bar = *navigation->navigationBar();
    UIView* const button = labelled(bar, AccessibilityRole::button, "Add");
    ASSERT_NE(button, nullptr);
    EXPECT_EQ(add->view().lock().get(), button);
    EXPECT_GE(button->frame().width(), 44);
    EXPECT_GE(button->frame().height(), 44);
    press(button);
    EXPECT_EQ(presses, 1);
    add->setEnabled(false);
    press(button);
    EXPECT_EQ(presses, 1);
    second->navigationItem().setRightBarButtonItem(
        std::make_shared<UIBarButtonItem>("POST", UIBarButtonItem::Style::done, [&] { presses += 10; }));
    settle();
    EXPECT_EQ(labelled(bar, AccessibilityRole::button, "Add"), nullptr);
    press(labelled(bar, AccessibilityRole::button, "POST"));
    EXPECT_EQ(presses, 11);
    second->setTitle("Renamed");
    EXPECT_NE(labelled(bar, AccessibilityRole::text, "Renamed"), nullptr);

    press(labelled(bar, AccessibilityRole::button, "Back"));
    settle();
    EXPECT_EQ(navigation->topViewController()->title(), "First");
    EXPECT_EQ(labelled(bar, AccessibilityRole::button, "POST"), nullptr);
    EXPECT_EQ(labelled(bar, AccessibilityRole::button, "Back"), nullptr);
}

TEST_F(NavigationTest, ALongTitleLeavesTheButtonsFree) {
    const auto navigation = stackOf({"A rather long title of the screen below, longer than the bar"});
    const auto second = screen("Another title that is by far too long for a bar of this width");
    second->navigationItem().setRightBarButtonItem(
        std::make_shared<UIBarButtonItem>(UIBarButtonItem::SystemItem::done, nullptr));
    navigation->pushViewController(second, false);
    show(navigation, {320, 480});
    UIView& bar = *navigation->navigationBar();
    const CGRect title = labelled(bar, AccessibilityRole::text, second->title())->frame();
    const CGRect back = labelled(bar, AccessibilityRole::button, "Back")->frame();
    const CGRect done = labelled(bar, AccessibilityRole::button, "Done")->frame();
    EXPECT_LE(back.maxX(), title.minX());
    EXPECT_LE(title.maxX(), done.minX());
    EXPECT_LE(done.maxX(), 320);
    EXPECT_GT(title.width(), 60);
}

TEST_F(NavigationTest, APoppedScreenIsLetGo) {
    auto navigation = stackOf({"A"});
    show(navigation);
    std::weak_ptr<UIViewController> gone;
    {
        auto second = screen("B");
        second->navigationItem().setRightBarButtonItem(
            std::make_shared<UIBarButtonItem>(UIBarButtonItem::SystemItem::edit, nullptr));
        gone = second;
        navigation->pushViewController(second, true);
    }
    settle();
    dragBack({40, 200, 350});
    settle();
    EXPECT_TRUE(gone.expired());
    const std::weak_ptr<UIViewController> root = navigation->topViewController();
    std::weak_ptr<UIViewController> stack = navigation;
    window().setRootViewController(nullptr);
    navigation.reset();
    settle();
    EXPECT_TRUE(stack.expired());
    EXPECT_TRUE(root.expired());
}

}  // namespace
}  // namespace ostrel
