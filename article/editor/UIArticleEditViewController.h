#pragma once

#include "article/editor/UIArticleEditImagesTableViewCell.h"
#include "article/editor/UIArticleEditVideosTableViewCell.h"
#include "article/editor/UIArticlePostingView.h"
#include "platform/uikit/screens/UITableViewController.h"
#include "platform/uikit/text/UITextField.h"
#include "platform/uikit/text/UITextView.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ostrel {

class ArticleRequest;
struct ArticleAnswer;

/// The screen on which a user writes a new article or changes an existing one: a title line, a text box, a strip of images
/// and a strip of videos. Pushed or presented within a navigation controller. "POST" is enabled by the first change;
/// nothing compares with how things were. Cancel closes without asking. Main thread, but for the thread that waits for a
/// save's requests.
class UIArticleEditViewController final : public UITableViewController,
                                          public UIScrollViewDelegate,
                                          public UITextFieldDelegate,
                                          public UITextViewDelegate,
                                          public UIArticleEditImagesTableViewCellDelegate,
                                          public UIArticleEditVideosTableViewCellDelegate {
public:
    using Images = std::vector<std::shared_ptr<const UIImage>>;

    /// For a new article, or with `setArticleDictionary` for an existing one.
    UIArticleEditViewController();
    /// Pre-filled, with "POST" enabled; `autoSend`: saves at every appearance.
    UIArticleEditViewController(Images images, std::string articleTitle, std::string articleText,
                                bool autoSend);
    ~UIArticleEditViewController() override;
    void initialise();

    /// The article under edit; absent for a new one. Set before the first showing; loads nothing by itself.
    const Dictionary& articleDictionary() const { return articleDictionary_; }
    void setArticleDictionary(Dictionary record) { articleDictionary_ = std::move(record); }
    /// How the strips show their items: 0 as a list with captions, 1 as a grid, any other number as large tiles. Setting it
    /// forgets that something was changed.
    std::int64_t articleEditStyle() const { return articleEditStyle_; }
    void setArticleEditStyle(std::int64_t style);
    bool articleHaveChanged() const { return articleHaveChanged_; }

    /// Closes without asking and without sending anything.
    void cancel();

    // Saving
    /// Sends the whole article, waits until every request has been answered, loads it once more, tells everybody by a
    /// notification, and closes.
    void save();
    void uploadNewArticle();
    /// Starts the thread that waits until no counted request is outstanding.
    void waitingForUploadArticleID(const std::string& articleId, bool isNewArticle);
    /// `sort`: the position in its strip, from 0.
    void uploadImage(const NSArticleImageObject& item, std::int64_t sort, const std::string& articleId);
    void uploadVideo(const NSArticleVideoObject& item, std::int64_t sort, const std::string& articleId);
    void updateServerImageSort(int position, const Value& imageId);
    void updateServerImageText(const std::string& text, const Value& imageId);
    void removeServerImage(const Dictionary& record);
    void updateServerVideoSort(int position, const Value& videoId);
    void updateServerVideoText(const std::string& text, const Value& videoId);
    void removeServerVideo(const Dictionary& record);
    /// Creates the article of the pre-filled title and text alone, then appears once more; for hosts.
    void createArticleForPre();
    /// Counted requests sent and not yet answered.
    std::int64_t uploadTasksNum() const { return uploadTasksNum_.load(); }

    const std::shared_ptr<UITextField>& titleField() const { return titleField_; }
    const std::shared_ptr<UITextView>& textTextField() const { return textTextField_; }
    const std::shared_ptr<UIArticleEditImagesTableViewCell>& imagesCell() const { return imagesCell_; }
    const std::shared_ptr<UIArticleEditVideosTableViewCell>& videosCell() const { return videosCell_; }
    /// Null until the first save.
    const std::shared_ptr<UIArticlePostingView>& postingView() const { return postingView_; }

    void viewDidLoad() override;
    void viewWillAppear(bool animated) override;
    void viewDidAppear(bool animated) override;
    void viewDidDisappear(bool animated) override;
    void didMoveToParentViewController(UIViewController* parent) override;
    /// Escape ends reordering before it closes anything.
    bool cancelOperation() override;

    /// The identifier of the row at `path`; none where the table has no section.
    static std::optional<std::string> cellIdentifierFor(NSIndexPath path);
    std::int64_t numberOfSectionsInTableView(UITableView& table) override;
    std::int64_t tableViewNumberOfRowsInSection(UITableView& table, std::int64_t section) override;
    std::shared_ptr<UITableViewCell> tableViewCellForRowAtIndexPath(UITableView& table,
                                                                    NSIndexPath path) override;
    CGFloat tableViewHeightForRowAtIndexPath(UITableView& table, NSIndexPath path) override;
    CGFloat tableViewHeightForHeaderInSection(UITableView& table, std::int64_t section) override;
    void scrollViewWillBeginDragging(UIScrollView& scrollView) override;
    /// Scrolling by wheel or keys ends reordering too; that under a dragged tile does not.
    void scrollViewDidScroll(UIScrollView& scrollView) override;

    bool textFieldShouldReturn(UITextField& field) override;
    bool textFieldShouldChangeCharactersInRangeReplacementString(UITextField& field, NSRange range,
                                                                 const std::string& replacement) override;
    /// Makes the text box as high as its text, within bounds, and its row with it.
    void textViewDidChangeSelection(UITextView& textView) override;

    void textAndValueChangedFromArticleEditImagesTableViewCell(
        UIArticleEditImagesTableViewCell& strip) override;
    void imageNumberChanged(UIArticleEditImagesTableViewCell& strip) override;
    void textAndValueChangedFromArticleEditVideosTableViewCell(
        UIArticleEditVideosTableViewCell& strip) override;
    void videoNumberChanged(UIArticleEditVideosTableViewCell& strip) override;

private:
    std::weak_ptr<UIArticleEditViewController> weakSelf();
    void didChange();
    std::shared_ptr<UITableViewCell> imagesRow(NSIndexPath path);
    std::shared_ptr<UITableViewCell> videosRow(NSIndexPath path);
    std::shared_ptr<UITableViewCell> titleRow(UITableView& table);
    std::shared_ptr<UITableViewCell> textRow(UITableView& table, NSIndexPath path);
    ArticleImages initialImages() const;
    ArticleVideos initialVideos() const;
    /// Whether neither a navigation controller, a presenting screen nor a window holds this screen.
    bool isClosed() const;
    /// This screen and its strips hold each other; when it has been closed they let go.
    void letGoOfStripsWhenClosed();
    void holdStrips();
    std::shared_ptr<UIArticleEditViewController> strongSelf() { return weakSelf().lock(); }

    // Saving
    /// Sends a request that the end of a save waits for; it holds the screen until it is answered.
    void sendCounted(const ArticleRequest& request,
                     std::function<void(const ArticleAnswer& answer)> answered = {});
    void uploadEverything(const std::string& articleId);
    void articleWasReloaded(const ArticleAnswer& answer, bool isNewArticle);
    void showPosting();
    void presentFailure();

    Dictionary articleDictionary_;
    std::int64_t articleEditStyle_ = 0;
    bool articleHaveChanged_ = false;
    std::optional<Images> preImagesArray_;
    std::optional<std::string> preArticleTitle_, preArticleText_;
    bool autoSendPre_ = false;

    std::shared_ptr<UITextField> titleField_;
    std::shared_ptr<UITextView> textTextField_;
    NSIndexPath textIndexPath_;
    std::shared_ptr<UIArticleEditImagesTableViewCell> imagesCell_;
    NSIndexPath imagesCellIndexPath_;
    std::shared_ptr<UIArticleEditVideosTableViewCell> videosCell_;
    NSIndexPath videosCellIndexPath_;

    /// Changed by the main thread alone, read by the waiting thread too; orders nothing but itself.
    std::atomic<std::int64_t> uploadTasksNum_ = 0;
    std::shared_ptr<UIArticlePostingView> postingView_;
};

}  // namespace ostrel
