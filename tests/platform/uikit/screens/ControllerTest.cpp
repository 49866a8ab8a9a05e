#include "tests/platform/uikit/screens/ControllerTestSupport.h"

#include "platform/foundation/resources/PlatformText.h"
#include "platform/uikit/screens/UITableViewController.h"

namespace ostrel {
namespace {

TEST_F(ControllerTest, TheViewIsLoadedOnceOnFirstNeedAndForgetsItsController) {
    auto root = screen("A");
    EXPECT_FALSE(root->isViewLoaded());
    const auto view = root->view();
    EXPECT_EQ(root->view(), view);
    EXPECT_EQ(log, CallLog({"A load"}));
    EXPECT_EQ(view->owner(), root.get());
    root.reset();
    EXPECT_EQ(view->owner(), nullptr);
}

TEST_F(ControllerTest, AppearanceCallsAreBalancedWhateverIsAskedFor) {
    // A step is "+" or "-", the begin of a transition to that state, or ".", its end.
    const std::pair<std::string, CallLog> cases[] = {
        {"+.-.", {"A will+", "A did+", "A will-", "A did-"}},
        {"++..+", {"A will+", "A did+"}},
        {"-..", {}},
        {"+-.", {"A will+", "A will-", "A did-"}},
        {"+.-+.", {"A will+", "A did+", "A will-", "A will+", "A did+"}},
    };
    for (const auto& [steps, calls] : cases) {
        const auto root = screen("A");
        root->view();
        log.clear();
        for (const char step : steps) {
            if (step == '.') root->endAppearanceTransition();
            if (step != '.') root->beginAppearanceTransition(step == '+', false);
        }
        EXPECT_EQ(log, calls) << steps;
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

class Rows final : public UITableViewController {
public:
    Rows() : UITableViewController(UITableViewStyle::plain) {}
    std::int64_t tableViewNumberOfRowsInSection(UITableView&, std::int64_t) override { return 3; }
    std::shared_ptr<UITableViewCell> tableViewCellForRowAtIndexPath(UITableView&, NSIndexPath) override {
        return make<UITableViewCell>(UITableViewCellStyle::defaultStyle, "row");
    }
    CGFloat tableViewHeightForRowAtIndexPath(UITableView&, NSIndexPath) override { return 44; }
};

TEST_F(ControllerTest, ATableScreenComesBackWithoutItsSelectionAndLeavesAnEmptyTable) {
    auto rows = make<Rows>();
    auto navigation = make<UINavigationController>(rows);
    show(navigation);
    EXPECT_EQ(rows->view(), rows->tableView());
    EXPECT_EQ(rows->tableView()->frame(), (CGRect{0, 0, 375, 667 - 44}));
    rows->tableView()->selectRow({0, 1}, false);
    navigation->pushViewController(screen("B"), true);
    settle();
    EXPECT_TRUE(rows->tableView()->indexPathForSelectedRow().has_value());
    navigation->popViewControllerAnimated(true);
    settle();
    EXPECT_FALSE(rows->tableView()->indexPathForSelectedRow().has_value());

    const auto table = rows->tableView();
    ASSERT_EQ(table->numberOfRowsInSection(0), 3);
    window().setRootViewController(nullptr);
    navigation.reset();
    rows.reset();
    table->reloadData();
    EXPECT_EQ(table->numberOfSections(), 0);
}

TEST(PlatformText, FollowsThePreferredLanguages) {
    HeadlessPlatform platform;
    using Case = std::pair<std::vector<std::string>, const char*>;
    for (const auto& [languages, cancel] :
         {Case{{"zh-Hans-CN", "en"}, "取消"}, Case{{"zh-CN"}, "取消"}, Case{{"zh"}, "取消"},
          Case{{"zh-Hant-TW", "en"}, "Cancel"}, Case{{"zh-HK"}, "Cancel"}, Case{{"de", "zh"}, "取消"},
          Case{{"en-GB", "zh"}, "Cancel"}, Case{{}, "Cancel"}, Case{{"zhx"}, "Cancel"}}) {
        platform.locale().languages = languages;
        EXPECT_EQ(platformText("Cancel"), cancel);
        EXPECT_EQ(platformText("No such text"), "No such text");
    }
}

}  // namespace
}  // namespace ostrel
