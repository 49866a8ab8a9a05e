#pragma once

#include "article/OstrelArticle.h"
#include "backends/qt/window/QtWindowView.h"
#include "bench/support/BenchServer.h"
#include "platform/uikit/view/UIWindow.h"

#include <QQuickWindow>

#include <memory>

namespace ostrel {

/// The article list with `count` articles in a real window of 375 by 667 points.
class ListBenchWindow final {
public:
    static constexpr int width = 375, height = 667;

    /// `own`: the signed-in user's own list.
    ListBenchWindow(std::size_t count, bool own);
    /// Over a server framework that sends `count` articles.
    ListBenchWindow(std::shared_ptr<OstrelServerFramework> framework, std::size_t count, bool own);
    ~ListBenchWindow();

    /// Shows the window and waits until the list is loaded and painted; false when that took too long.
    bool open();
    QQuickWindow& window() { return *window_; }
    QtWindowView& view() { return *view_; }
    UIWindow& root() { return *root_; }
    UITableView& table() { return *list_->tableView(); }
    UIArticleListTableViewController& list() { return *list_; }
    /// Runs the event loop until nothing moves and everything is painted; false when that took longer.
    bool settle(double seconds = 20);

private:
    std::size_t count_;
    std::unique_ptr<QQuickWindow> window_;
    std::shared_ptr<UIWindow> root_;
    QtWindowView* view_ = nullptr;
    std::shared_ptr<UIArticleListTableViewController> list_;
};

}  // namespace ostrel
