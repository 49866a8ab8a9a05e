#pragma once

#include "platform/foundation/resources/NSBundle.h"
#include "platform/foundation/values/Value.h"
#include "platform/uikit/screens/UIViewController.h"
#include "platform/uikit/table/UITableViewCell.h"
#include "platform/uikit/text/UITextView.h"

#include <memory>
#include <string>

namespace ostrel {

/// One article's summary in the list: the author's avatar and name, how long ago it changed, some lines of title and
/// text, and the buttons like, comment and share, which act on the article from here. Redraws itself from
/// "NOTIFICATION_KEY_UPDATE" as long as it lives, on screen or not.
class UIArticleListTableViewCell : public UITableViewCell {
public:
    UIArticleListTableViewCell(UITableViewCellStyle style, std::string reuseIdentifier);
    ~UIArticleListTableViewCell() override;
    void initialise();

    const Dictionary& articleDictionary() const { return articleDictionary_; }
    /// Stores the record and redraws from it; asks the server for the author's avatar.
    void setArticleDictionary(Dictionary record);
    void setFrame(const CGRect& frame) override;
    /// Has the text of a record measured for a row of this width that will be made soon.
    static void measureAhead(const Dictionary& record, CGFloat rowWidth, bool isOwners);

    void likeButtonAction();
    void commentButtonAction();
    void shareButtonAction();
    /// Presents the login screen over the first window.
    void loginNow();

    const std::shared_ptr<UIImageView>& authFaceImageView() const { return authFaceImageView_; }
    const std::shared_ptr<UILabel>& authNameLabel() const { return authNameLabel_; }
    const std::shared_ptr<UITextView>& detailTextLabel() const { return detailTextLabel_; }
    const std::shared_ptr<UILabel>& timeLabel() const { return timeLabel_; }
    const std::shared_ptr<UIButton>& likeButton() const { return likeButton_; }
    const std::shared_ptr<UIButton>& commentButton() const { return commentButton_; }
    const std::shared_ptr<UIButton>& shareButton() const { return shareButton_; }

protected:
    /// What stays free at the right of the text for the accessory, points.
    virtual CGFloat accessoryRoom() const { return plainRoom; }
    static constexpr CGFloat plainRoom = 30, ownersRoom = 65;

private:
    void updateArticleNotification(const Value& object);
    void place();
    void showBody();
    void showTime();
    void requestFace();
    std::shared_ptr<UIButton> makeButton(const char* image, std::string title, std::string accessibilityLabel,
                                         void (UIArticleListTableViewCell::*action)());

    std::shared_ptr<NSBundle> myBundle_;
    std::shared_ptr<NSBundle> ostrelArticleBundle_;
    std::shared_ptr<UIImageView> authFaceImageView_;
    std::shared_ptr<UILabel> authNameLabel_;
    std::shared_ptr<UITextView> detailTextLabel_;
    std::shared_ptr<UILabel> timeLabel_;
    std::shared_ptr<UIButton> likeButton_;
    std::shared_ptr<UIButton> commentButton_;
    std::shared_ptr<UIButton> shareButton_;
    std::shared_ptr<UIViewController> loginController_;
    Dictionary articleDictionary_;
};

/// The row of the owner's own list: a detail button that opens the editor, and room for it.
class UIArticleListOwnerTableViewCell final : public UIArticleListTableViewCell {
public:
    using UIArticleListTableViewCell::UIArticleListTableViewCell;
    void initialise();

protected:
    CGFloat accessoryRoom() const override { return ownersRoom; }
};

}  // namespace ostrel
