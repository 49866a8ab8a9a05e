#pragma once

#include "article/list/UIArticleLoadMoreTableViewCell.h"
#include "platform/foundation/runloop/NSDate.h"
#include "platform/foundation/values/Value.h"
#include "platform/uikit/screens/UITableViewController.h"

#include <deque>
#include <functional>
#include <optional>

namespace ostrel {

class OstrelServerHtmlResultObject;

/// The module's entry screen: a table of articles in the server's order, one article a section, with
/// pull-to-refresh and a load-more row while the server has further pages. In owner mode (`isMySelfOnly`) the
/// screen lists the signed-in user's own articles, which can be edited and deleted, and asks for a login when
/// nobody is signed in. A host puts the screen into a navigation controller. Main thread.
class UIArticleListTableViewController : public UITableViewController {
public:
    /// Loads the process-wide resource bundle unless it is loaded.
    UIArticleListTableViewController();
    ~UIArticleListTableViewController() override;
    void initialise();

    bool isMySelfOnly() const { return isMySelfOnly_; }
    /// To be set before the screen first appears. In owner mode the screen observes new and changed articles,
    /// and who is signed in.
    void setIsMySelfOnly(bool only);
    UIColor tintColor() const { return tintColor_; }
    /// The colour of the refresh control.
    void setTintColor(UIColor color);
    const std::string& refreshTitle() const { return refreshTitle_; }
    void setRefreshTitle(std::string title);

    /// Requests the first page; does nothing while this screen presents another one. `animated` starts the
    /// refresh control, whose event requests the page a second time after 0.1 seconds.
    void reloadInformationFromServer(bool animated);
    /// Requests the next page, also while an earlier request has not been answered. `cell`: the row that
    /// shows that work is in progress; absent: none.
    void loadMoreInformationFromServer(const std::shared_ptr<UIArticleLoadMoreTableViewCell>& cell);
    void handleRefresh();
    /// Called after a page of articles could not be loaded, with the sentence that was logged. The list itself shows
    /// nothing of it; a host that tells its users sets this. May be empty.
    std::function<void(const std::string& reason)> loadFailed;
    void loginNow();
    void write_article();
    void openArticle(const Dictionary& record);
    void editArticleFor(NSIndexPath path);
    /// Removes the row at once; the server's answer is only logged.
    void removeArticleFor(NSIndexPath path);

    const std::deque<Dictionary>& articlesArray() const { return articlesArray_; }
    const std::optional<std::string>& moreArticlesURLString() const { return moreArticlesURLString_; }
    std::optional<NSDate> lastLoadDate() const { return lastLoadDate_; }

    void viewDidAppear(bool animated) override;
    void viewDidLayoutSubviews() override;
    bool pressesBegan(const UIPress& press) override;

    std::int64_t numberOfSectionsInTableView(UITableView& table) override;
    std::int64_t tableViewNumberOfRowsInSection(UITableView& table, std::int64_t section) override;
    std::shared_ptr<UITableViewCell> tableViewCellForRowAtIndexPath(UITableView& table, NSIndexPath path) override;
    void tableViewPrefetchRowsAtIndexPaths(UITableView& table, const std::vector<NSIndexPath>& paths) override;
    CGFloat tableViewHeightForHeaderInSection(UITableView& table, std::int64_t section) override;
    CGFloat tableViewHeightForFooterInSection(UITableView& table, std::int64_t section) override;
    bool tableViewHasUniformSections(UITableView& table) override;
    void tableViewDidSelectRowAtIndexPath(UITableView& table, NSIndexPath path) override;
    void tableViewAccessoryButtonTappedForRowWithIndexPath(UITableView& table, NSIndexPath path) override;
    bool tableViewCanEditRowAtIndexPath(UITableView& table, NSIndexPath path) override;
    void tableViewCommitEditingStyle(UITableView& table, UITableViewCellEditingStyle style, NSIndexPath path) override;
    std::vector<UITableViewRowAction> tableViewEditActionsForRowAtIndexPath(UITableView& table,
                                                                            NSIndexPath path) override;

private:
    void currentUserChanged();
    void addedNewArticleNotification(const Value& object);
    void updateArticleNotification(const Value& object);
    bool showsLoginPrompt() const;
    void makeLoginPrompt();
    void placeLoginPrompt();
    void showLoginPrompt();
    void showFirstPage(const OstrelServerHtmlResultObject& result, bool animated);
    const Dictionary* articleAt(NSIndexPath path) const;
    std::weak_ptr<UIArticleListTableViewController> weakSelf();

    std::shared_ptr<UIViewController> loginController_;
    std::shared_ptr<UILabel> loginLabel_;
    std::shared_ptr<UILabel> loginDetailLabel_;
    std::shared_ptr<UIButton> loginButton_;
    std::optional<NSDate> lastLoadDate_;
    std::deque<Dictionary> articlesArray_;
    std::optional<std::string> moreArticlesURLString_;
    std::weak_ptr<UIArticleLoadMoreTableViewCell> loadMoreCell_;
    bool isMySelfOnly_ = false;
    UIColor tintColor_;
    std::string refreshTitle_;
};

}  // namespace ostrel
