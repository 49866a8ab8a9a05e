#include "article/detail/UIArticleCommentViewTableViewCell.h"

#include "article/detail/DetailMetrics.h"

#include "article/records/ArticleNotifications.h"
#include "article/records/NSStringForDate.h"
#include "article/resources/ArticleBundles.h"
#include "article/server/NSDjango.h"
#include "article/server/OstrelServer.h"
#include "platform/foundation/values/Text.h"

#include <algorithm>
#include <utility>

namespace ostrel {

namespace {

constexpr float smallestTextHeight = 30;

}  // namespace

UIArticleCommentViewTableViewCell::UIArticleCommentViewTableViewCell(UITableViewCellStyle style,
                                                                     std::string reuseIdentifier)
    : UITableViewCell(style, std::move(reuseIdentifier)) {}

void UIArticleCommentViewTableViewCell::initialise() {
    UITableViewCell::initialise();
    setSelectionStyle(UITableViewCellSelectionStyle::none);
    myBundle_ = openFrameworkArticleBundle();
    ostrelArticleBundle_ = openApplicationArticleBundle();
    const CGFloat width = frame().width();

    authFaceImageView_ = make<UIImageView>(CGRect(20, 12, 56, 56));
    authFaceImageView_->setContentMode(UIViewContentMode::scaleAspectFit);
    authFaceImageView_->setClipsToBounds(true);
    authFaceImageView_->setCornerRadius(28);
    if (auto face = imageInBundle(ostrelArticleBundle_, "anonymousAvatar"))
        authFaceImageView_->setImage(std::move(face));
    addSubview(authFaceImageView_);

    const auto x = static_cast<float>(authFaceImageView_->frame().maxX() + 8);
    authNameLabel_ = make<UILabel>(CGRect(x, authFaceImageView_->frame().minY(), width - x - 10, 18));
    authNameLabel_->setAutoresizingMask(flexibleWidth);
    authNameLabel_->setFont(UIFont::fontWithName("PingFangSC-Medium", 16));
    addSubview(authNameLabel_);

    textLabel_ = make<UILabel>(CGRect(x, authNameLabel_->frame().maxY() + 2, width - x - 10, 36));
    textLabel_->setFont(UIFont::fontWithName("PingFangSC-Thin", 12));
    textLabel_->setLineBreakMode(NSLineBreakMode::byWordWrapping);
    textLabel_->setNumberOfLines(0);
    textLabel_->setSelectable(true);
    textLabel_->setAutoresizingMask(flexibleWidth);
    addSubview(textLabel_);
    addConstraint({.toItem = textLabel_, .constant = textLabel_->frame().minY() + roomBelowText});

    timeLabel_ = make<UILabel>(CGRect(0, 0, 150, 18));
    timeLabel_->setTextAlignment(NSTextAlignment::left);
    timeLabel_->setTextColor({0.34f, 0.38f, 0.45f, 1});
    timeLabel_->setFont(UIFont::fontWithName("PingFangSC-Regular", 10));
    addSubview(timeLabel_);
}

void UIArticleCommentViewTableViewCell::setCommentDictionary(Dictionary record) {
    commentDictionary_ = std::move(record);
    authNameLabel_->setText(recordText(commentDictionary_, "auth_name"));
    if (const auto text = commentDictionary_["date"].text()) {
        const auto date = NSDjangoUTCConvert::djangoDateString(*text);
        timeLabel_->setText(date ? NSStringForDate::date(*date) : std::string());
    }
    const CGFloat nameWidth = TextMeasurer::shared().singleLineWidth(authNameLabel_->text(), authNameLabel_->font());
    const CGPoint name = authNameLabel_->frame().origin;
    timeLabel_->setFrame({name.x + nameWidth + 5, name.y + 1, 120, 14});

    textLabel_->setText(recordText(commentDictionary_, "text"));
    const CGRect old = textLabel_->frame();
    const auto measured = static_cast<float>(
        TextMeasurer::shared().measure(textLabel_->text(), textLabel_->font(), old.width()).size.height);
    textLabel_->setFrame({old.origin, {old.width(), std::max(smallestTextHeight, measured)}});

    setAccessibility(AccessibilityRole::listItem,
                     authNameLabel_->text() + ", " + timeLabel_->text() + ", " + textLabel_->text());
    requestFace();
}

void UIArticleCommentViewTableViewCell::requestFace() {
    const std::string author = decimalText(commentDictionary_["auth_id"].integer());
    const auto weak = std::weak_ptr(std::static_pointer_cast<UIArticleCommentViewTableViewCell>(shared_from_this()));
    OstrelServer::shareServer().loadUserFace(author, [weak, author](const Data& data) {
        const auto row = weak.lock();
        // An answer that comes late must not put one person's face beside the words of another.
        if (!row || decimalText(row->commentDictionary_["auth_id"].integer()) != author) return;
        if (data) row->authFaceImageView_->setImage(UIImage::imageWithData(data));
    });
}

}  // namespace ostrel
