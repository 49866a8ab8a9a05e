#include "article/editor/UIArticleEditViewController.h"

#include "article/resources/ArticleBundles.h"
#include "platform/foundation/NSNotificationCenter.h"
#include "platform/uikit/UINavigationController.h"

#include <utility>

namespace ostrel {

UIArticleEditViewController::UIArticleEditViewController()
    : UITableViewController(UITableViewStyle::insetGrouped) {}

UIArticleEditViewController::UIArticleEditViewController(Images images, std::string articleTitle,
                                                         std::string articleText, bool autoSend)
    : UIArticleEditViewController() {
    preImagesArray_ = std::move(images);
    preArticleTitle_ = std::move(articleTitle);
    preArticleText_ = std::move(articleText);
    autoSendPre_ = autoSend;
}

UIArticleEditViewController::~UIArticleEditViewController() {
    NSNotificationCenter::defaultCenter().removeObserver(this);
}

void UIArticleEditViewController::initialise() {
    setArticleEditStyle(0);
    tableView()->estimatedRowHeight = 66;
    tableView()->rowHeight = UITableViewAutomaticDimension;
    tableView()->setDelegate(this);
    tableView()->setDataSource(this);
    articleHaveChanged_ = preImagesArray_.has_value();
}

std::weak_ptr<UIArticleEditViewController> UIArticleEditViewController::weakSelf() {
    return std::static_pointer_cast<UIArticleEditViewController>(shared_from_this());
}

void UIArticleEditViewController::setArticleEditStyle(std::int64_t style) {
    articleEditStyle_ = style;
    articleHaveChanged_ = false;
    tableView()->separatorNone = true;
}

void UIArticleEditViewController::viewDidLoad() {
    UITableViewController::viewDidLoad();
    view()->setBackgroundColor(UIColor::white());
    auto post = std::make_shared<UIBarButtonItem>(articleText("POST"), UIBarButtonItem::Style::done,
                                                  [weak = weakSelf()] {
                                                      if (const auto self = weak.lock()) self->save();
                                                  });
    post->setEnabled(false);
    navigationItem().setRightBarButtonItem(post);
    navigationItem().setLeftBarButtonItem(
        std::make_shared<UIBarButtonItem>(UIBarButtonItem::SystemItem::cancel, [weak = weakSelf()] {
            if (const auto self = weak.lock()) self->cancel();
        }));
}

void UIArticleEditViewController::viewDidAppear(bool animated) {
    UITableViewController::viewDidAppear(animated);
    navigationItem().rightBarButtonItem()->setEnabled(articleHaveChanged_);
    if (autoSendPre_) save();
}

void UIArticleEditViewController::cancel() {
    if (presentingViewController()) {
        dismissViewControllerAnimated(true);
    } else if (auto* const navigation = navigationController()) {
        navigation->popViewControllerAnimated(true);
    }
}

}  // namespace ostrel
