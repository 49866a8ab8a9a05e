#pragma once

#include "article/list/UIArticleListTableViewController.h"
#include "platform/uikit/text/UILabel.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace ostrel {

/// The module's list, with a sentence in the place of rows where there are none: a new writer's own list. Main thread.
class ReaderListController final : public UIArticleListTableViewController {
public:
    ~ReaderListController() override;

    /// Another screen was pushed over the list, or has left it.
    std::function<void()> coverChanged;
    /// Whether a screen that was pushed lies over the list.
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
