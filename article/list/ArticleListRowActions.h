#pragma once

#include "platform/uikit/screens/UIViewController.h"

#include <memory>

namespace ostrel {

class UIArticleListTableViewCell;

/// What the buttons of an article's row in the list do: like, comment, share, sign in. Owned by its row. An
/// answer that comes when the row is gone changes nothing. Screens are presented by the root screen of the
/// application's first window; without a window nothing is presented. Main thread.
class ArticleListRowActions final : public std::enable_shared_from_this<ArticleListRowActions> {
public:
    explicit ArticleListRowActions(UIArticleListTableViewCell& row) : row_(row) {}

    /// Sends the like; shows the new count when the server has counted the like and the row still shows the
    /// same article.
    void like();
    /// Presents the composer; presents an alert that offers the login when nobody is signed in.
    void comment();
    /// Presents the sheet with the article's address, as a popover where the device has them.
    void share();
    /// Presents the login screen, which leaves when the login has succeeded.
    void login();

private:
    UIArticleListTableViewCell& row_;
    std::shared_ptr<UIViewController> loginController_;
};

}  // namespace ostrel
