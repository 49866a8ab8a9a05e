#include "reader/screens/ReaderMessagesController.h"

#include "platform/uikit/screens/UIBarButtonItem.h"
#include "reader/screens/ReaderMessageCell.h"
#include "reader/services/ReaderText.h"
#include "serverframework/HttpServerFramework.h"

#include <algorithm>
#include <utility>

namespace ostrel {

ReaderMessagesController::ReaderMessagesController(std::shared_ptr<HttpServerFramework> framework)
    : UITableViewController(UITableViewStyle::plain), framework_(std::move(framework)) {}

void ReaderMessagesController::viewDidLoad() {
    UITableViewController::viewDidLoad();
    setTitle(readerText("Messages"));
    const auto weak = std::weak_ptr(std::static_pointer_cast<ReaderMessagesController>(shared_from_this()));
    navigationItem().setLeftBarButtonItem(
        std::make_shared<UIBarButtonItem>(readerText("Close"), UIBarButtonItem::Style::plain, [weak] {
            if (const auto self = weak.lock()) self->dismissViewControllerAnimated(true, {});
        }));
    load();
}

bool ReaderMessagesController::cancelOperation() {
    dismissViewControllerAnimated(true);
    return true;
}

void ReaderMessagesController::load() {
    if (isLoading_) return;
    isLoading_ = true;
    const auto weak = std::weak_ptr(std::static_pointer_cast<ReaderMessagesController>(shared_from_this()));
    framework_->loadNotifications(next_, [weak](const auto& page, const auto& error) {
        if (const auto self = weak.lock()) self->show(page, error);
    });
}

void ReaderMessagesController::show(const UserNotificationPage& page, const std::optional<std::string>& error) {
    isLoading_ = false;
    if (error) {
        if (messages_.empty()) setHint(*error);
        return;
    }
    messages_.insert(messages_.end(), page.notifications.begin(), page.notifications.end());
    next_ = page.next;
    setHint(messages_.empty() ? readerText("You have no messages.") : "");
    tableView()->reloadData();
    if (!page.notifications.empty()) {
        const auto latest = std::max_element(page.notifications.begin(), page.notifications.end(),
                                             [](const auto& a, const auto& b) { return a.id < b.id; });
        framework_->markNotificationsRead(latest->id, [](auto, const auto&) {});
    }
}

void ReaderMessagesController::setHint(const std::string& text) {
    if (!hint_) {
        hint_ = make<UILabel>();
        hint_->setFont(UIFont::system(15));
        hint_->setTextColor(UIColor::secondaryLabel());
        hint_->setNumberOfLines(0);
        hint_->setTextAlignment(NSTextAlignment::center);
        tableView()->addSubview(hint_);
    }
    hint_->setText(text);
    hint_->setHidden(text.empty());
    viewDidLayoutSubviews();
}

void ReaderMessagesController::viewDidLayoutSubviews() {
    UITableViewController::viewDidLayoutSubviews();
    if (!hint_) return;
    const CGSize size = tableView()->frame().size;
    hint_->setFrame({24, size.height * 0.35, std::max(0.0, size.width - 48), 60});
}

std::int64_t ReaderMessagesController::numberOfSectionsInTableView(UITableView&) { return 1; }

std::int64_t ReaderMessagesController::tableViewNumberOfRowsInSection(UITableView&, std::int64_t) {
    return static_cast<std::int64_t>(messages_.size());
}

CGFloat ReaderMessagesController::tableViewHeightForRowAtIndexPath(UITableView& table, NSIndexPath path) {
    return ReaderMessageCell::heightFor(messages_.at(static_cast<std::size_t>(path.row)), table.frame().width());
}

std::shared_ptr<UITableViewCell> ReaderMessagesController::tableViewCellForRowAtIndexPath(UITableView& table,
                                                                                          NSIndexPath path) {
    static const std::string identifier = "message";
    auto cell = std::static_pointer_cast<ReaderMessageCell>(table.dequeueReusableCell(identifier));
    if (!cell) cell = make<ReaderMessageCell>(UITableViewCellStyle::defaultStyle, identifier);
    cell->show(messages_.at(static_cast<std::size_t>(path.row)));
    if (next_ && static_cast<std::size_t>(path.row) + 1 == messages_.size()) load();
    return cell;
}

}  // namespace ostrel
