#include "article/list/UIArticleLoadMoreTableViewCell.h"

#include "article/resources/ArticleBundles.h"

#include <utility>

namespace ostrel {

UIArticleLoadMoreTableViewCell::UIArticleLoadMoreTableViewCell(UITableViewCellStyle style, std::string reuseIdentifier)
    : UITableViewCell(style, std::move(reuseIdentifier)) {}

void UIArticleLoadMoreTableViewCell::initialise() {
    UITableViewCell::initialise();
    textLabel()->setText(articleText("Load more articles"));
    textLabel()->setTextAlignment(NSTextAlignment::center);
    textLabel()->setTextColor(UIColor::tint());
    textLabel()->setFont(UIFont::system(15));

    actView_ = make<UIActivityIndicatorView>(UIActivityIndicatorView::Style::medium);
    addSubview(actView_);

    label_ = make<UILabel>(CGRect(0, 0, 100, 14));
    label_->setFont(UIFont::fontWithName("PingFangSC-Light", 12));
    label_->setText(articleText("Loading..."));
    label_->setAlpha(0);
    addSubview(label_);
    place();
}

void UIArticleLoadMoreTableViewCell::place() {
    const CGSize size = bounds().size;
    actView_->setCenter({size.width * 0.5, size.height * 0.5});
    label_->setFrame({size.width * 0.5 + 18, (size.height - 14) * 0.5, 100, 14});
}

void UIArticleLoadMoreTableViewCell::setFrame(const CGRect& frame) {
    UITableViewCell::setFrame(frame);
    if (label_) place();
}

void UIArticleLoadMoreTableViewCell::start() {
    label_->setAlpha(1);
    textLabel()->setAlpha(0);
    actView_->startAnimating();
}

void UIArticleLoadMoreTableViewCell::stop() {
    label_->setAlpha(0);
    textLabel()->setAlpha(1);
    actView_->stopAnimating();
}

}  // namespace ostrel
