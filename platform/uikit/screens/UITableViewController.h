#pragma once

#include "platform/uikit/screens/UIViewController.h"
#include "platform/uikit/table/UITableView.h"

namespace ostrel {

/// A screen that is one table; it is the table's delegate and data source.
class UITableViewController : public UIViewController, public UITableViewDataSource, public UITableViewDelegate {
public:
    explicit UITableViewController(UITableViewStyle style) : style_(style) {}
    ~UITableViewController() override;

    /// The table, made with the view.
    const std::shared_ptr<UITableView>& tableView();
    const std::shared_ptr<UIRefreshControl>& refreshControl() { return tableView()->refreshControl(); }
    void setRefreshControl(std::shared_ptr<UIRefreshControl> control) {
        tableView()->setRefreshControl(std::move(control));
    }
    void loadView() override;
    /// Deselects the selected row.
    void viewWillAppear(bool animated) override;
    std::int64_t tableViewNumberOfRowsInSection(UITableView&, std::int64_t) override { return 0; }

private:
    UITableViewStyle style_;
    std::shared_ptr<UITableView> table_;
};

}  // namespace ostrel
