#include "article/detail/UIArticleViewController.h"

#include "article/detail/UIArticleCommentViewTableViewCell.h"
#include "article/detail/UIArticleVideoTableViewCell.h"
#include "article/detail/UIArticleViewImageTableViewCell.h"
#include "article/detail/UIArticleViewTextTableViewCell.h"
#include "article/detail/UIArticleViewTitleTableViewCell.h"
#include "article/records/ArticleNotifications.h"
#include "article/resources/ArticleBundles.h"
#include "article/server/ArticleRequest.h"
#include "platform/foundation/runloop/NSLog.h"
#include "platform/uikit/screens/UIActivityViewController.h"
#include "platform/uikit/screens/UINavigationController.h"
#include "platform/uikit/view/UIDevice.h"
#include "platform/uikit/view/UIWindow.h"

#include <utility>

namespace ostrel {

namespace {

enum Section : std::int64_t { titleSection, textSection, imageSection, videoSection, commentSection, sectionCount };

constexpr CGFloat titleHeight = 30;
constexpr CGFloat roomBelowBar = 10;

UIUserInterfaceIdiom idiom() { return UIDevice::currentDevice().userInterfaceIdiom(); }

std::int64_t countOf(const std::vector<Value>& records) { return static_cast<std::int64_t>(records.size()); }

Dictionary recordAt(const std::vector<Value>& records, std::int64_t row) {
    return row >= 0 && row < countOf(records) ? Dictionary(records[static_cast<std::size_t>(row)]) : Dictionary();
}

template <class Row>
std::shared_ptr<Row> reusableRow(UITableView& table, const std::string& identifier) {
    return std::static_pointer_cast<Row>(table.dequeueReusableCell(identifier));
}

template <class Row>
std::shared_ptr<Row> rowOf(UITableView& table, const std::string& identifier,
                           UITableViewCellStyle style = UITableViewCellStyle::defaultStyle) {
    auto row = reusableRow<Row>(table, identifier);
    return row ? row : make<Row>(style, identifier);
}

}  // namespace

/// A table in which the space bar plays or pauses a video instead of scrolling.
class UIArticleViewController::Table final : public UITableView {
public:
    Table(CGRect frame, UITableViewStyle style, std::weak_ptr<UIArticleViewController> owner)
        : UITableView(frame, style), owner_(std::move(owner)) {}

