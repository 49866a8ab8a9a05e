#pragma once

#include "platform/uikit/screens/UIViewController.h"
#include "platform/uikit/text/UITextView.h"

#include <memory>
#include <string>

namespace ostrel {

/// The comment composer: a text, "Reply" and "Cancel". The screen that presents the composer wraps it in a
/// navigation controller, sets the article, and asks for a login before. The composer closes without waiting
/// for the server's answer, and no other screen is refreshed.
class UICommentViewController final : public UIViewController, public UITextViewDelegate {
public:
    const std::string& article_id() const { return article_id_; }
    /// The article to comment on, as a decimal text.
    void setArticle_id(std::string id) { article_id_ = std::move(id); }

    void loadView() override;
    void viewDidLoad() override;
    void viewDidAppear(bool animated) override;
    void textViewDidChange(UITextView& textView) override;
    /// Sends the comment and closes. A transport error is written to the error file; what the server answers
    /// is only logged.
    void comment();
    /// Closes without sending anything.
    void cancel();

    const std::shared_ptr<UITextView>& replyTextView() const { return replyTextView_; }

private:
    std::weak_ptr<UICommentViewController> weakSelf();

    std::shared_ptr<UITextView> replyTextView_;
    std::string article_id_;
};

}  // namespace ostrel
