#include "article/detail/UICommentViewController.h"

#include "article/server/ArticleRequest.h"
#include "platform/foundation/runloop/NSLog.h"
#include "platform/uikit/view/UIDevice.h"

namespace ostrel {

std::weak_ptr<UICommentViewController> UICommentViewController::weakSelf() {
    return std::static_pointer_cast<UICommentViewController>(shared_from_this());
}

void UICommentViewController::loadView() {
    // The view is as large as the screen from the beginning, for `viewDidLoad` derives the text view's size
    // from it.
    setView(make<UIView>(CGRect{{0, 0}, UIScreen::mainScreen().bounds().size}));
}

void UICommentViewController::viewDidLoad() {
    UIViewController::viewDidLoad();
    view()->setBackgroundColor(UIColor::white());
    auto reply = std::make_shared<UIBarButtonItem>("Reply", UIBarButtonItem::Style::done, [weak = weakSelf()] {
        if (const auto self = weak.lock()) self->comment();
    });
    reply->setEnabled(false);
    navigationItem().setRightBarButtonItem(reply);
    navigationItem().setLeftBarButtonItem(
        std::make_shared<UIBarButtonItem>("Cancel", UIBarButtonItem::Style::plain, [weak = weakSelf()] {
            if (const auto self = weak.lock()) self->cancel();
        }));

    const CGSize size = view()->frame().size;
    replyTextView_ = make<UITextView>(CGRect(5, 10, size.width - 10, size.height));
    replyTextView_->setAutoresizingMask(flexibleWidth | flexibleHeight);
    replyTextView_->setFont(UIFont::fontWithName("PingFangSC-Light", 16));
    replyTextView_->setTextViewDelegate(weakSelf());
    view()->addSubview(replyTextView_);
}

void UICommentViewController::viewDidAppear(bool animated) {
    UIViewController::viewDidAppear(animated);
    replyTextView_->becomeFirstResponder();
}

void UICommentViewController::textViewDidChange(UITextView& textView) {
    navigationItem().rightBarButtonItem()->setEnabled(!textView.text().empty());
}

void UICommentViewController::comment() {
    // The user can press the button again while the screen leaves; the comment is sent once.
    navigationItem().rightBarButtonItem()->setEnabled(false);
    replyTextView_->resignFirstResponder();
    // After a transport error there is no result, and the request has written the error file before this
    // handler runs.
    ArticleRequest::addComment(article_id_, replyTextView_->text()).send([](const ArticleAnswer& answer) {
        if (!answer.result) return;
        if (answer.error) {
            NSLog("comment error:%@", answer.error);
        } else {
            NSLog("Comment count is %@ now.", answer.result->resultString());
        }
    });
    dismissViewControllerAnimated(true);
}

void UICommentViewController::cancel() {
    replyTextView_->resignFirstResponder();
    dismissViewControllerAnimated(true);
}

}  // namespace ostrel
