#pragma once

#include "platform/uikit/screens/UIViewController.h"
#include "platform/uikit/text/UITextView.h"

#include <memory>
#include <string>

namespace ostrel {

/// The comment composer: one text, "Reply" and "Cancel". Whoever presents it, within a navigation controller, sets the
/// article and asks for a login before. It closes without waiting for the server's answer, and no screen is refreshed.
class UICommentViewController final : public UIViewController, public UITextViewDelegate {
public:
    const std::string& article_id() const { return article_id_; }
    /// The article to comment on, as a decimal text.
    void setArticle_id(std::string id) { article_id_ = std::move(id); }

    void loadView() override;
    void viewDidLoad() override;
    void viewDidAppear(bool animated) override;
    void textViewDidChange(UITextView& textView) override;
    /// Sends the comment and closes. A transport error is left in the error file, everything else only logged.
    void comment();
    /// Closes; nothing is sent.
    void cancel();

    const std::shared_ptr<UITextView>& replyTextView() const { return replyTextView_; }

private:
    std::weak_ptr<UICommentViewController> weakSelf();

    std::shared_ptr<UITextView> replyTextView_;
    std::string article_id_;
};

}  // namespace ostrel
