#include "article/list/UIArticleListTableViewController.h"

#include "article/detail/UIArticleViewController.h"
#include "article/editor/UIArticleEditViewController.h"
#include "article/list/UIArticleListTableViewCell.h"
#include "article/records/ArticleNotifications.h"
#include "article/resources/ArticleBundles.h"
#include "article/server/ArticleRequest.h"
#include "article/server/OstrelLoginViewController.h"
#include "platform/foundation/runloop/NSLog.h"
#include "platform/foundation/runloop/NSNotificationCenter.h"
#include "platform/foundation/runloop/RunLoop.h"
#include "platform/foundation/values/Text.h"
#include "platform/uikit/screens/UINavigationController.h"
#include "platform/uikit/view/UIDevice.h"

#include <utility>

namespace ostrel {

namespace {

/// A list that was loaded longer ago than this is loaded again when the screen appears, seconds.
constexpr double reloadAge = 180;
constexpr double refreshDelay = 0.1;
constexpr CGFloat headerHeight = 8, footerHeight = 1, tableFooterHeight = 50;

bool somebodyIsSignedIn() { return OstrelServer::shareServer().currentUser() != nullptr; }

}  // namespace

UIArticleListTableViewController::UIArticleListTableViewController()
    : UITableViewController(UITableViewStyle::insetGrouped) {}

UIArticleListTableViewController::~UIArticleListTableViewController() {
    NSNotificationCenter::defaultCenter().removeObserver(this);
}

void UIArticleListTableViewController::initialise() {
    loadOstrelArticleBundle();
    tintColor_ = UIColor::darkGray();
    refreshTitle_ = articleText("Loading...");

    auto footer = make<UIView>(CGRect(0, 0, view()->frame().width(), tableFooterHeight));
    footer->setBackgroundColor(UIColor::clear());
    tableView()->setTableFooterView(footer);
    tableView()->setDelegate(this);
    tableView()->setDataSource(this);
    tableView()->estimatedRowHeight = 88;
    tableView()->rowHeight = UITableViewAutomaticDimension;
}

std::weak_ptr<UIArticleListTableViewController> UIArticleListTableViewController::weakSelf() {
    return std::static_pointer_cast<UIArticleListTableViewController>(shared_from_this());
}

void UIArticleListTableViewController::setIsMySelfOnly(bool only) {
    isMySelfOnly_ = only;
    auto& center = NSNotificationCenter::defaultCenter();
    center.removeObserver(this);
    if (!only) return;
    center.addObserver(this, NOTIFICATION_KEY_NEW_ARTICLE,
                       [this](const NSNotification& n) { addedNewArticleNotification(n.object); });
    center.addObserver(this, NOTIFICATION_KEY_UPDATE,
                       [this](const NSNotification& n) { updateArticleNotification(n.object); });
    center.addObserver(this, Current_User_Changed_Notification_Name,
                       [this](const NSNotification&) { currentUserChanged(); });
}

void UIArticleListTableViewController::setTintColor(UIColor color) {
    tintColor_ = color;
    if (refreshControl()) refreshControl()->setTintColor(color);
}

void UIArticleListTableViewController::setRefreshTitle(std::string title) {
    refreshTitle_ = std::move(title);
    if (refreshControl()) refreshControl()->setAttributedTitle(refreshTitle_);
}

bool UIArticleListTableViewController::showsLoginPrompt() const { return isMySelfOnly_ && !somebodyIsSignedIn(); }

void UIArticleListTableViewController::viewDidAppear(bool animated) {
    UITableViewController::viewDidAppear(animated);
    if (showsLoginPrompt()) {
        showLoginPrompt();
        return;
    }
    auto control = make<UIRefreshControl>();
    control->setTintColor(tintColor_);
    control->setAttributedTitle(refreshTitle_);
    control->addTarget(
        [weak = weakSelf()] {
            if (const auto self = weak.lock()) self->handleRefresh();
        },
        UIControlEvent::valueChanged);
    if (UIDevice::currentDevice().userInterfaceIdiom() != UIUserInterfaceIdiom::mac) setRefreshControl(control);
    tableView()->setScrollEnabled(true);
    if (loginButton_) {
        loginButton_->setAlpha(0);
        loginLabel_->setAlpha(0);
        loginDetailLabel_->setAlpha(0);
    }
    if (!lastLoadDate_ || NSDate::now().timeIntervalSinceDate(*lastLoadDate_) > reloadAge) {
        reloadInformationFromServer(true);
    }
    if (loginButton_) loginButton_->setEnabled(!somebodyIsSignedIn());
}

void UIArticleListTableViewController::makeLoginPrompt() {
    if (loginButton_) return;
    loginButton_ = make<UIButton>(UIButton::Type::custom, CGRect(0, 0, 220, 100));
    loginButton_->setBackgroundColor({0.4f, 0.79f, 0.98f, 1}, UIControlState::normal);
    loginButton_->setBackgroundColor({0.33f, 0.58f, 0.71f, 1}, UIControlState::selected);
    loginButton_->setTitle(articleText("Write an Article"));
    loginButton_->setTitleColor(UIColor::white());
    loginButton_->setTitleColor({0.72f, 0.72f, 0.72f, 1}, UIControlState::selected);
    loginButton_->setTitleFont(UIFont::fontWithName("PingFangSC-Medium", 25));
    loginButton_->setClipsToBounds(true);
    loginButton_->setCornerRadius(50);
    loginButton_->setBorderColor(UIColor::clear());
    loginButton_->setBorderWidth(0);
    loginButton_->addTarget(
        [weak = weakSelf()] {
            if (const auto self = weak.lock()) self->loginNow();
        },
        UIControlEvent::touchUpInside);
    view()->addSubview(loginButton_);

    loginLabel_ = make<UILabel>(CGRect(0, 150, 300, 36));
    loginLabel_->setBackgroundColor(UIColor::clear());
    loginLabel_->setTextColor(UIColor::black());
    loginLabel_->setFont(UIFont::fontWithName("PingFangSC-Medium", 30));
    loginLabel_->setText(articleText("Write an Article"));
    loginLabel_->setTextAlignment(NSTextAlignment::center);
    view()->addSubview(loginLabel_);

    loginDetailLabel_ = make<UILabel>(CGRect(10, 150, 300, 28));
    loginDetailLabel_->setAdjustsFontSizeToFitWidth(true);
    loginDetailLabel_->setBackgroundColor(UIColor::clear());
    loginDetailLabel_->setTextColor({0.4f, 0.4f, 0.58f, 1});
    loginDetailLabel_->setFont(UIFont::fontWithName("PingFangSC-Regular", 24));
    loginDetailLabel_->setText(articleText("Share your own articles, media and more!"));
    loginDetailLabel_->setTextAlignment(NSTextAlignment::center);
    view()->addSubview(loginDetailLabel_);
}

void UIArticleListTableViewController::placeLoginPrompt() {
    const CGSize size = view()->frame().size;
    const CGSize button = loginButton_->frame().size;
    loginButton_->setFrame({{(size.width - button.width) * 0.5, size.height * 0.457}, button});
    loginLabel_->setFrame({0, size.height * 0.31, size.width, loginLabel_->frame().height()});
    loginDetailLabel_->setFrame({10, size.height * 0.37, size.width - 20, loginDetailLabel_->frame().height()});
}

void UIArticleListTableViewController::showLoginPrompt() {
    makeLoginPrompt();
    placeLoginPrompt();
    loginButton_->setEnabled(true);
    loginButton_->setAlpha(1);
    if (const auto& right = navigationItem().rightBarButtonItem()) right->setEnabled(false);
    articlesArray_.clear();
    loginLabel_->setAlpha(1);
    loginDetailLabel_->setAlpha(1);
    setRefreshControl(nullptr);
    tableView()->setScrollEnabled(false);
    tableView()->reloadData();
}

void UIArticleListTableViewController::viewDidLayoutSubviews() {
    UITableViewController::viewDidLayoutSubviews();
    if (loginButton_ && loginButton_->alpha() > 0) placeLoginPrompt();
}

void UIArticleListTableViewController::reloadInformationFromServer(bool animated) {
    if (presentedViewController()) return;
    lastLoadDate_ = NSDate::now();
    if (animated) {
        const auto control = refreshControl();
        const CGFloat height = control ? control->frame().height() : 0;
        tableView()->setContentOffset({0, tableView()->contentOffset().y - height});
        if (control) {
            control->beginRefreshing();
            control->sendActions(UIControlEvent::valueChanged);
        }
    }
    if (isMySelfOnly_) {
        auto add = std::make_shared<UIBarButtonItem>(UIBarButtonItem::SystemItem::add, [weak = weakSelf()] {
            if (const auto self = weak.lock()) self->write_article();
        });
        add->setEnabled(somebodyIsSignedIn());
        navigationItem().setRightBarButtonItem(add);
    }
    const auto request = isMySelfOnly_ ? ArticleRequest::listOwnArticles() : ArticleRequest::listArticles();
    request.send([weak = weakSelf(), animated](const ArticleAnswer& answer) {
        const auto self = weak.lock();
        if (!answer.succeeded()) {
            NSLog("request articles error:%@", answer.error);
            if (self && self->loadFailed) self->loadFailed(answer.error.value_or(""));
        } else if (self) {
            self->showFirstPage(*answer.result, animated);
        }
    });
}

void UIArticleListTableViewController::showFirstPage(const OstrelServerHtmlResultObject& result, bool animated) {
    lastLoadDate_ = NSDate::now();
    articlesArray_.assign(result.resultsArray().begin(), result.resultsArray().end());
    moreArticlesURLString_ = result.moreResultsURL();
    if (const auto control = refreshControl()) {
        if (animated) {
            tableView()->setContentOffset({0, tableView()->contentOffset().y + control->frame().height()});
        }
        control->endRefreshing();
    }
    // A request for the next page that failed leaves its row in the busy look, and the table reuses that row.
    if (const auto cell = loadMoreCell_.lock()) cell->stop();
    tableView()->reloadData();
}

void UIArticleListTableViewController::loadMoreInformationFromServer(
    const std::shared_ptr<UIArticleLoadMoreTableViewCell>& cell) {
    if (!moreArticlesURLString_) return;
    ArticleRequest::nextPage(*moreArticlesURLString_).send([weak = weakSelf(), cell](const ArticleAnswer& answer) {
        const auto self = weak.lock();
        if (!answer.succeeded()) {
            NSLog("request articles error:%@", answer.error);
            if (self && self->loadFailed) self->loadFailed(answer.error.value_or(""));
            return;
        }
        if (!self) return;
        const auto& records = answer.result->resultsArray();
        self->articlesArray_.insert(self->articlesArray_.end(), records.begin(), records.end());
        self->moreArticlesURLString_ = answer.result->moreResultsURL();
        if (cell) cell->stop();
        self->tableView()->reloadData();
    });
    if (cell) cell->start();
}

void UIArticleListTableViewController::handleRefresh() {
    RunLoop::main().performAfter(refreshDelay, [weak = weakSelf()] {
        if (const auto self = weak.lock()) self->reloadInformationFromServer(false);
    });
}

void UIArticleListTableViewController::loginNow() {
    loginController_ = OstrelLoginViewController::shareWithHandler(
        [weak = weakSelf()](bool succeeded, const std::shared_ptr<const OstrelServerUserObject>& user,
                            const std::string&) {
            const auto self = weak.lock();
            if (!self || !succeeded || !user || !self->loginController_) return;
            self->loginController_->dismissViewControllerAnimated(true, [weak] {
                if (const auto list = weak.lock()) list->reloadInformationFromServer(true);
            });
        });
    auto navigation = make<UINavigationController>(loginController_);
    navigation->modalPresentationStyle = UIModalPresentationStyle::overFullScreen;
    navigation->navigationBar()->setTranslucent(false);
    presentViewController(navigation, true);
}

void UIArticleListTableViewController::write_article() {
    if (!somebodyIsSignedIn()) return NSLog("NOT login can NOT new article.");
    if (auto* const navigation = navigationController())
        navigation->pushViewController(make<UIArticleEditViewController>(), true);
}

void UIArticleListTableViewController::openArticle(const Dictionary& record) {
    auto detail = make<UIArticleViewController>();
    detail->setArticleDictionary(record);
    if (auto* const navigation = navigationController()) navigation->pushViewController(detail, true);
}

void UIArticleListTableViewController::editArticleFor(NSIndexPath path) {
    const Dictionary* const record = articleAt(path);
    auto* const navigation = navigationController();
    if (!record || !navigation) return;
    auto editor = make<UIArticleEditViewController>();
    editor->setArticleDictionary(*record);
    navigation->pushViewController(editor, true);
}

void UIArticleListTableViewController::removeArticleFor(NSIndexPath path) {
    const Dictionary* found = articleAt(path);
    if (!found) return;
    tableView()->beginUpdates();
    const Dictionary record = *found;
    ArticleRequest::removeArticle(record["id"]).send([](const ArticleAnswer& answer) {
        NSLog("Remove Article Result:%@", answer.text);
    });
    for (std::size_t index = articlesArray_.size(); index-- > 0;) {
        if (!(articlesArray_[index] == record)) continue;
        articlesArray_.erase(articlesArray_.begin() + static_cast<std::ptrdiff_t>(index));
        tableView()->deleteSections(static_cast<std::int64_t>(index), 1, UITableViewRowAnimation::fade);
    }
    tableView()->endUpdates();
}

void UIArticleListTableViewController::currentUserChanged() {
    if (moreArticlesURLString_) {
        moreArticlesURLString_.reset();
        // Removes the load-more row now: `viewDidAppear` below loads the list only when it is old enough.
        tableView()->reloadData();
    }
    viewDidAppear(true);
}

void UIArticleListTableViewController::addedNewArticleNotification(const Value& object) {
    Dictionary record(object);
    if (!record) return;
    tableView()->beginUpdates();
    articlesArray_.push_front(std::move(record));
    tableView()->insertSections(0, 1, UITableViewRowAnimation::fade);
    tableView()->endUpdates();
}

void UIArticleListTableViewController::updateArticleNotification(const Value& object) {
    const Dictionary record(object);
    for (auto& article : articlesArray_) {
        if (!isSameArticle(article, record)) continue;
        article = record;
        return;
    }
}

bool UIArticleListTableViewController::pressesBegan(const UIPress& press) {
    if (press.key.characters == "f" || press.key.characters == "F") {
        handleRefresh();
        return true;
    }
    return UITableViewController::pressesBegan(press);
}

const Dictionary* UIArticleListTableViewController::articleAt(NSIndexPath path) const {
    const bool exists = path.section >= 0 && static_cast<std::size_t>(path.section) < articlesArray_.size();
    return exists ? &articlesArray_[static_cast<std::size_t>(path.section)] : nullptr;
}

std::int64_t UIArticleListTableViewController::numberOfSectionsInTableView(UITableView&) {
    return static_cast<std::int64_t>(articlesArray_.size()) + (moreArticlesURLString_ ? 1 : 0);
}

std::int64_t UIArticleListTableViewController::tableViewNumberOfRowsInSection(UITableView&, std::int64_t) { return 1; }

std::shared_ptr<UITableViewCell> UIArticleListTableViewController::tableViewCellForRowAtIndexPath(UITableView& table,
                                                                                                  NSIndexPath path) {
    const Dictionary* record = articleAt(path);
    if (!record) {
        static const std::string identifier = "load_more_cell_identifier";
        auto cell = std::static_pointer_cast<UIArticleLoadMoreTableViewCell>(table.dequeueReusableCell(identifier));
        if (!cell) cell = make<UIArticleLoadMoreTableViewCell>(UITableViewCellStyle::defaultStyle, identifier);
        loadMoreCell_ = cell;
        return cell;
    }
    const std::string identifier = "article_cell_identifier" + decimalText(path.row) + "_" + decimalText(path.section);
    auto cell = std::static_pointer_cast<UIArticleListTableViewCell>(table.dequeueReusableCell(identifier));
    if (!cell && isMySelfOnly_) {
        cell = make<UIArticleListOwnerTableViewCell>(UITableViewCellStyle::subtitle, identifier);
    } else if (!cell) {
        cell = make<UIArticleListTableViewCell>(UITableViewCellStyle::subtitle, identifier);
    }
    cell->setArticleDictionary(*record);
    return cell;
}

void UIArticleListTableViewController::tableViewPrefetchRowsAtIndexPaths(UITableView& table,
                                                                         const std::vector<NSIndexPath>& paths) {
    for (const NSIndexPath& path : paths) {
        const Dictionary* record = articleAt(path);
        if (record) UIArticleListTableViewCell::measureAhead(*record, table.rowWidth(), isMySelfOnly_);
    }
}

CGFloat UIArticleListTableViewController::tableViewHeightForHeaderInSection(UITableView&, std::int64_t) {
    return headerHeight;
}

CGFloat UIArticleListTableViewController::tableViewHeightForFooterInSection(UITableView&, std::int64_t) {
    return footerHeight;
}

bool UIArticleListTableViewController::tableViewHasUniformSections(UITableView&) { return true; }

void UIArticleListTableViewController::tableViewDidSelectRowAtIndexPath(UITableView& table, NSIndexPath path) {
    table.deselectRow(path, true);
    if (const Dictionary* record = articleAt(path)) {
        openArticle(*record);
    } else {
        loadMoreInformationFromServer(
            std::dynamic_pointer_cast<UIArticleLoadMoreTableViewCell>(table.cellForRowAtIndexPath(path)));
    }
}

void UIArticleListTableViewController::tableViewAccessoryButtonTappedForRowWithIndexPath(UITableView&,
                                                                                         NSIndexPath path) {
    editArticleFor(path);
}

bool UIArticleListTableViewController::tableViewCanEditRowAtIndexPath(UITableView&, NSIndexPath) {
    return isMySelfOnly_;
}

void UIArticleListTableViewController::tableViewCommitEditingStyle(UITableView&, UITableViewCellEditingStyle style,
                                                                   NSIndexPath path) {
    if (style == UITableViewCellEditingStyle::deleteStyle) removeArticleFor(path);
}

std::vector<UITableViewRowAction> UIArticleListTableViewController::tableViewEditActionsForRowAtIndexPath(UITableView&,
                                                                                                          NSIndexPath) {
    const auto action = [weak = weakSelf()](void (UIArticleListTableViewController::*perform)(NSIndexPath)) {
        return [weak, perform](NSIndexPath path) {
            if (const auto self = weak.lock()) ((*self).*perform)(path);
        };
    };
    return {{UITableViewRowAction::Style::normal, articleText("Edit"),
             action(&UIArticleListTableViewController::editArticleFor)},
            {UITableViewRowAction::Style::destructive, articleText("Delete"),
             action(&UIArticleListTableViewController::removeArticleFor)}};
}

}  // namespace ostrel
