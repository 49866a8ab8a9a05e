#pragma once

#include "article/editor/ArticleSave.h"
#include "article/editor/UIArticleEditImagesTableViewCell.h"
#include "article/editor/UIArticleEditVideosTableViewCell.h"
#include "article/editor/UIArticlePostingView.h"
#include "platform/uikit/screens/UITableViewController.h"
#include "platform/uikit/text/UITextField.h"
#include "platform/uikit/text/UITextView.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ostrel {

/// The screen on which a user writes a new article or changes an existing one: a title line, a text box, a strip of
/// images and a strip of videos. Pushed or presented within a navigation controller. The first change enables "POST";
/// the screen does not compare texts and items with what they were before. Cancel closes without asking. Main thread.
class UIArticleEditViewController final : public UITableViewController,
                                          public UIScrollViewDelegate,
                                          public UITextFieldDelegate,
                                          public UITextViewDelegate,
                                          public UIArticleEditImagesTableViewCellDelegate,
                                          public UIArticleEditVideosTableViewCellDelegate,
                                          public ArticleSaveDelegate {
public:
    using Images = std::vector<std::shared_ptr<const UIImage>>;

    /// For a new article, or with `setArticleDictionary` for an existing one.
    UIArticleEditViewController();
    /// Filled with images, title and text, with "POST" enabled. `autoSend`: the screen saves each time it appears.
    UIArticleEditViewController(Images images, std::string articleTitle, std::string articleText, bool autoSend);
    ~UIArticleEditViewController() override;
    void initialise();

    /// The article under edit; absent for a new article. Set it before the screen is first shown; setting loads
    /// nothing.
    const Dictionary& articleDictionary() const { return articleDictionary_; }
    void setArticleDictionary(Dictionary record) { articleDictionary_ = std::move(record); }
    /// How the strips show their items: 0 as a list with captions, 1 as a grid, any other number as large tiles.
    /// Setting the style makes the article count as unchanged.
    std::int64_t articleEditStyle() const { return articleEditStyle_; }
    void setArticleEditStyle(std::int64_t style);
    bool articleHaveChanged() const { return articleHaveChanged_; }

    /// Closes without asking and without sending anything.
    void cancel();

    // Saving: `ArticleSave` does the work. The operations below the first one are its steps, for hosts.

    /// Sends the whole article, shows the overlay until every request has been answered and the article was loaded once
    /// more, and closes the screen.
    void save();
    void uploadNewArticle();
    /// Starts the thread that waits until no counted request is outstanding, and then loads the article.
    void waitingForUploadArticleID(const std::string& articleId, bool isNewArticle);
    /// `sort`: the place in its strip, from 0.
    void uploadImage(const NSArticleImageObject& item, std::int64_t sort, const std::string& articleId);
    void uploadVideo(const NSArticleVideoObject& item, std::int64_t sort, const std::string& articleId);
    void updateServerImageSort(int position, const Value& imageId);
    void updateServerImageText(const std::string& text, const Value& imageId);
    void removeServerImage(const Dictionary& record);
    void updateServerVideoSort(int position, const Value& videoId);
    void updateServerVideoText(const std::string& text, const Value& videoId);
    void removeServerVideo(const Dictionary& record);
    /// Creates an article of the title and text that the screen was filled with, and then behaves as if the screen
    /// appeared again; for hosts.
    void createArticleForPre();
    /// The number of counted requests that were sent and not yet answered. Any thread.
    std::int64_t uploadTasksNum() const { return uploadTasksNum_->load(); }

    ArticleDraft draftToSave() override;
    void textsWereRefused() override;
    void saveDidEnd(ArticleSaveEnd end) override;

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

    /// The reuse identifier of the row at `path`; none in a section that the table does not have.
    static std::optional<std::string> cellIdentifierFor(NSIndexPath path);
    std::int64_t numberOfSectionsInTableView(UITableView& table) override;
    std::int64_t tableViewNumberOfRowsInSection(UITableView& table, std::int64_t section) override;
    std::shared_ptr<UITableViewCell> tableViewCellForRowAtIndexPath(UITableView& table, NSIndexPath path) override;
    CGFloat tableViewHeightForRowAtIndexPath(UITableView& table, NSIndexPath path) override;
    CGFloat tableViewHeightForHeaderInSection(UITableView& table, std::int64_t section) override;
    void scrollViewWillBeginDragging(UIScrollView& scrollView) override;
    /// Ends reordering when a wheel or a key scrolls the table, but not when a dragged tile does.
    void scrollViewDidScroll(UIScrollView& scrollView) override;

    bool textFieldShouldReturn(UITextField& field) override;
    bool textFieldShouldChangeCharactersInRangeReplacementString(UITextField& field, NSRange range,
                                                                 const std::string& replacement) override;
    /// Makes the text box and its row as high as the text, between a smallest and a largest height.
    void textViewDidChangeSelection(UITextView& textView) override;

    void textAndValueChangedFromArticleEditImagesTableViewCell(UIArticleEditImagesTableViewCell& strip) override;
    void imageNumberChanged(UIArticleEditImagesTableViewCell& strip) override;
    void textAndValueChangedFromArticleEditVideosTableViewCell(UIArticleEditVideosTableViewCell& strip) override;
    void videoNumberChanged(UIArticleEditVideosTableViewCell& strip) override;

private:
    std::weak_ptr<UIArticleEditViewController> weakSelf();
    void didChange();
    template <class Strip>
    void prepareStrip(std::shared_ptr<Strip>& strip, const char* identifier);
    std::shared_ptr<UITableViewCell> imagesRow(NSIndexPath path);
    std::shared_ptr<UITableViewCell> videosRow(NSIndexPath path);
    std::shared_ptr<UITableViewCell> titleRow(UITableView& table);
    std::shared_ptr<UITableViewCell> textRow(UITableView& table, NSIndexPath path);
    ArticleImages initialImages() const;
    /// Whether the screen has no parent, nobody presents it, and no window shows it.
    bool isClosed() const;
    /// Breaks the cycle of references between the screen and its strips once the screen is closed.
    void releaseStripsWhenClosed();
    /// Restores what `releaseStripsWhenClosed` broke, for a screen that is shown again.
    void holdStrips();
    /// A save that counts its requests in `uploadTasksNum`.
    std::shared_ptr<ArticleSave> newSave();
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

    const std::shared_ptr<ArticleSave::Outstanding> uploadTasksNum_;
    std::shared_ptr<UIArticlePostingView> postingView_;
};

}  // namespace ostrel
