#pragma once

#include "platform/uikit/screens/UITableViewController.h"
#include "platform/uikit/text/UILabel.h"
#include "serverframework/account/UserNotification.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ostrel {

class HttpServerFramework;

/// The signed-in user's messages from other readers, newest first. Further pages are loaded as the user scrolls to
/// their end; messages that were shown are marked as read. Shows an embedder a screen that asks the server framework
/// itself. Main thread.
class ReaderMessagesController final : public UITableViewController {
public:
    explicit ReaderMessagesController(std::shared_ptr<HttpServerFramework> framework);

    const std::vector<UserNotification>& messages() const { return messages_; }

    void viewDidLoad() override;
    /// Escape closes the screen.
    bool cancelOperation() override;
    void viewDidLayoutSubviews() override;
    std::int64_t numberOfSectionsInTableView(UITableView& table) override;
    std::int64_t tableViewNumberOfRowsInSection(UITableView& table, std::int64_t section) override;
    CGFloat tableViewHeightForRowAtIndexPath(UITableView& table, NSIndexPath path) override;
    std::shared_ptr<UITableViewCell> tableViewCellForRowAtIndexPath(UITableView& table, NSIndexPath path) override;

private:
    void load();
    void show(const UserNotificationPage& page, const std::optional<std::string>& error);
    void setHint(const std::string& text);

    std::shared_ptr<HttpServerFramework> framework_;
    std::vector<UserNotification> messages_;
    /// The address of the next page; none: the last page is loaded.
    std::optional<std::string> next_;
    bool isLoading_ = false;
    std::shared_ptr<UILabel> hint_;
};

}  // namespace ostrel
