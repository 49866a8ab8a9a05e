#pragma once

#include "platform/uikit/screens/UINavigationController.h"
#include "reader/ReaderListController.h"
#include "reader/ReaderTabs.h"

#include <functional>
#include <memory>

namespace ostrel {

class HttpServerFramework;
class ReaderLog;

/// The host's frame around the module: everybody's articles and the user's own, each in a navigation controller, chosen
/// by tabs at the lower edge on narrow windows and in a sidebar on wide ones, and the account. Main thread.
class ReaderRootController final : public UIViewController {
public:
    /// Windows at least this wide, in points, have the sidebar (pad and Mac idiom).
    static constexpr CGFloat sidebarFrom = 640;

    ReaderRootController(std::shared_ptr<HttpServerFramework> framework, std::shared_ptr<ReaderLog> log);
    ~ReaderRootController() override;
    void initialise();

    UIArticleListTableViewController& allArticles() { return *lists_[0]; }
    UIArticleListTableViewController& myArticles() { return *lists_[1]; }
    /// 0: everybody's articles, 1: the user's own.
    std::size_t selectedTab() const { return selected_; }
    void selectTab(std::size_t index);
    /// Signed out: the login screen. Signed in: who it is, and the way out.
    void showAccount();
    /// A short message at the lower edge that leaves by itself.
    void showNotice(const std::string& text);
    /// What is offered for help, now the log alone.
    void showHelp();
    /// Shows the log in a window of its own; set by who can open windows. Empty: a sheet.
    std::function<void()> openLogWindow;
    void showLog();

    void viewDidLoad() override;
    void viewWillAppear(bool animated) override;
    void viewDidAppear(bool animated) override;
    void viewWillDisappear(bool animated) override;
    void viewDidDisappear(bool animated) override;
    void viewDidLayoutSubviews() override;
    bool pressesBegan(const UIPress& press) override;

private:
    bool hasSidebar();
    void layout();
    void accountChanged();
    void showLogin();
    void showMessages();
    std::weak_ptr<ReaderRootController> weakSelf();

    std::shared_ptr<HttpServerFramework> framework_;
    std::shared_ptr<ReaderLog> log_;
    std::shared_ptr<ReaderListController> lists_[2];
    std::shared_ptr<UINavigationController> navigations_[2];
    std::shared_ptr<UIView> content_;
    std::shared_ptr<ReaderTabs> tabs_;
    std::shared_ptr<UIViewController> login_;
    std::shared_ptr<UIView> notice_;
    std::shared_ptr<UILabel> noticeText_;
    std::uint64_t noticeTimer_ = 0;
    std::size_t selected_ = 0;
    bool offersKey_ = false;
};

}  // namespace ostrel
