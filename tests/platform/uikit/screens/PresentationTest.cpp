#include "tests/platform/uikit/screens/ControllerTestSupport.h"

#include "platform/uikit/controls/UIButton.h"
#include "tests/support/LogCapture.h"

namespace ostrel {
namespace {

class PresentationTest : public ControllerTest {
protected:
    std::shared_ptr<RecordedScreen> styled(const std::string& name, UIModalPresentationStyle style) {
        auto made = screen(name);
        made->modalPresentationStyle = style;
        return made;
    }
    std::function<void()> noting(const std::string& text) {
        return [this, text] { log.push_back(text); };
    }
};

using Style = UIModalPresentationStyle;

TEST_F(PresentationTest, OnlyFullScreenMakesThePresenterDisappear) {
    for (const auto idiom : {UIUserInterfaceIdiom::phone, UIUserInterfaceIdiom::pad, UIUserInterfaceIdiom::mac}) {
        for (const auto style : {Style::fullScreen, Style::overFullScreen, Style::formSheet, Style::popover}) {
            for (const bool animated : {false, true}) {
                use(idiom);
                const auto root = stackOf({"A"});
                show(root);
                const auto shown = styled("B", style);
                root->topViewController()->presentViewController(shown, animated, noting("presented"));
                if (animated) {
                    EXPECT_FALSE(shown->isAppeared());
                }
                settle();
                const bool covers = style == Style::fullScreen;
                EXPECT_EQ(log, covers ? CallLog({"B load", "A will-", "B will+", "A did-", "B did+", "presented"})
                                      : CallLog({"B load", "B will+", "B did+", "presented"}));
                EXPECT_EQ(root->view()->isHidden(), covers);
                EXPECT_EQ(shown->presentingViewController(), root->topViewController().get());
                log.clear();
                shown->dismissViewControllerAnimated(animated, noting("dismissed"));
                settle();
                EXPECT_EQ(log, covers ? CallLog({"B will-", "A will+", "B did-", "A did+", "dismissed"})
                                      : CallLog({"B will-", "B did-", "dismissed"}));
                EXPECT_FALSE(root->view()->isHidden());
                EXPECT_EQ(window().subviews().size(), 1u);
                EXPECT_EQ(shown->presentingViewController(), nullptr);
            }
        }
    }
}

TEST_F(PresentationTest, WhatCannotBePresentedIsRefusedWithALine) {
    const auto root = screen("A"), loose = screen("L"), shown = screen("B"), other = screen("C");
    show(root);
    const LogCapture capture;
    loose->presentViewController(screen("D"), false);
    root->presentViewController(shown, false);
    root->presentViewController(other, false);
    shown->presentViewController(shown, false);
    shown->presentViewController(root, false);
    EXPECT_EQ(capture.lines().size(), 4u);
    EXPECT_EQ(root->presentedViewController(), shown);
    EXPECT_EQ(shown->presentedViewController(), nullptr);
    EXPECT_FALSE(other->isAppeared());
}

TEST_F(PresentationTest, DismissingThePresenterClosesAllThatLiesAbove) {
    const auto root = screen("A"), first = styled("B", Style::overFullScreen), second = styled("C", Style::fullScreen),
               third = styled("D", Style::overFullScreen);
    show(root);
    root->presentViewController(first, false);
    present(*first, second);
    present(*second, third);
    log.clear();
    dismiss(*root, noting("dismissed"));
    // B was hidden behind C already.
    EXPECT_EQ(log, CallLog({"D will-", "C will-", "D did-", "C did-", "dismissed"}));
    EXPECT_EQ(window().subviews().size(), 1u);
    // And it can be shown again.
    present(*root, first);
    EXPECT_TRUE(first->isAppeared());
    EXPECT_FALSE(first->view()->isHidden());
}

TEST_F(PresentationTest, AScreenInAPresentedStackDismissesTheStack) {
    const auto root = stackOf({"A"});
    show(root);
    const auto login = stackOf({"B", "C"});
    login->modalPresentationStyle = Style::overFullScreen;
    present(*root, login);
    log.clear();
    login->topViewController()->dismissViewControllerAnimated(true, noting("dismissed"));
    // A second call waits for the same end.
    dismiss(*login->topViewController(), noting("dismissed too"));
    EXPECT_EQ(log, CallLog({"C will-", "C did-", "dismissed", "dismissed too"}));
    EXPECT_EQ(root->presentedViewController(), nullptr);
    log.clear();
    dismiss(*login, noting("nothing left"));
    EXPECT_EQ(log, CallLog({"nothing left"}));
}

TEST_F(PresentationTest, CallsDuringAMovementCompleteItFirst) {
    const auto root = screen("A"), first = styled("B", Style::formSheet), second = styled("C", Style::popover);
    show(root);
    root->presentViewController(first, true, noting("presented B"));
    advance(0.1);
    root->dismissViewControllerAnimated(true, noting("dismissed B"));
    advance(0.1);
    present(*root, second, noting("presented C"));
    EXPECT_EQ(log, CallLog({"B load", "B will+", "B did+", "presented B", "B will-", "B did-", "dismissed B", "C load",
                            "C will+", "C did+", "presented C"}));
}

TEST_F(PresentationTest, AScreenMayDismissItselfWhileItAppears) {
    for (const std::string when : {"will+", "did+"}) {
        for (const bool animated : {false, true}) {
            const auto root = screen("A"), hasty = styled("B", Style::fullScreen);
            show(root);
            hasty->onCall = [&](const std::string& call) {
                if (call == when) hasty->dismissViewControllerAnimated(animated, noting("dismissed"));
            };
            present(*root, hasty, noting("presented"));
            EXPECT_EQ(std::ranges::count(log, "presented"), 1);
            EXPECT_EQ(std::ranges::count(log, "dismissed"), 1);
            EXPECT_TRUE(root->isAppeared());
            EXPECT_FALSE(root->view()->isHidden());
            EXPECT_EQ(hasty->lastCall(), "did-");
            hasty->onCall = nullptr;
        }
    }
}

TEST_F(PresentationTest, TouchesKeysAndTabStayInTheTopmostPresentation) {
    const auto root = stackOf({"A", "B"});
    const auto below = make<UIButton>(UIButton::Type::system, CGRect{0, 0, 375, 600});
    int presses = 0;
    below->addTarget([&] { ++presses; }, UIControlEvent::touchUpInside);
    show(root);
    root->topViewController()->view()->addSubview(below);
    window().setFocusedView(below.get(), true);
    const auto sheet = styled("S", Style::formSheet);
    sheet->preferredContentSize = {0, 300};
    const auto inside = make<UIButton>(UIButton::Type::system, CGRect{10, 10, 100, 44});
    sheet->view()->addSubview(inside);
    present(*root, sheet);
    tap({100, 200});
    for (const auto code : {UIKeyCode::enter, UIKeyCode::escape, UIKeyCode::back}) key(code);
    key(UIKeyCode::left, modifierAlternate);
    settle();
    EXPECT_EQ(presses, 0);
    EXPECT_EQ(root->viewControllers().size(), 2u);
    EXPECT_EQ(root->presentedViewController(), sheet) << "a form sheet does not close by a tap or a key";
    for (int i = 0; i < 3; ++i) {
        key(UIKeyCode::tab);
        EXPECT_EQ(window().focusedView(), inside.get());
    }
    dismiss(*sheet);
    EXPECT_EQ(window().focusedView(), below.get());
}

TEST_F(PresentationTest, APopoverClosesByEscapeOrATapBesideUnlessForbidden) {
    class Stubborn final : public UIViewController {
        bool isDismissableByUser() const override { return false; }
    };
    for (const auto idiom : {UIUserInterfaceIdiom::phone, UIUserInterfaceIdiom::pad}) {
        for (const bool byKey : {true, false}) {
            for (const bool allowed : {true, false}) {
                use(idiom);
                const auto root = screen("A");
                show(root, {834, 1112});
                const std::shared_ptr<UIViewController> shown =
                    allowed ? std::shared_ptr<UIViewController>(screen("B")) : make<Stubborn>();
                shown->modalPresentationStyle = Style::popover;
                shown->preferredContentSize = {300, 200};
                present(*root, shown);
                platform_.tap(*shown->view());
                settle();
                ASSERT_EQ(root->presentedViewController(), shown);
                if (byKey) key(UIKeyCode::escape);
                if (!byKey) tap({5, 5});
                settle();
                EXPECT_EQ(root->presentedViewController() == nullptr, allowed);
            }
        }
    }
}

TEST_F(PresentationTest, APopoverStandsByItsAnchorAndFollowsTheWindow) {
    use(UIUserInterfaceIdiom::pad);
    const auto root = stackOf({"A"});
    const auto item = std::make_shared<UIBarButtonItem>(UIBarButtonItem::SystemItem::action, nullptr);
    root->topViewController()->navigationItem().setRightBarButtonItem(item);
    show(root, {834, 1112});
    const auto shown = styled("B", Style::popover);
    shown->preferredContentSize = {300, 200};
    shown->popoverPresentationController.barButtonItem = item;
    present(*root, shown);
    EXPECT_EQ(frameOf(*shown), (CGRect{834 - 8 - 300, 44 + 6, 300, 200}));
    resize({600, 400});
    EXPECT_EQ(frameOf(*shown), (CGRect{292, 50, 300, 200}));
    use(UIUserInterfaceIdiom::phone);
    shown->dismissViewControllerAnimated(false);
    root->presentViewController(shown, false);
    resize({375, 667});
    EXPECT_EQ(frameOf(*shown), (CGRect{0, 467, 375, 200}));
}

TEST_F(PresentationTest, AScreenThatGoesTakesWhatItPresentsWithIt) {
    std::weak_ptr<UIViewController> abandoned;
    const auto root = stackOf({"A"});
    show(root);
    {
        const auto pushed = screen("D"), shown = styled("E", Style::fullScreen);
        abandoned = shown;
        root->pushViewController(pushed, false);
        pushed->presentViewController(shown, true, noting("presented"));
        root->popViewControllerAnimated(false);
    }
    settle();
    EXPECT_TRUE(abandoned.expired());
    EXPECT_EQ(std::ranges::count(log, "presented"), 1);
    EXPECT_TRUE(root->isAppeared());
    EXPECT_TRUE(root->topViewController()->isAppeared());
    EXPECT_FALSE(root->view()->isHidden());
    EXPECT_EQ(window().subviews().size(), 1u);
}

}  // namespace
}  // namespace ostrel
