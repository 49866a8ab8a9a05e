#pragma once

#include "platform/foundation/resources/NSBundle.h"
#include "platform/foundation/values/Value.h"
#include "platform/uikit/controls/UIButton.h"
#include "platform/uikit/table/UITableViewCell.h"
#include "platform/uikit/text/UITextView.h"

#include <memory>
#include <string>

namespace ostrel {

class ArticleListRowActions;
struct ArticleListRowLayout;

/// One article's summary in the list: the author's avatar and name, how long ago the article changed, some
/// lines of its title and text, and the buttons like, comment and share. Shows each new record of its article
/// that "NOTIFICATION_KEY_UPDATE" brings, on screen or not. `ArticleListRowLayout` places its parts,
/// `ArticleListRowActions` does what its buttons say.
class UIArticleListTableViewCell : public UITableViewCell {
public:
    UIArticleListTableViewCell(UITableViewCellStyle style, std::string reuseIdentifier);
    ~UIArticleListTableViewCell() override;
    void initialise();

    const Dictionary& articleDictionary() const { return articleDictionary_; }
    /// Stores and shows the record, and asks the server for the author's avatar.
    void setArticleDictionary(Dictionary record);
    void setFrame(const CGRect& frame) override;
    /// Tells the text measurer the text of a row of `rowWidth` points that the table will ask for soon.
    /// `isOwners`: the row will be one of the owner's list.
    static void measureAhead(const Dictionary& record, CGFloat rowWidth, bool isOwners);

    // See `ArticleListRowActions`.
    void likeButtonAction();
    void commentButtonAction();
    void shareButtonAction();
    void loginNow();

    const std::shared_ptr<UIImageView>& authFaceImageView() const { return authFaceImageView_; }
    const std::shared_ptr<UILabel>& authNameLabel() const { return authNameLabel_; }
    const std::shared_ptr<UITextView>& detailTextLabel() const { return detailTextLabel_; }
    const std::shared_ptr<UILabel>& timeLabel() const { return timeLabel_; }
    const std::shared_ptr<UIButton>& likeButton() const { return likeButton_; }
    const std::shared_ptr<UIButton>& commentButton() const { return commentButton_; }
    const std::shared_ptr<UIButton>& shareButton() const { return shareButton_; }

protected:
    /// What the text leaves free at the right for the accessory, points.
    virtual CGFloat accessoryRoom() const;

private:
    void updateArticleNotification(const Value& object);
    ArticleListRowLayout layout() const;
    void place();
    void showBody();
    void requestFace();
    std::shared_ptr<UIButton> makeButton(CGRect frame, const char* image, std::string title,
                                         std::string accessibilityLabel, void (ArticleListRowActions::*action)());

    std::shared_ptr<NSBundle> myBundle_;
    std::shared_ptr<NSBundle> ostrelArticleBundle_;
    std::shared_ptr<UIImageView> authFaceImageView_;
    std::shared_ptr<UILabel> authNameLabel_;
    std::shared_ptr<UITextView> detailTextLabel_;
    std::shared_ptr<UILabel> timeLabel_;
    std::shared_ptr<UIButton> likeButton_;
    std::shared_ptr<UIButton> commentButton_;
    std::shared_ptr<UIButton> shareButton_;
    std::shared_ptr<ArticleListRowActions> actions_;
    Dictionary articleDictionary_;
};

/// The row of the owner's list: its accessory is a detail button, which opens the editor.
class UIArticleListOwnerTableViewCell final : public UIArticleListTableViewCell {
public:
    using UIArticleListTableViewCell::UIArticleListTableViewCell;
    void initialise();

protected:
    CGFloat accessoryRoom() const override;
};

}  // namespace ostrel
