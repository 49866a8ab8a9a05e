#include "tests/platform/uikit/screens/ControllerTestSupport.h"

#include <random>

namespace ostrel {
namespace {

/// Any order of changes, at any moment of a movement, leaves the calls balanced (each screen checks its own), runs
/// every completion once, and ends with exactly the screens on show that the model says.
TEST_F(ControllerTest, RandomChangesKeepTheCallsBalancedAndKeepNoScreen) {
    using Style = UIModalPresentationStyle;
    constexpr Style styles[] = {Style::fullScreen, Style::overFullScreen, Style::formSheet, Style::popover};
    for (unsigned seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        const auto pick = [&](unsigned below) { return random() % below; };
        use(pick(2) ? UIUserInterfaceIdiom::phone : UIUserInterfaceIdiom::mac);
        int wanted = 0, completed = 0, names = 0;
        auto root = stackOf({"root"});
        show(root);
        std::vector<std::weak_ptr<RecordedScreen>> all;
        const auto topStack = [&] {
            UIViewController* top = root.get();
            for (;;) {
                auto* stack = dynamic_cast<UINavigationController*>(top);
                UIViewController* next = top->presentedViewController().get();
                if (!next && stack) next = stack->topViewController()->presentedViewController().get();
                if (!next) return static_cast<UINavigationController*>(top);
                top = next;
            }
        };
        for (int step = 0; step < 60; ++step) {
            UINavigationController* const stack = topStack();
            const bool animated = pick(3) > 0;
            const auto make = [&] {
                auto made = screen("s" + std::to_string(++names));
                made->navigationItem().setRightBarButtonItem(
                    std::make_shared<UIBarButtonItem>(UIBarButtonItem::SystemItem::edit, nullptr));
                all.push_back(made);
                return made;
            };
            switch (pick(7)) {
            case 0: stack->pushViewController(make(), animated); break;
            case 1: stack->popViewControllerAnimated(animated); break;
            case 2: {
                // A screen that a drag only lets peep out is not the one to present from.
                touch(UITouchPhase::cancelled, {});
                const auto shown = ostrel::make<UINavigationController>(make());
                shown->modalPresentationStyle = styles[pick(4)];
                UIViewController* const from = pick(2) ? stack : stack->topViewController().get();
                ++wanted;
                from->presentViewController(shown, animated, [&, shown] { ++completed; });
                if (from->presentedViewController() != shown) --wanted;
                break;
            }
            case 3:
                ++wanted;
                stack->topViewController()->dismissViewControllerAnimated(animated, [&] { ++completed; });
                break;
            case 4:
                ++wanted;
                root->dismissViewControllerAnimated(animated, [&] { ++completed; });
                break;
            case 5: dragBack({20, 80, 80.0 + pick(280)}, pick(4) > 0); break;
            default: advance(pick(30) / 60.0);
            }
        }
        touch(UITouchPhase::cancelled, {});
        root->dismissViewControllerAnimated(false);
        root->topViewController()->dismissViewControllerAnimated(false);
        settle();
        EXPECT_EQ(completed, wanted);
        EXPECT_EQ(topStack(), root.get());
        EXPECT_EQ(window().subviews().size(), 1u);
        EXPECT_TRUE(root->isAppeared());
        for (const auto& weak : all) {
            const auto each = weak.lock();
            const bool isTop = each && each == root->topViewController();
            if (each) {
                EXPECT_EQ(each->isAppeared(), isTop && root->isAppeared()) << each->title();
                EXPECT_NE(std::ranges::find(root->viewControllers(), std::shared_ptr<UIViewController>(each)),
                          root->viewControllers().end())
                    << each->title() << " is kept";
            }
        }
        window().setRootViewController(nullptr);
        for (const auto& weak : all) {
            const auto each = weak.lock();
            EXPECT_TRUE(!each || each->lastCall().empty() || each->lastCall() == "did-");
        }
        root.reset();
        settle();
        for (const auto& weak : all) EXPECT_TRUE(weak.expired()) << "kept by nobody";
        if (HasFailure()) return;
    }
}

}  // namespace
}  // namespace ostrel
