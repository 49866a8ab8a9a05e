#include "tests/platform/uikit/screens/ControllerTestSupport.h"

#include "platform/uikit/screens/UITableViewController.h"

namespace ostrel {
namespace {

class Rows final : public UITableViewController {
public:
    Rows() : UITableViewController(UITableViewStyle::plain) {}
    std::int64_t tableViewNumberOfRowsInSection(UITableView&, std::int64_t) override { return 3; }
    std::shared_ptr<UITableViewCell> tableViewCellForRowAtIndexPath(UITableView&, NSIndexPath) override {
        return make<UITableViewCell>(UITableViewCellStyle::defaultStyle, "row");
    }
    CGFloat tableViewHeightForRowAtIndexPath(UITableView&, NSIndexPath) override { return 44; }
};

TEST_F(ControllerTest, ATableScreenComesBackWithoutItsSelection) {
    const auto rows = make<Rows>();
    const auto navigation = make<UINavigationController>(rows);
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
}

TEST_F(ControllerTest, ATableThatOutlivesItsScreenIsEmpty) {
    auto rows = make<Rows>();
    const auto table = rows->tableView();
    ASSERT_EQ(table->numberOfRowsInSection(0), 3);
    rows.reset();
    table->reloadData();
    EXPECT_EQ(table->numberOfSections(), 0);
}

}  // namespace
}  // namespace ostrel
