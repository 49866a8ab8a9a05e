#include "article/list/UIArticleListTableViewCell.h"

#include "article/list/ArticleListRowActions.h"
#include "article/list/ArticleListRowLayout.h"
#include "article/records/ArticleNotifications.h"
#include "article/records/NSStringForDate.h"
#include "article/resources/ArticleBundles.h"
#include "article/server/NSDjango.h"
#include "article/server/OstrelServer.h"
#include "platform/foundation/runloop/NSNotificationCenter.h"
#include "platform/foundation/values/Text.h"

#include <utility>

namespace ostrel {

namespace {

/// Moves what a text view or a button shows to the right, from the avatar's edge to below the author's name,
/// points.
constexpr CGFloat contentIndent = 8;

const UIFont& bodyFont() {
    static const UIFont font = UIFont::fontWithName("PingFangSC-Thin", 12);
    return font;
}

int bodyLines() { return ArticleListRowLayout::measuredLines(TextMeasurer::shared().lineHeight(bodyFont())); }

std::string bodyText(const Dictionary& record) {
    const std::string title = recordText(record, "title"), text = recordText(record, "text");
    if (title.empty()) return text;
    if (text.empty()) return title;
    return title + "\n" + replacingOccurrences(replacingOccurrences(text, "\r\n", " "), "\n", " ");
}

}  // namespace

UIArticleListTableViewCell::UIArticleListTableViewCell(UITableViewCellStyle style, std::string reuseIdentifier)
    : UITableViewCell(style, std::move(reuseIdentifier)) {}

UIArticleListTableViewCell::~UIArticleListTableViewCell() {
    NSNotificationCenter::defaultCenter().removeObserver(this);
}

void UIArticleListTableViewCell::initialise() {
    UITableViewCell::initialise();
    setAccessoryType(UITableViewCellAccessoryType::disclosureIndicator);
    myBundle_ = openFrameworkArticleBundle();
    ostrelArticleBundle_ = openApplicationArticleBundle();
    actions_ = std::make_shared<ArticleListRowActions>(*this);
    const auto frames = ArticleListRowLayout::make(frame().size, {.accessoryRoom = accessoryRoom()});

    authFaceImageView_ = make<UIImageView>(frames.face);
    authFaceImageView_->setContentMode(UIViewContentMode::scaleAspectFit);
    authFaceImageView_->setClipsToBounds(true);
    authFaceImageView_->setCornerRadius(28);
    authFaceImageView_->setImage(imageInBundle(ostrelArticleBundle_, "anonymousAvatar"));
    addSubview(authFaceImageView_);

    authNameLabel_ = make<UILabel>(frames.name);
    authNameLabel_->setFont(UIFont::fontWithName("PingFangSC-Medium", 16));
    authNameLabel_->setAutoresizingMask(flexibleWidth);
    addSubview(authNameLabel_);

    detailTextLabel_ = make<UITextView>(frames.text);
    detailTextLabel_->setUserInteractionEnabled(false);
    detailTextLabel_->setEditable(false);
    detailTextLabel_->setSelectable(false);
    detailTextLabel_->setScrollEnabled(false);
    detailTextLabel_->setShowsVerticalScrollIndicator(false);
    detailTextLabel_->setBackgroundColor(UIColor::clear());
    detailTextLabel_->setLineBreakMode(NSLineBreakMode::byWordWrapping);
    detailTextLabel_->setContentInset({0, contentIndent, 0, 0});
    detailTextLabel_->setFont(bodyFont());
    addSubview(detailTextLabel_);
    addConstraint(
        {.toItem = detailTextLabel_, .constant = ArticleListRowLayout::textTop + ArticleListRowLayout::roomBelowText});

    timeLabel_ = make<UILabel>(frames.time);
    timeLabel_->setTextAlignment(NSTextAlignment::left);
    timeLabel_->setTextColor({0.34f, 0.38f, 0.45f, 1});
    timeLabel_->setFont(UIFont::fontWithName("PingFangSC-Regular", 14));
    addSubview(timeLabel_);

    likeButton_ = makeButton(frames.like, "like", "--", "Like", &ArticleListRowActions::like);
    commentButton_ = makeButton(frames.comment, "comment", "", "Comment", &ArticleListRowActions::comment);
    shareButton_ = makeButton(frames.share, "share", "", "Share", &ArticleListRowActions::share);

    // The destructor removes the handler, so that the handler can hold the row by address.
    NSNotificationCenter::defaultCenter().addObserver(
        this, NOTIFICATION_KEY_UPDATE,
        [this](const NSNotification& notification) { updateArticleNotification(notification.object); });
}

std::shared_ptr<UIButton> UIArticleListTableViewCell::makeButton(CGRect frame, const char* image, std::string title,
                                                                 std::string accessibilityLabel,
                                                                 void (ArticleListRowActions::*action)()) {
    auto button = make<UIButton>(UIButton::Type::custom, frame);
    button->setTitleFont(UIFont::fontWithName("PingFangSC-Light", 12));
    button->setTitleColor(UIColor::black());
    button->titleLabel()->setTextAlignment(NSTextAlignment::left);
    // A count of three digits and more would not fit beside the symbol.
    button->titleLabel()->setAdjustsFontSizeToFitWidth(true);
    button->setBackgroundColor(UIColor::clear());
    button->setContentAlignment(NSTextAlignment::left);
    button->setContentInsets({0, contentIndent, 0, 0});
    button->setTitle(std::move(title));
    if (auto picture = imageInBundle(myBundle_, image)) button->setImage(std::move(picture));
    button->setAccessibility(AccessibilityRole::button, std::move(accessibilityLabel));
    button->addTarget([this, action] { ((*actions_).*action)(); }, UIControlEvent::touchUpInside);
    addSubview(button);
    return button;
}

void UIArticleListTableViewCell::setFrame(const CGRect& frame) {
    const CGSize former = this->frame().size;
    UITableViewCell::setFrame(frame);
    // A table that scrolls sets the frame of a row again and again without a change of its size.
    if (shareButton_ && this->frame().size != former) place();
}

ArticleListRowLayout UIArticleListTableViewCell::layout() const {
    return ArticleListRowLayout::make(frame().size, {.accessoryRoom = accessoryRoom(),
                                                     .nameWidth = TextMeasurer::shared().singleLineWidth(
                                                         authNameLabel_->text(), authNameLabel_->font()),
                                                     .textHeight = detailTextLabel_->frame().height()});
}

void UIArticleListTableViewCell::place() {
    const ArticleListRowLayout frames = layout();
    detailTextLabel_->setFrame(frames.text);
    likeButton_->setFrame(frames.like);
    commentButton_->setFrame(frames.comment);
    shareButton_->setFrame(frames.share);
    timeLabel_->setFrame(frames.time);
}

void UIArticleListTableViewCell::setArticleDictionary(Dictionary record) {
    // A reused row must not show the avatar of the author whose article it showed before.
    if (record["auth_id"].integer() != articleDictionary_["auth_id"].integer()) {
        authFaceImageView_->setImage(imageInBundle(ostrelArticleBundle_, "anonymousAvatar"));
    }
    articleDictionary_ = std::move(record);
    authNameLabel_->setText(recordText(articleDictionary_, "auth_name"));
    showBody();
    likeButton_->setTitle(recordText(articleDictionary_, "liked"));
    const std::int64_t comments = articleDictionary_["comment"].integer();
    commentButton_->setTitle(comments >= 1 ? decimalText(comments) : std::string());
    commentButton_->setEnabled(articleDictionary_["open_comment"].boolean());
    const auto modified = NSDjangoUTCConvert::djangoDateString(articleDictionary_["modifie_date"].string());
    timeLabel_->setText(modified ? NSStringForDate::date(*modified) : std::string());
    timeLabel_->setFrame(layout().time);
    setAccessibility(AccessibilityRole::listItem, authNameLabel_->text() + ", " + detailTextLabel_->text());
    requestFace();
}

void UIArticleListTableViewCell::measureAhead(const Dictionary& record, CGFloat rowWidth, bool isOwners) {
    using Layout = ArticleListRowLayout;
    const CGFloat room = isOwners ? Layout::ownersAccessoryRoom : Layout::plainAccessoryRoom;
    TextMeasurer::shared().measureAhead(bodyText(record), bodyFont(), Layout::textWidth(rowWidth, room), bodyLines());
}

void UIArticleListTableViewCell::showBody() {
    const std::string text = bodyText(articleDictionary_);
    const CGRect old = detailTextLabel_->frame();
    const CGFloat measured = TextMeasurer::shared().measure(text, bodyFont(), old.width(), bodyLines()).size.height;
    detailTextLabel_->setText(text);
    detailTextLabel_->setFrame({old.origin, {old.width(), ArticleListRowLayout::shownTextHeight(measured)}});
}

void UIArticleListTableViewCell::requestFace() {
    const std::string author = decimalText(articleDictionary_["auth_id"].integer());
    const auto weak = std::weak_ptr(std::static_pointer_cast<UIArticleListTableViewCell>(shared_from_this()));
    OstrelServer::shareServer().loadUserFace(author, [weak, author](const Data& data) {
        const auto row = weak.lock();
        // The row may show another author's article by now.
        if (!row || decimalText(row->articleDictionary_["auth_id"].integer()) != author) return;
        if (auto face = UIImage::imageWithData(data)) row->authFaceImageView_->setImage(std::move(face));
    });
}

void UIArticleListTableViewCell::updateArticleNotification(const Value& object) {
    const Dictionary record(object);
    if (isSameArticle(record, articleDictionary_)) setArticleDictionary(record);
}

void UIArticleListTableViewCell::likeButtonAction() { actions_->like(); }

void UIArticleListTableViewCell::commentButtonAction() { actions_->comment(); }

void UIArticleListTableViewCell::shareButtonAction() { actions_->share(); }

void UIArticleListTableViewCell::loginNow() { actions_->login(); }

CGFloat UIArticleListTableViewCell::accessoryRoom() const { return ArticleListRowLayout::plainAccessoryRoom; }

CGFloat UIArticleListOwnerTableViewCell::accessoryRoom() const { return ArticleListRowLayout::ownersAccessoryRoom; }

void UIArticleListOwnerTableViewCell::initialise() {
    UIArticleListTableViewCell::initialise();
    setAccessoryType(UITableViewCellAccessoryType::detailDisclosureButton);
}

}  // namespace ostrel
