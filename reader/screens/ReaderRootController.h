#pragma once

#include "platform/uikit/screens/UINavigationController.h"
#include "reader/screens/ReaderListController.h"
#include "reader/screens/ReaderTabs.h"

#include <functional>
#include <memory>

namespace ostrel {

class HttpServerFramework;
class ReaderLog;
class ReaderNotice;

/// The host's frame around the module: everybody's articles and the user's own, each in a navigation controller, chosen
/// by tabs at the lower edge of narrow windows and in a sidebar of wide ones; and the account. Shows an embedder how
/// the module's list is contained, how its failures reach the user, and how a user signs in and out. Main thread.
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
    /// Shows the login screen when nobody is signed in, else the menu of the account.
    void showAccount();
    /// Shows a short message at the lower edge, which fades by itself.
    void showNotice(const std::string& text);
    /// Shows the menu of the help, whose only entry is the log.
    void showHelp();
    void showLog();
    /// Set by an owner that shows the log in a window of its own. Empty: the log is a sheet over this screen.
    std::function<void()> openLogWindow;

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
    std::shared_ptr<ReaderNotice> notice_;
    std::size_t selected_ = 0;
    /// A key is being offered to the screen beside the tabs.
    bool offersKey_ = false;
};

}  // namespace ostrel
