#pragma once

#include "platform/foundation/resources/NSBundle.h"
#include "platform/foundation/values/Value.h"
#include "platform/uikit/table/UITableViewCell.h"

#include <memory>
#include <string>

namespace ostrel {

/// One comment: avatar, name, how long ago, text. A reused row keeps the avatar until another one comes, and its time
/// when the record has none.
class UIArticleCommentViewTableViewCell final : public UITableViewCell {
public:
    UIArticleCommentViewTableViewCell(UITableViewCellStyle style, std::string reuseIdentifier);
    void initialise();

    const Dictionary& commentDictionary() const { return commentDictionary_; }
    /// Stores the record, shows it and asks the server for the commenter's avatar.
    void setCommentDictionary(Dictionary record);

    const std::shared_ptr<UIImageView>& authFaceImageView() const { return authFaceImageView_; }
    const std::shared_ptr<UILabel>& authNameLabel() const { return authNameLabel_; }
    /// The comment's own label, not the built-in one.
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
