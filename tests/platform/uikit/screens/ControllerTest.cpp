#include "tests/platform/uikit/screens/ControllerTestSupport.h"

#include "platform/foundation/resources/PlatformText.h"

namespace ostrel {
namespace {

TEST_F(ControllerTest, TheViewIsMadeOnFirstNeedAndLoadedOnce) {
    const auto root = screen("A");
    EXPECT_FALSE(root->isViewLoaded());
    const auto view = root->view();
    EXPECT_EQ(root->view(), view);
    EXPECT_EQ(log, CallLog({"A load"}));
    EXPECT_EQ(view->owner(), root.get());
}

TEST_F(ControllerTest, AppearanceCallsAreBalancedWhateverIsAskedFor) {
    struct Step {
        enum { begin, end } what;
        bool appearing = false;
    };
    const Step appear{Step::begin, true}, disappear{Step::begin, false}, end{Step::end};
    struct Case {
        std::vector<Step> steps;
        CallLog calls;
    };
    const Case cases[] = {
        {{appear, end, disappear, end}, {"A will+", "A did+", "A will-", "A did-"}},
        {{appear, appear, end, end, appear}, {"A will+", "A did+"}},
        {{disappear, end, end}, {}},
        {{appear, disappear, end}, {"A will+", "A will-", "A did-"}},
        {{appear, end, disappear, appear, end}, {"A will+", "A did+", "A will-", "A will+", "A did+"}},
    };
    for (const Case& each : cases) {
        const auto root = screen("A");
        root->view();
        log.clear();
        for (const Step& step : each.steps) {
            if (step.what == Step::begin) {
                root->beginAppearanceTransition(step.appearing, false);
            } else {
                root->endAppearanceTransition();
            }
        }
        EXPECT_EQ(log, each.calls);
    }
}

TEST_F(ControllerTest, ChildrenWithinTheViewGetTheCallsOfTheirParent) {
    const auto parent = screen("A"), inside = screen("B"), outside = screen("C");
    parent->addChildViewController(inside);
    parent->addChildViewController(outside);
    parent->view()->addSubview(inside->view());
    outside->view();
    log.clear();
    parent->beginAppearanceTransition(true, true);
    parent->endAppearanceTransition();
    EXPECT_EQ(log, CallLog({"A will+", "B will+", "A did+", "B did+"}));
    inside->removeFromParentViewController();
    EXPECT_EQ(inside->parentViewController(), nullptr);
    EXPECT_EQ(parent->childViewControllers().size(), 1u);
}

TEST_F(ControllerTest, TheWindowsRootAppearsAndDisappears) {
    show(screen("A"));
    window().setRootViewController(screen("B"));
    EXPECT_EQ(log, CallLog({"A will-", "A did-", "B load", "B will+", "B did+"}));
    EXPECT_EQ(window().rootViewController()->view()->frame(), (CGRect{0, 0, 375, 667}));
}

TEST_F(ControllerTest, AReplacedRootTakesWhatItPresentsWithIt) {
    const auto navigation = stackOf({"A", "B"});
    show(navigation);
    const auto sheet = screen("S");
    navigation->topViewController()->presentViewController(sheet, true);
    window().setRootViewController(screen("C"));
    settle();
    EXPECT_EQ(sheet->lastCall(), "did-");
    EXPECT_EQ(window().subviews().size(), 1u);
}

TEST_F(ControllerTest, AViewThatOutlivesItsControllerForgetsIt) {
    auto root = screen("A");
    const auto view = root->view();
    root.reset();
    EXPECT_EQ(view->owner(), nullptr);
}

TEST(PlatformText, FollowsThePreferredLanguages) {
    class Languages final : public NSLocale {
    public:
        std::vector<std::string> languages;
        std::string shortDateAndTime(NSDate) const override { return {}; }
        std::vector<std::string> preferredLanguages() const override { return languages; }
    };
    HeadlessPlatform platform;
    const auto locale = std::make_shared<Languages>();
    NSLocale::install(locale);
    struct Case {
        std::vector<std::string> languages;
        const char* cancel;
    };
    for (const Case& each :
         {Case{{"zh-Hans-CN", "en"}, "取消"}, Case{{"zh-CN"}, "取消"}, Case{{"zh"}, "取消"},
          Case{{"zh-Hant-TW", "en"}, "Cancel"}, Case{{"zh-HK"}, "Cancel"}, Case{{"de", "zh"}, "取消"},
          Case{{"en-GB", "zh"}, "Cancel"}, Case{{}, "Cancel"}, Case{{"zhx"}, "Cancel"}}) {
        locale->languages = each.languages;
        EXPECT_EQ(platformText("Cancel"), each.cancel);
        EXPECT_EQ(platformText("No such text"), "No such text");
    }
}

}  // namespace
}  // namespace ostrel
