#pragma once

#include "platform/uikit/controls/UIButton.h"
#include "platform/uikit/screens/UIViewController.h"
#include "platform/uikit/table/UITableView.h"
#include "reader/services/ReaderLog.h"

#include <functional>
#include <memory>
#include <vector>

namespace ostrel {

/// Shows the log: a row for each line, newest last. The table follows new lines until the user scrolls away from the
/// end; all lines can be copied and cleared. Shows an embedder a screen of its own over the platform: a table with its
/// data source, a toolbar, the pasteboard. Main thread.
class ReaderLogController final : public UIViewController,
                                  public UITableViewDataSource,
                                  public UITableViewDelegate,
                                  public UIScrollViewDelegate {
public:
    /// `close` is called by the "Close" button and by Escape; empty: there is no such button.
    ReaderLogController(std::shared_ptr<ReaderLog> log, std::function<void()> close);
    ~ReaderLogController() override;

    bool isFollowing() const { return isFollowing_; }
    void setFollowing(bool following);

    void viewDidLoad() override;
    /// Escape closes the screen.
    bool cancelOperation() override;
    void viewDidAppear(bool animated) override;
    void viewDidLayoutSubviews() override;
    std::int64_t tableViewNumberOfRowsInSection(UITableView& table, std::int64_t section) override;
    CGFloat tableViewHeightForRowAtIndexPath(UITableView& table, NSIndexPath path) override;
    std::shared_ptr<UITableViewCell> tableViewCellForRowAtIndexPath(UITableView& table, NSIndexPath path) override;
    void scrollViewDidScroll(UIScrollView& scroll) override;

private:
    void reload();
    void scrollToEnd();
    std::shared_ptr<UIButton> addButton(const char* title, void (ReaderLogController::*action)());
    void copyAll();
    void clear();
    void toggleFollowing();
    std::weak_ptr<ReaderLogController> weakSelf();

    std::shared_ptr<ReaderLog> log_;
    std::function<void()> close_;
    std::vector<ReaderLog::Line> lines_;
    std::shared_ptr<UITableView> table_;
    std::shared_ptr<UIView> toolbar_, toolbarLine_;
    std::shared_ptr<UIButton> copy_, clear_, follow_;
    std::shared_ptr<UILabel> hint_;
    std::uint64_t copiedTimer_ = 0;
    bool isFollowing_ = true;
    /// This controller scrolls to the end, not the user.
    bool isScrolling_ = false;
};

}  // namespace ostrel
