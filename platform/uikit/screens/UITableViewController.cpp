#include "platform/uikit/screens/UITableViewController.h"

namespace ostrel {

UITableViewController::~UITableViewController() {
    if (!table_) return;
    table_->setDataSource(nullptr);
    table_->setDelegate(nullptr);
}

const std::shared_ptr<UITableView>& UITableViewController::tableView() {
    if (!table_) view();
    return table_;
}

void UITableViewController::loadView() {
    table_ = make<UITableView>(CGRect{}, style_);
    table_->setDataSource(this);
    table_->setDelegate(this);
    table_->setBackgroundColor(style_ == UITableViewStyle::plain ? UIColor::systemBackground()
                                                                 : UIColor::groupedBackground());
    setView(table_);
}

void UITableViewController::viewWillAppear(bool animated) {
    UIViewController::viewWillAppear(animated);
    if (const auto selected = table_ ? table_->indexPathForSelectedRow() : std::nullopt) {
        table_->deselectRow(*selected, animated);
    }
}

}  // namespace ostrel