    bool pressesBegan(const UIPress& press) override {
        const auto owner = owner_.lock();
        const bool isSpace = press.key.code == UIKeyCode::space && press.key.modifiers == modifierNone;
        if (isSpace && owner && (press.isRepeat ? owner->videoForSpace().has_value() : owner->spaceWasPressed()))
            return true;
        return UITableView::pressesBegan(press);
    }

private:
    std::weak_ptr<UIArticleViewController> owner_;
};

UIArticleViewController::UIArticleViewController() { extendsUnderNavigationBar = true; }

UIArticleViewController::~UIArticleViewController() {
    if (!myTableView_) return;
    myTableView_->setDataSource(nullptr);
    myTableView_->setDelegate(nullptr);
}

std::weak_ptr<UIArticleViewController> UIArticleViewController::weakSelf() {
    return std::static_pointer_cast<UIArticleViewController>(shared_from_this());
}

// Construction

void UIArticleViewController::loadView() {
    // The view has its final size from the beginning, for `viewDidLoad` derives the table's size from it.
    UINavigationController* const navigation = navigationController();
    const CGSize size = navigation ? navigation->view()->frame().size : UIScreen::mainScreen().bounds().size;
    setView(make<UIView>(CGRect{{0, 0}, size}));
}

void UIArticleViewController::viewDidLoad() {
    UIViewController::viewDidLoad();
    navigationItem().setRightBarButtonItem(
        std::make_shared<UIBarButtonItem>(UIBarButtonItem::SystemItem::action, [weak = weakSelf()] {
            if (const auto self = weak.lock()) self->share();
        }));
    view()->setBackgroundColor(UIColor::white());

    UINavigationController* const navigation = navigationController();
    const CGFloat barBottom = navigation ? navigation->navigationBar()->frame().maxY() : 0;
    const auto top = static_cast<float>(barBottom + roomBelowBar);
    const CGFloat whole = navigation ? navigation->view()->frame().height() : view()->frame().height();
    myTableView_ =
        make<Table>(CGRect(0, top, view()->frame().width(), whole - top), UITableViewStyle::plain, weakSelf());
    myTableView_->setDelegate(this);
    myTableView_->setDataSource(this);
    myTableView_->allowsSelection = true;
    myTableView_->setAutoresizingMask(flexibleWidth | flexibleHeight);
    myTableView_->separatorNone = true;
    myTableView_->estimatedRowHeight = 44;
    myTableView_->rowHeight = UITableViewAutomaticDimension;

    auto control = make<UIRefreshControl>();
    control->setTintColor({1, 0, 0, 1});
    control->setAttributedTitle("Loading ...");
    control->addTarget(
        [weak = weakSelf()] {
            if (const auto self = weak.lock()) self->handleRefresh();
        },
        UIControlEvent::valueChanged);
    if (idiom() != UIUserInterfaceIdiom::mac) myTableView_->setRefreshControl(control);
    view()->addSubview(myTableView_);
}

void UIArticleViewController::viewDidAppear(bool animated) {
    UIViewController::viewDidAppear(animated);
    if (!resultDict_) loadArticleID(recordText(articleDictionary_, "id"));
}

void UIArticleViewController::viewWillDisappear(bool animated) {
    UIViewController::viewWillDisappear(animated);
    stopPlayedVideoExcept(-1);
}

// Loading

void UIArticleViewController::openArticleID(const std::string& articleId, const std::string&, const std::string&) {
    loadArticleID(articleId);
}

void UIArticleViewController::loadArticleID(const std::string& articleId) {
    view();
    const auto control = myTableView_->refreshControl();
    const CGFloat height = control ? control->frame().height() : 0;
    myTableView_->setContentOffset({0, myTableView_->contentOffset().y - height}, false);
    if (control) {
        control->beginRefreshing();
        control->sendActions(UIControlEvent::valueChanged);
    }
    ArticleRequest::loadArticle(articleId, ArticleRequest::LoadPurpose::reading)
        .send([weak = weakSelf()](const ArticleAnswer& answer) {
            const auto self = weak.lock();
            if (!self) return;
            if (!answer.error) return self->showArticle(answer.record);
            // The error is shown after a loading alert has been dismissed. There is no loading alert, so a
            // failed load shows and logs nothing. Kept on purpose: an alert would cover the screen of
            // somebody who can only go back and try again.
            if (!self->loadingAlert_) return;
            self->loadingAlert_->dismissViewControllerAnimated(true, [weak, error = answer.error] {
                NSLog("load article detail error:%@", error);
                const auto screen = weak.lock();
                if (!screen) return;
                auto alert = make<UIAlertController>("Error", *error, UIAlertController::Style::alert);
                alert->addAction({"OK", UIAlertAction::Style::defaultStyle, {}});
                screen->presentViewController(alert, true);
            });
        });
}

void UIArticleViewController::showArticle(const Dictionary& article) {
    resultDict_ = article;
    url_ = resultDict_["url"].text();
    imagesArray_ = resultDict_["images"].elements();
    videosArray_ = resultDict_["videos"].elements();
    commentsArray_ = resultDict_["comments"].elements();
    if (const auto control = myTableView_->refreshControl()) control->endRefreshing();
    myTableView_->setRefreshControl(nullptr);
    myTableView_->reloadData();
}

// What the user does

void UIArticleViewController::share() {
    if (!url_ || url_->empty()) return NSLog("share url is nil");
    auto sheet = make<UIActivityViewController>(*url_);
    if (idiom() == UIUserInterfaceIdiom::mac) {
        sheet->modalPresentationStyle = UIModalPresentationStyle::popover;
        sheet->popoverPresentationController.sourceView = view();
        sheet->popoverPresentationController.sourceRect = {view()->frame().width() - 10, 20, 30, 30};
    } else if (idiom() == UIUserInterfaceIdiom::pad) {
        sheet->modalPresentationStyle = UIModalPresentationStyle::popover;
        sheet->popoverPresentationController.barButtonItem = navigationItem().rightBarButtonItem();
    }
    presentViewController(sheet, true);
}

void UIArticleViewController::touchAuthor() {
    auto alert = make<UIAlertController>("Touch Author", "", UIAlertController::Style::alert);
    alert->addTextField([](UITextField& field) { field.setPlaceholder("Hello"); });
    alert->addAction(
        {"Touch", UIAlertAction::Style::destructive, [weak = weakSelf(), field = alert->textFields().front()] {
             const auto self = weak.lock();
             if (!self) return;
             OstrelServer::shareServer().notificationUserID(self->resultDict_["auth_id"], "Touch You", field->text());
         }});
    alert->addAction({"Cancel", UIAlertAction::Style::cancel, {}});
    // Each later step of a long press presents a further alert while the first one is shown. The platform
    // refuses that and logs a line, and the user sees one alert. Kept on purpose: the title row runs its
    // handler at every step of the gesture.
    presentViewController(alert, true);
}

void UIArticleViewController::stopPlayedVideoExcept(std::int64_t row) {
    for (std::int64_t i = 0; i < countOf(videosArray_); ++i) {
        if (i == row) continue;
        if (const auto video = shownVideo(i)) video->stop();
    }
}

std::shared_ptr<UIArticleVideoTableViewCell> UIArticleViewController::shownVideo(std::int64_t row) const {
    return std::static_pointer_cast<UIArticleVideoTableViewCell>(
        myTableView_->cellForRowAtIndexPath({videoSection, row}));
}

std::optional<NSIndexPath> UIArticleViewController::videoForSpace() const {
    const UIWindow* const window = myTableView_->window();
    UIView* view = window ? window->focusedView() : nullptr;
    while (view && view->superview() != myTableView_.get()) view = view->superview();
    const auto* const row = dynamic_cast<const UIArticleVideoTableViewCell*>(view);
    const auto path = row ? myTableView_->indexPathForCell(*row) : myTableView_->indexPathForSelectedRow();
    return path && path->section == videoSection ? path : std::nullopt;
}

bool UIArticleViewController::spaceWasPressed() {
    const auto path = videoForSpace();
    if (!path) return false;
    myTableView_->selectRow(*path, false);
    tableViewDidSelectRowAtIndexPath(*myTableView_, *path);
    return true;
}

// The table

std::int64_t UIArticleViewController::numberOfSectionsInTableView(UITableView&) { return sectionCount; }

std::int64_t UIArticleViewController::tableViewNumberOfRowsInSection(UITableView&, std::int64_t section) {
    switch (section) {
    case titleSection:
    case textSection: return 1;
    case imageSection: return countOf(imagesArray_);
    case videoSection: return countOf(videosArray_);
    case commentSection: return countOf(commentsArray_);
    default: return 0;
    }
}

std::string UIArticleViewController::tableViewTitleForHeaderInSection(UITableView&, std::int64_t section) {
    return section == commentSection ? articleText("Comments:") : std::string();
}

CGFloat UIArticleViewController::tableViewHeightForRowAtIndexPath(UITableView&, NSIndexPath path) {
    if (path.section == titleSection) return titleHeight;
    return path.section > titleSection && path.section < sectionCount ? UITableViewAutomaticDimension : 0;
}

std::shared_ptr<UITableViewCell> UIArticleViewController::tableViewCellForRowAtIndexPath(UITableView&,
                                                                                         NSIndexPath path) {
    switch (path.section) {
    case titleSection: return titleCell();
    case textSection: return textCell();
    case imageSection: return imageCell(path);
    case videoSection: return videoCell(path);
    case commentSection: return commentCell(path);
    default: return nullptr;
    }
}

std::shared_ptr<UITableViewCell> UIArticleViewController::titleCell() {
    static const std::string identifier = "titleCellIdentifier";
    auto row = reusableRow<UIArticleViewTitleTableViewCell>(*myTableView_, identifier);
    if (!row) {
        row = make<UIArticleViewTitleTableViewCell>(UITableViewCellStyle::defaultStyle, identifier);
        row->setLongPressHandler([weak = weakSelf()] {
            if (const auto self = weak.lock()) self->touchAuthor();
        });
    }
    row->setTitle(recordText(resultDict_, "title"));
    return row;
}

std::shared_ptr<UITableViewCell> UIArticleViewController::textCell() {
    static const std::string identifier = "textCellIdentifier";
    auto row = reusableRow<UIArticleViewTextTableViewCell>(*myTableView_, identifier);
    if (!row) {
        row = make<UIArticleViewTextTableViewCell>(UITableViewCellStyle::defaultStyle, identifier);
        // An empty text first: it gives the text view its final width, so that the article's text is measured
        // at the width at which it is shown.
        row->setText({});
    }
    row->setText(recordText(resultDict_, "text"));
    return row;
}

std::shared_ptr<UITableViewCell> UIArticleViewController::imageCell(NSIndexPath path) {
    static const std::string identifier = "imageCellIdentifier";
    auto row = rowOf<UIArticleViewImageTableViewCell>(*myTableView_, identifier);
    row->setImageDictionary(recordAt(imagesArray_, path.row));
    return row;
}

std::shared_ptr<UITableViewCell> UIArticleViewController::videoCell(NSIndexPath path) {
    static const std::string identifier = "videoCellIdentifier";
    auto row = rowOf<UIArticleVideoTableViewCell>(*myTableView_, identifier);
    row->setVideoDictionary(recordAt(videosArray_, path.row));
    return row;
}

std::shared_ptr<UITableViewCell> UIArticleViewController::commentCell(NSIndexPath path) {
    static const std::string identifier = "commentCellIdentifier";
    auto row = rowOf<UIArticleCommentViewTableViewCell>(*myTableView_, identifier, UITableViewCellStyle::subtitle);
    row->setCommentDictionary(recordAt(commentsArray_, path.row));
    return row;
}

void UIArticleViewController::tableViewDidSelectRowAtIndexPath(UITableView&, NSIndexPath path) {
    if (path.section == videoSection) {
        stopPlayedVideoExcept(path.row);
        if (const auto video = shownVideo(path.row)) video->playOrPause();
    } else if (path.section == imageSection) {
        NSLog("TODO open image.");
    }
}

}  // namespace ostrel
