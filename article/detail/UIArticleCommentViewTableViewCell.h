#pragma once

#include "platform/foundation/resources/NSBundle.h"
#include "platform/foundation/values/Value.h"
#include "platform/uikit/table/UITableViewCell.h"

#include <memory>
#include <string>

namespace ostrel {

/// One comment: the commenter's avatar and name, how long ago the comment was written, and its text. A reused
/// row keeps the former avatar until the next one comes, and the former time when the new record has no date.
class UIArticleCommentViewTableViewCell final : public UITableViewCell {
public:
    UIArticleCommentViewTableViewCell(UITableViewCellStyle style, std::string reuseIdentifier);
    void initialise();

    const Dictionary& commentDictionary() const { return commentDictionary_; }
    /// Stores the record, shows it and asks the server for the commenter's avatar.
    void setCommentDictionary(Dictionary record);

    const std::shared_ptr<UIImageView>& authFaceImageView() const { return authFaceImageView_; }
    const std::shared_ptr<UILabel>& authNameLabel() const { return authNameLabel_; }
    /// The label of the comment's text; the row's built-in label of the same name stays empty.
    const std::shared_ptr<UILabel>& textLabel() const { return textLabel_; }
    const std::shared_ptr<UILabel>& timeLabel() const { return timeLabel_; }

private:
    void requestFace();

    std::shared_ptr<NSBundle> myBundle_;
    std::shared_ptr<NSBundle> ostrelArticleBundle_;
    std::shared_ptr<UIImageView> authFaceImageView_;
    std::shared_ptr<UILabel> authNameLabel_, textLabel_, timeLabel_;
    Dictionary commentDictionary_;
};

}  // namespace ostrel
