#include "article/list/UIArticleListTableViewCell.h"

#include "article/detail/UICommentViewController.h"
#include "article/records/ArticleNotifications.h"
#include "article/records/NSStringForDate.h"
#include "article/resources/ArticleBundles.h"
#include "article/server/ArticleRequest.h"
#include "article/server/NSDjango.h"
#include "article/server/OstrelLoginViewController.h"
#include "platform/foundation/runloop/NSLog.h"
#include "platform/foundation/runloop/NSNotificationCenter.h"
#include "platform/foundation/values/Text.h"
#include "platform/uikit/screens/UIActivityViewController.h"
#include "platform/uikit/screens/UIAlertController.h"
#include "platform/uikit/screens/UINavigationController.h"
#include "platform/uikit/view/UIWindow.h"

#include <algorithm>
#include <utility>

namespace ostrel {

namespace {

constexpr CGRect faceFrame{20, 12, 56, 56};
constexpr CGFloat buttonWidth = 50, buttonHeight = 30;
/// From the buttons' upper edge to the row's lower one.
constexpr CGFloat buttonRoom = 35;
constexpr CGFloat smallestTextHeight = 24, largestTextHeight = 120;
/// Moves the text under the author's name; the text view itself begins 8 points left of it.
constexpr CGFloat textIndent = 8;

UIViewController* rootOfFirstWindow() {
    UIWindow* window = UIApplication::sharedApplication().firstWindow();
    return window ? window->rootViewController().get() : nullptr;
}

const UIFont& bodyFont() {
    static const UIFont font = UIFont::fontWithName("PingFangSC-Thin", 12);
    return font;
}

/// As many as decide the height: what lies below them is cut off in any case.
int bodyLines() {
    const CGFloat line = std::max(1.0, TextMeasurer::shared().lineHeight(bodyFont()));
    return static_cast<int>(largestTextHeight / line) + 1;
}

std::string bodyText(const Dictionary& record) {
    const std::string title = recordText(record, "title"), text = recordText(record, "text");
    if (title.empty()) return text;
    if (text.empty()) return title;
    return title + "\n" + replacingOccurrences(replacingOccurrences(text, "\r\n", " "), "\n", " ");
}

}  // namespace

UIArticleListTableViewCell::UIArticleListTableViewCell(UITableViewCellStyle style,
                                                       std::string reuseIdentifier)
    : UITableViewCell(style, std::move(reuseIdentifier)) {}

UIArticleListTableViewCell::~UIArticleListTableViewCell() {
    NSNotificationCenter::defaultCenter().removeObserver(this);
}

void UIArticleListTableViewCell::initialise() {
    UITableViewCell::initialise();
    setAccessoryType(UITableViewCellAccessoryType::disclosureIndicator);
    myBundle_ = openFrameworkArticleBundle();
    ostrelArticleBundle_ = openApplicationArticleBundle();
    const CGFloat width = frame().width();

    authFaceImageView_ = make<UIImageView>(faceFrame);
    authFaceImageView_->setContentMode(UIViewContentMode::scaleAspectFit);
    authFaceImageView_->setClipsToBounds(true);
    authFaceImageView_->setCornerRadius(28);
    authFaceImageView_->setImage(imageInBundle(ostrelArticleBundle_, "anonymousAvatar"));
    addSubview(authFaceImageView_);

    const CGFloat nameX = authFaceImageView_->frame().maxX() + 8;
    authNameLabel_ = make<UILabel>(CGRect(nameX, 12, std::max(0.0, width - nameX - 10), 18));
    authNameLabel_->setFont(UIFont::fontWithName("PingFangSC-Medium", 16));
    authNameLabel_->setAutoresizingMask(flexibleWidth);
    addSubview(authNameLabel_);

    detailTextLabel_ = make<UITextView>(CGRect(nameX, authNameLabel_->frame().maxY() + 2,
                                               std::max(0.0, width - nameX - accessoryRoom()), 36));
    detailTextLabel_->setUserInteractionEnabled(false);
    detailTextLabel_->setEditable(false);
    detailTextLabel_->setSelectable(false);
    detailTextLabel_->setScrollEnabled(false);
    detailTextLabel_->setShowsVerticalScrollIndicator(false);
    detailTextLabel_->setBackgroundColor(UIColor::clear());
    detailTextLabel_->setLineBreakMode(NSLineBreakMode::byWordWrapping);
    detailTextLabel_->setContentInset({0, textIndent, 0, 0});
    detailTextLabel_->setFont(bodyFont());
    addSubview(detailTextLabel_);
    addConstraint({.toItem = detailTextLabel_, .constant = detailTextLabel_->frame().minY() + buttonRoom});

    timeLabel_ = make<UILabel>(CGRect(10, authFaceImageView_->frame().maxY() + 2, 150, 18));
    timeLabel_->setTextAlignment(NSTextAlignment::left);
    timeLabel_->setTextColor({0.34f, 0.38f, 0.45f, 1});
    timeLabel_->setFont(UIFont::fontWithName("PingFangSC-Regular", 14));
    addSubview(timeLabel_);

    likeButton_ = makeButton("like", "--", "Like", &UIArticleListTableViewCell::likeButtonAction);
    commentButton_ = makeButton("comment", "", "Comment", &UIArticleListTableViewCell::commentButtonAction);
    shareButton_ = makeButton("share", "", "Share", &UIArticleListTableViewCell::shareButtonAction);
    place();

    // The handler is removed with the row, so it may hold it by address.
    NSNotificationCenter::defaultCenter().addObserver(
        this, NOTIFICATION_KEY_UPDATE,
        [this](const NSNotification& notification) { updateArticleNotification(notification.object); });
}

std::shared_ptr<UIButton> UIArticleListTableViewCell::makeButton(
    const char* image, std::string title, std::string accessibilityLabel,
    void (UIArticleListTableViewCell::*action)()) {
    auto button = make<UIButton>(UIButton::Type::custom, CGRect(0, 0, buttonWidth, buttonHeight));
    button->setTitleFont(UIFont::fontWithName("PingFangSC-Light", 12));
    button->setTitleColor(UIColor::black());
    button->titleLabel()->setTextAlignment(NSTextAlignment::left);
    // Three digits and more would not fit beside the symbol.
    button->titleLabel()->setAdjustsFontSizeToFitWidth(true);
    button->setBackgroundColor(UIColor::clear());
    button->setContentAlignment(NSTextAlignment::left);
    button->setContentInsets({0, textIndent, 0, 0});
    button->setTitle(std::move(title));
    if (auto picture = imageInBundle(myBundle_, image)) button->setImage(std::move(picture));
    button->setAccessibility(AccessibilityRole::button, std::move(accessibilityLabel));
    button->addTarget([this, action] { (this->*action)(); }, UIControlEvent::touchUpInside);
    addSubview(button);
    return button;
}

void UIArticleListTableViewCell::setFrame(const CGRect& frame) {
    const CGSize former = this->frame().size;
    UITableViewCell::setFrame(frame);
    // A table that scrolls gives its rows the frames they have.
    if (shareButton_ && this->frame().size != former) place();
}

void UIArticleListTableViewCell::place() {
    const CGFloat left = authFaceImageView_->frame().maxX();
    const CGFloat width = frame().width(), height = frame().height();
    detailTextLabel_->setFrame({left, authNameLabel_->frame().maxY() + 2,
                                std::max(0.0, width - left - accessoryRoom()),
                                detailTextLabel_->frame().height()});
    const CGFloat y = height - buttonRoom;
    likeButton_->setFrame({{left, y}, likeButton_->frame().size});
    commentButton_->setFrame({{left + (width - left) * 0.28, y}, commentButton_->frame().size});
    shareButton_->setFrame({{left + (width - left) * 0.56, y}, shareButton_->frame().size});
    showTime();
}

void UIArticleListTableViewCell::setArticleDictionary(Dictionary record) {
    // A row used again must not show the face of the author before.
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
    showTime();
    setAccessibility(AccessibilityRole::listItem, authNameLabel_->text() + ", " + detailTextLabel_->text());
    requestFace();
}

void UIArticleListTableViewCell::measureAhead(const Dictionary& record, CGFloat rowWidth, bool isOwners) {
    const CGFloat room = isOwners ? ownersRoom : plainRoom;
    TextMeasurer::shared().measureAhead(bodyText(record), bodyFont(),
                                        std::max(0.0, rowWidth - faceFrame.maxX() - room), bodyLines());
}

void UIArticleListTableViewCell::showBody() {
    const std::string text = bodyText(articleDictionary_);
    const CGRect old = detailTextLabel_->frame();
    const CGFloat measured =
        TextMeasurer::shared().measure(text, bodyFont(), old.width(), bodyLines()).size.height;
    detailTextLabel_->setText(text);
    detailTextLabel_->setFrame(
        {old.origin, {old.width(), std::clamp(measured * 1.04, smallestTextHeight, largestTextHeight)}});
}

void UIArticleListTableViewCell::showTime() {
    const CGRect name = authNameLabel_->frame();
    const CGFloat x = name.minX() +
                      TextMeasurer::shared().singleLineWidth(authNameLabel_->text(), authNameLabel_->font()) +
                      5;
    timeLabel_->setFrame({x, name.minY(), std::max(0.0, frame().width() - x), timeLabel_->frame().height()});
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

void UIArticleListTableViewCell::likeButtonAction() {
    const auto weak = std::weak_ptr(std::static_pointer_cast<UIArticleListTableViewCell>(shared_from_this()));
    const auto id = recordId(articleDictionary_);
    ArticleRequest::likeArticle(articleDictionary_["id"]).send([weak, id](const ArticleAnswer& answer) {
        if (!answer.succeeded()) return;
        const std::string& count = answer.result->resultString();
        NSLog("Liked num: %@", count);
        const auto row = weak.lock();
        // As with the avatar: the count belongs to the article that was liked.
        if (row && recordId(row->articleDictionary_) == id) row->likeButton_->setTitle(count);
    });
}

void UIArticleListTableViewCell::commentButtonAction() {
    UIViewController* root = rootOfFirstWindow();
    if (!root) return;
    if (OstrelServer::shareServer().currentUser()) {
        auto composer = make<UICommentViewController>();
        composer->setArticle_id(recordText(articleDictionary_, "id"));
        auto navigation = make<UINavigationController>(composer);
        navigation->modalPresentationStyle = UIModalPresentationStyle::fullScreen;
        return root->presentViewController(navigation, true);
    }
    auto alert =
        make<UIAlertController>("Prohibit", "Can't comment before login.", UIAlertController::Style::alert);
    const auto weak = std::weak_ptr(std::static_pointer_cast<UIArticleListTableViewCell>(shared_from_this()));
    alert->addAction({"Login", UIAlertAction::Style::destructive, [weak] {
                          if (const auto row = weak.lock()) row->loginNow();
                      }});
    alert->addAction({"Cancel", UIAlertAction::Style::cancel, {}});
    root->presentViewController(alert, true);
}

void UIArticleListTableViewCell::shareButtonAction() {
    const std::string url = recordText(articleDictionary_, "url");
    if (url.empty()) {
        NSLog("share url is nil");
        return;
    }
    UIViewController* root = rootOfFirstWindow();
    if (!root) return;
    auto sheet = make<UIActivityViewController>(url);
    const auto idiom = UIDevice::currentDevice().userInterfaceIdiom();
    if (idiom == UIUserInterfaceIdiom::pad) {
        sheet->modalPresentationStyle = UIModalPresentationStyle::popover;
        sheet->popoverPresentationController.sourceView = shareButton_;
        // In the presenting screen's coordinates, although the source view is the button.
        sheet->popoverPresentationController.sourceRect =
            convertRectToView(shareButton_->frame(), root->view().get());
    } else if (idiom == UIUserInterfaceIdiom::mac) {
        sheet->modalPresentationStyle = UIModalPresentationStyle::popover;
        sheet->popoverPresentationController.sourceView = shared_from_this();
        sheet->popoverPresentationController.sourceRect = shareButton_->frame();
    }
    root->presentViewController(sheet, true);
}

void UIArticleListTableViewCell::loginNow() {
    UIViewController* root = rootOfFirstWindow();
    if (!root) return;
    const auto weak = std::weak_ptr(std::static_pointer_cast<UIArticleListTableViewCell>(shared_from_this()));
    loginController_ = OstrelLoginViewController::shareWithHandler(
        [weak](bool succeeded, const std::shared_ptr<const OstrelServerUserObject>& user,
               const std::string&) {
            const auto row = weak.lock();
            if (row && succeeded && user && row->loginController_) {
                row->loginController_->dismissViewControllerAnimated(true);
            }
        });
    auto navigation = make<UINavigationController>(loginController_);
    navigation->modalPresentationStyle = UIModalPresentationStyle::overFullScreen;
    root->presentViewController(navigation, true);
}

void UIArticleListOwnerTableViewCell::initialise() {
    UIArticleListTableViewCell::initialise();
    setAccessoryType(UITableViewCellAccessoryType::detailDisclosureButton);
}

}  // namespace ostrel
