#pragma once

#include "platform/foundation/values/Value.h"
#include "platform/uikit/screens/UIAlertController.h"
#include "platform/uikit/screens/UIViewController.h"
#include "platform/uikit/table/UITableView.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ostrel {

class UIArticleCommentViewTableViewCell;
class UIArticleVideoTableViewCell;
class UIArticleViewImageTableViewCell;
class UIArticleViewTextTableViewCell;
class UIArticleViewTitleTableViewCell;

/// One article in full: its title, text, pictures, videos and comments are the five sections of one table.
/// The list pushes this screen with its own record, of which only the "id" is read. The screen loads the
/// whole article when it first appears, and not again once a load has succeeded. At most one video row in the
/// viewport plays. Main thread.
class UIArticleViewController final : public UIViewController,
                                      public UITableViewDataSource,
                                      public UITableViewDelegate {
public:
    UIArticleViewController();
    ~UIArticleViewController() override;

    const Dictionary& articleDictionary() const { return articleDictionary_; }
    /// Stores the record of the list; the article is loaded when the screen appears.
    void setArticleDictionary(Dictionary record) { articleDictionary_ = std::move(record); }
    /// Loads the article at once; `title` and `text` are not used.
    void openArticleID(const std::string& articleId, const std::string& title, const std::string& text);
    /// A load that fails changes nothing: the spinner keeps turning, no alert is shown and nothing is logged.
    void loadArticleID(const std::string& articleId);
    /// Does nothing, for an article is loaded once.
    void handleRefresh() {}
    void share();
    /// Presents an alert in which the user writes a short message to the author.
    void touchAuthor();
    /// Stops the videos of all rows in the viewport except the video row number `row`; -1 stops all of them.
    void stopPlayedVideoExcept(std::int64_t row);

    const Dictionary& resultDict() const { return resultDict_; }
    const std::optional<std::string>& url() const { return url_; }
    const std::vector<Value>& imagesArray() const { return imagesArray_; }
    const std::vector<Value>& videosArray() const { return videosArray_; }
    const std::vector<Value>& commentsArray() const { return commentsArray_; }
    const std::shared_ptr<UITableView>& myTableView() const { return myTableView_; }

    void loadView() override;
    void viewDidLoad() override;
    void viewDidAppear(bool animated) override;
    void viewWillDisappear(bool animated) override;

    std::int64_t numberOfSectionsInTableView(UITableView& table) override;
    std::int64_t tableViewNumberOfRowsInSection(UITableView& table, std::int64_t section) override;
    std::shared_ptr<UITableViewCell> tableViewCellForRowAtIndexPath(UITableView& table, NSIndexPath path) override;
    std::string tableViewTitleForHeaderInSection(UITableView& table, std::int64_t section) override;
    CGFloat tableViewHeightForRowAtIndexPath(UITableView& table, NSIndexPath path) override;
    void tableViewDidSelectRowAtIndexPath(UITableView& table, NSIndexPath path) override;

private:
    class Table;
    std::weak_ptr<UIArticleViewController> weakSelf();
    void showArticle(const Dictionary& article);
    /// The video row that the space bar plays or pauses: the row with the focus, otherwise the selected row.
    std::optional<NSIndexPath> videoForSpace() const;
    bool spaceWasPressed();
    std::shared_ptr<UITableViewCell> titleCell();
    std::shared_ptr<UITableViewCell> textCell();
    std::shared_ptr<UITableViewCell> imageCell(NSIndexPath path);
    std::shared_ptr<UITableViewCell> videoCell(NSIndexPath path);
    std::shared_ptr<UITableViewCell> commentCell(NSIndexPath path);
    std::shared_ptr<UIArticleVideoTableViewCell> shownVideo(std::int64_t row) const;

    Dictionary articleDictionary_, resultDict_;
    std::optional<std::string> url_;
    std::vector<Value> imagesArray_, videosArray_, commentsArray_;
    std::shared_ptr<UITableView> myTableView_;
    /// Always empty: this screen shows its wheel instead of an alert while it loads.
    std::shared_ptr<UIAlertController> loadingAlert_;
};

}  // namespace ostrel
