#include "article/editor/UIArticlePostingView.h"

namespace ostrel {

void UIArticlePostingView::initialise() {
    setUserInteractionEnabled(true);
    setBackgroundColor({0.1f, 0.1f, 0.1f, 0.5f});
    setAlpha(0);
    actView_ = make<UIActivityIndicatorView>(UIActivityIndicatorView::Style::medium);
    actView_->setCenter({frame().width() * 0.5, frame().height() * 0.5});
    addSubview(actView_);
}

void UIArticlePostingView::startAnimated() {
    setAlpha(1);
    actView_->startAnimating();
}

void UIArticlePostingView::stopAnimated() {
    setAlpha(0);
    actView_->stopAnimating();
}

}  // namespace ostrel
