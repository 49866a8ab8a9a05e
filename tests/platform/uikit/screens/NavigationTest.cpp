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
            use(idiom);
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
        }
    }
    // With reduced motion a change ends in the next turn.
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
    // Where the finger is, the seconds before it is lifted, and whether the screen goes back.
    const std::tuple<std::vector<CGFloat>, double, bool> cases[] = {
        {{20, 100, 200, 300}, 0.3, true},                                                   // far enough
        {{20, 60, 100}, 0.3, false},                                                        // not far enough, at rest
        {{20, 60, 100}, 0, true},                                                           // flung
        {{20, 200, 300, 300, 300, 300, 300, 300, 290, 280, 270, 260, 250, 240}, 0, false},  // flung back
    };
    for (const auto& [xs, rest, goesBack] : cases) {
        const auto navigation = stackOf({"A", "B"});
        show(navigation);
        UIView& bar = *navigation->navigationBar();
        const auto former = labelled(bar, AccessibilityRole::text, "B")->shared_from_this();
        dragBack(xs, false);
        if (rest > 0) {
            advance(rest);
            touch(UITouchPhase::moved, {xs.back(), 300});
        }
        touch(UITouchPhase::ended, {xs.back(), 300});
        settle();
        EXPECT_EQ(log, goesBack ? popCalls
                                : CallLog({"B will-", "A load", "A will+", "A will-", "B will+", "A did-", "B did+"}));
        EXPECT_EQ(navigation->viewControllers().size(), goesBack ? 1u : 2u);
        EXPECT_EQ(former->isDescendantOfView(bar), !goesBack) << "a bar that returns keeps its views";
        const auto& top = navigation->topViewController()->view();
        EXPECT_TRUE(top->transform().isIdentity());
        EXPECT_EQ(top->window(), &window());
        for (const std::string title : {"A", "B"}) {
            const bool isShown = title == (goesBack ? "A" : "B");
            EXPECT_EQ(labelled(bar, AccessibilityRole::text, title) != nullptr, isShown) << title;
        }
    }
}

TEST_F(NavigationTest, ADragElsewhereOrAtTheRootDoesNothing) {
    const auto navigation = stackOf({"A", "B"});
    show(navigation);
    platform_.drag({60, 300}, {340, 300});
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
    const std::tuple<UIKeyCode, unsigned, std::string, bool> cases[] = {
        {UIKeyCode::escape, modifierNone, "", true},    {UIKeyCode::back, modifierNone, "", true},
        {UIKeyCode::left, modifierAlternate, "", true}, {UIKeyCode::other, modifierCommand, "[", true},
        {UIKeyCode::other, modifierNone, "[", false},   {UIKeyCode::left, modifierNone, "", false}};
    for (const auto& [code, modifiers, characters, goesBack] : cases) {
        const auto navigation = stackOf({"A", "B"});
        show(navigation);
        EXPECT_EQ(key(code, modifiers, characters), goesBack);
        settle();
        EXPECT_EQ(navigation->viewControllers().size(), goesBack ? 1u : 2u);
        navigation->popToRootViewControllerAnimated(false);
        EXPECT_FALSE(key(code, modifiers, characters)) << "at the root";
        // The screen on top is asked before Escape goes back.
        const auto guarded = screen("C");
        guarded->onCancel = [] { return true; };
        navigation->pushViewController(guarded, false);
        EXPECT_TRUE(key(UIKeyCode::escape));
        settle();
        EXPECT_EQ(navigation->topViewController(), guarded);
    }
}

TEST_F(NavigationTest, ScreensLieBelowTheBarAtEverySize) {
    for (const auto& [idiom, safeTop, barBottom] : {std::tuple{UIUserInterfaceIdiom::phone, 0, 44},
                                                    {UIUserInterfaceIdiom::phone, 20, 64},
                                                    {UIUserInterfaceIdiom::mac, 28, 80}}) {
        use(idiom);
        const auto navigation = stackOf({"A"});
        show(navigation);
        window().setSafeAreaInsets({static_cast<CGFloat>(safeTop), 0, 0, 0});
        settle();
        navigation->pushViewController(screen("B"), true);
        advance(0.1);
        resize({667, 375});
        EXPECT_EQ(navigation->navigationBar()->frame(), CGRect(0, 0, 667, barBottom));
        EXPECT_EQ(frameOf(*navigation->topViewController()), CGRect(0, barBottom, 667, 375 - barBottom));
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
        EXPECT_EQ(frameOf(*under).size, window().frame().size) << what;
        EXPECT_EQ(under->view()->frame().origin, (CGPoint{0, -64})) << what;
    };
    expectWhole("on its way");
    settle();
    expectWhole("there");
    EXPECT_EQ(under->view()->hitTest({100, 32}), under->view().get());
    EXPECT_TRUE(window().hitTest({100, 32})->isDescendantOfView(*navigation->navigationBar())) << "the bar is above it";
    resize({667, 375});
    expectWhole("after a turn");
    navigation->popViewControllerAnimated(true);
    settle();
    EXPECT_EQ(frameOf(*navigation->topViewController()), CGRect(0, 64, 667, 375 - 64));
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
    resize({667, 375});
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

}  // namespace
}  // namespace ostrel
