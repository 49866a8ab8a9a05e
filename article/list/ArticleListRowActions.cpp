#include "article/list/ArticleListRowActions.h"

#include "article/detail/UICommentViewController.h"
#include "article/list/UIArticleListTableViewCell.h"
#include "article/records/ArticleNotifications.h"
#include "article/server/ArticleRequest.h"
#include "article/server/OstrelLoginViewController.h"
#include "platform/foundation/runloop/NSLog.h"
#include "platform/uikit/screens/UIActivityViewController.h"
#include "platform/uikit/screens/UIAlertController.h"
#include "platform/uikit/screens/UINavigationController.h"
#include "platform/uikit/view/UIWindow.h"

namespace ostrel {

namespace {

UIViewController* rootOfFirstWindow() {
    UIWindow* window = UIApplication::sharedApplication().firstWindow();
    return window ? window->rootViewController().get() : nullptr;
}

}  // namespace

void ArticleListRowActions::like() {
    const Dictionary& article = row_.articleDictionary();
    ArticleRequest::likeArticle(article["id"])
        .send([weak = weak_from_this(), id = recordId(article)](const ArticleAnswer& answer) {
            if (!answer.succeeded()) return;
            const std::string& count = answer.result->resultString();
            NSLog("Liked num: %@", count);
            const auto self = weak.lock();
            // The row may show another article by now, and the count belongs to the article that was liked.
            if (self && recordId(self->row_.articleDictionary()) == id) self->row_.likeButton()->setTitle(count);
        });
}

void ArticleListRowActions::comment() {
    UIViewController* root = rootOfFirstWindow();
    if (!root) return;
    if (OstrelServer::shareServer().currentUser()) {
        auto composer = make<UICommentViewController>();
        composer->setArticle_id(recordText(row_.articleDictionary(), "id"));
        auto navigation = make<UINavigationController>(composer);
        navigation->modalPresentationStyle = UIModalPresentationStyle::fullScreen;
        return root->presentViewController(navigation, true);
    }
    auto alert = make<UIAlertController>("Prohibit", "Can't comment before login.", UIAlertController::Style::alert);
    alert->addAction({"Login", UIAlertAction::Style::destructive, [weak = weak_from_this()] {
                          if (const auto self = weak.lock()) self->login();
                      }});
    alert->addAction({"Cancel", UIAlertAction::Style::cancel, {}});
    root->presentViewController(alert, true);
}

void ArticleListRowActions::share() {
    const std::string url = recordText(row_.articleDictionary(), "url");
    if (url.empty()) {
        NSLog("share url is nil");
        return;
    }
    UIViewController* root = rootOfFirstWindow();
    if (!root) return;
    auto sheet = make<UIActivityViewController>(url);
    auto& popover = sheet->popoverPresentationController;
    const auto& button = row_.shareButton();
    const auto idiom = UIDevice::currentDevice().userInterfaceIdiom();
    if (idiom == UIUserInterfaceIdiom::pad) {
        sheet->modalPresentationStyle = UIModalPresentationStyle::popover;
        popover.sourceView = button;
        // In the coordinates of the screen that presents the sheet, although the source view is the button.
        popover.sourceRect = row_.convertRectToView(button->frame(), root->view().get());
    } else if (idiom == UIUserInterfaceIdiom::mac) {
        sheet->modalPresentationStyle = UIModalPresentationStyle::popover;
        popover.sourceView = row_.shared_from_this();
        popover.sourceRect = button->frame();
    }
    root->presentViewController(sheet, true);
}

void ArticleListRowActions::login() {
    UIViewController* root = rootOfFirstWindow();
    if (!root) return;
    loginController_ = OstrelLoginViewController::shareWithHandler(
        [weak = weak_from_this()](bool succeeded, const std::shared_ptr<const OstrelServerUserObject>& user,
                                  const std::string&) {
            const auto self = weak.lock();
            if (self && succeeded && user && self->loginController_)
                self->loginController_->dismissViewControllerAnimated(true);
        });
    auto navigation = make<UINavigationController>(loginController_);
    navigation->modalPresentationStyle = UIModalPresentationStyle::overFullScreen;
    root->presentViewController(navigation, true);
}

}  // namespace ostrel
