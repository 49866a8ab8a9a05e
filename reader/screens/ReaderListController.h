#pragma once

#include "article/list/UIArticleListTableViewController.h"
#include "platform/uikit/text/UILabel.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace ostrel {

/// The module's list with a sentence where there are no rows, as in a new user's own list. Shows an embedder how a
/// screen of the module is extended by overrides. Main thread.
class ReaderListController final : public UIArticleListTableViewController {
public:
    ~ReaderListController() override;

    /// Called when a screen was pushed over the list, and when the list is on top again.
    std::function<void()> coverChanged;
    /// Whether a pushed screen covers the list.
    bool isCovered() const;

    void viewWillAppear(bool animated) override;
    void viewWillDisappear(bool animated) override;
    void viewDidLayoutSubviews() override;
    std::int64_t numberOfSectionsInTableView(UITableView& table) override;

private:
    void scheduleHint();
    void showHint();
    void placeHint();

    std::shared_ptr<UILabel> hint_;
    std::uint64_t timer_ = 0;
};

}  // namespace ostrel
