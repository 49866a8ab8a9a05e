#pragma once

#include "platform/foundation/runloop/NSProgress.h"
#include "platform/uikit/controls/UIActivityIndicatorView.h"
#include "platform/uikit/controls/UIButton.h"
#include "platform/uikit/screens/UITableViewController.h"
#include "platform/uikit/text/UILabel.h"
#include "platform/uikit/view/UIControl.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ostrel {

class UINavigationController;

/// "2 min left" in the user's language; empty when the time is unknown. `seconds` is the estimate of NSProgress.
std::string remainingTimeText(std::optional<double> seconds);

/// A slim bar under a navigation bar while work is in progress. The bar shows the title of the work, the time left, a
/// button that cancels the work, and its progress as a line. Of several pieces of work the bar shows the one that was
/// published first, and their number; a press on the bar lists all. The bar shows and hides itself. Main thread.
class WorkProgressBar final : public UIControl {
public:
    static constexpr CGFloat height = 28;
    /// Work that ends within this time is not shown, seconds.
    static constexpr double delay = 0.3;

    /// Makes a bar for the navigation controller, which owns the bar.
    static void addTo(UINavigationController& owner);

    explicit WorkProgressBar(std::weak_ptr<UINavigationController> owner);
    ~WorkProgressBar() override;
    void initialise();
    void layoutSubviews() override;

protected:
    void controlStateDidChange() override;

private:
    void show(const std::vector<std::shared_ptr<NSProgress>>& work);
    void setShown(bool shown);
    void openList();

    std::weak_ptr<UINavigationController> owner_;
    std::weak_ptr<NSProgress> shownWork_;
    std::optional<double> since_;  ///< when there was work first, monotonic seconds
    std::optional<double> fraction_;
    bool isShown_ = false;
    std::shared_ptr<UILabel> title_, time_, number_;
    std::shared_ptr<UIButton> cancel_;
    std::shared_ptr<UIView> badge_, line_, track_;
    std::shared_ptr<UIActivityIndicatorView> wheel_;
};

/// The list of all work in progress: a row for each piece, with a button that cancels it. The screen closes when no
/// work is left. Main thread.
class WorkProgressListController final : public UITableViewController {
public:
    WorkProgressListController();
    ~WorkProgressListController() override;
    void viewDidLoad() override;
    void viewDidAppear(bool animated) override;
    std::int64_t tableViewNumberOfRowsInSection(UITableView& table, std::int64_t section) override;
    CGFloat tableViewHeightForRowAtIndexPath(UITableView& table, NSIndexPath path) override;
    std::shared_ptr<UITableViewCell> tableViewCellForRowAtIndexPath(UITableView& table, NSIndexPath path) override;
    bool cancelOperation() override;

private:
    void show(const std::vector<std::shared_ptr<NSProgress>>& work);
    std::vector<std::shared_ptr<NSProgress>> work_;
};

}  // namespace ostrel
