#include "reader/screens/ReaderLogController.h"

#include "platform/foundation/runloop/RunLoop.h"
#include "platform/uikit/view/UIDevice.h"
#include "platform/uikit/view/UIWindow.h"
#include "reader/screens/ReaderLogCell.h"
#include "reader/services/ReaderText.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace ostrel {

namespace {

constexpr CGFloat margin = ReaderLogCell::margin, toolbarHeight = 44;
/// How long the button says that the log was copied.
constexpr double copiedSeconds = 1.5;
/// A user who scrolls is still at the end of the log when the last line is at most this far away, in points.
constexpr CGFloat endSlack = 24;

}  // namespace

ReaderLogController::ReaderLogController(std::shared_ptr<ReaderLog> log, std::function<void()> close)
    : log_(std::move(log)), close_(std::move(close)) {}

ReaderLogController::~ReaderLogController() {
    log_->removeObserver(this);
    if (table_) {
        table_->setDataSource(nullptr);
        table_->setDelegate(nullptr);
    }
    if (copiedTimer_) RunLoop::main().cancel(copiedTimer_);
}

std::weak_ptr<ReaderLogController> ReaderLogController::weakSelf() {
    return std::static_pointer_cast<ReaderLogController>(shared_from_this());
}

bool ReaderLogController::cancelOperation() {
    if (!close_) return UIViewController::cancelOperation();
    close_();
    return true;
}

void ReaderLogController::viewDidLoad() {
    setTitle(readerText("Log"));
    view()->setBackgroundColor(UIColor::systemBackground());
    if (close_) {
        navigationItem().setLeftBarButtonItem(
            std::make_shared<UIBarButtonItem>(readerText("Close"), UIBarButtonItem::Style::plain, close_));
    }
    table_ = make<UITableView>(CGRect{}, UITableViewStyle::plain);
    table_->separatorNone = true;
    table_->allowsSelection = false;
    table_->estimatedRowHeight = ReaderLogCell::leastHeight;
    table_->setScrollViewDelegate(std::static_pointer_cast<ReaderLogController>(shared_from_this()));
    table_->setDataSource(this);
    table_->setDelegate(this);
    view()->addSubview(table_);
    hint_ = make<UILabel>();
    hint_->setFont(UIFont::system(15));
    hint_->setTextColor(UIColor::secondaryLabel());
    hint_->setTextAlignment(NSTextAlignment::center);
    hint_->setText(readerText("Nothing has been logged."));
    view()->addSubview(hint_);
    toolbar_ = make<UIView>();
    toolbar_->setSurface(true);
    toolbar_->setBackgroundColor(UIColor::rgb(0xFBFBFD));
    toolbarLine_ = make<UIView>();
    toolbarLine_->setBackgroundColor(UIColor::separator());
    toolbar_->addSubview(toolbarLine_);
    view()->addSubview(toolbar_);
    follow_ = addButton("Follow", &ReaderLogController::toggleFollowing);
    copy_ = addButton("Copy All", &ReaderLogController::copyAll);
    clear_ = addButton("Clear", &ReaderLogController::clear);
    log_->addObserver(this, [weak = weakSelf()] {
        if (const auto self = weak.lock()) self->reload();
    });
    setFollowing(true);
    reload();
}

std::shared_ptr<UIButton> ReaderLogController::addButton(const char* title, void (ReaderLogController::*action)()) {
    auto button = make<UIButton>(UIButton::Type::system);
    button->setTitle(readerText(title));
    button->setTitleFont(UIFont::system(15));
    button->setAccessibility(AccessibilityRole::button, readerText(title));
    button->addTarget(
        [weak = weakSelf(), action] {
            if (const auto self = weak.lock()) ((*self).*action)();
        },
        UIControlEvent::touchUpInside);
    toolbar_->addSubview(button);
    return button;
}

void ReaderLogController::viewDidAppear(bool animated) {
    UIViewController::viewDidAppear(animated);
    if (isFollowing_) scrollToEnd();
}

void ReaderLogController::viewDidLayoutSubviews() {
    UIViewController::viewDidLayoutSubviews();
    if (!table_) return;
    const CGSize size = view()->bounds().size;
    const UIWindow* const window = view()->window();
    const CGFloat safe = window ? window->safeAreaInsets().bottom : 0;
    const CGFloat top = std::max(0.0, size.height - toolbarHeight - safe);
    table_->setFrame({0, 0, size.width, top});
    toolbar_->setFrame({0, top, size.width, size.height - top});
    toolbarLine_->setFrame({0, 0, size.width, 0.5});
    hint_->setFrame({margin, std::floor(top * 0.4), std::max(0.0, size.width - 2 * margin), 24});
    CGFloat left = margin - 8;
    for (const auto& button : {follow_, copy_, clear_}) {
        const CGFloat width = std::ceil(button->sizeThatFits({}).width) + 20;
        const bool isLast = button == clear_;
        button->setFrame({isLast ? size.width - margin + 8 - width : left, 0, width, toolbarHeight});
        left += width + 8;
    }
    if (isFollowing_) scrollToEnd();
}

void ReaderLogController::reload() {
    lines_ = log_->lines();
    hint_->setHidden(!lines_.empty());
    copy_->setEnabled(!lines_.empty());
    clear_->setEnabled(!lines_.empty());
    table_->reloadData();
    if (isFollowing_) scrollToEnd();
}

void ReaderLogController::scrollToEnd() {
    if (lines_.empty() || !view()->window()) return;
    isScrolling_ = true;
    // The first pass shows the last rows, which replaces their estimated heights by measured ones and so moves the end;
    // the second pass scrolls to the end after that.
    for (int pass = 0; pass < 2; ++pass) {
        view()->layoutIfNeeded();
        table_->scrollToRowAtIndexPath({0, static_cast<std::int64_t>(lines_.size()) - 1}, false);
        table_->setContentOffset({0, table_->maximumOffsetY()});
    }
    isScrolling_ = false;
}

void ReaderLogController::setFollowing(bool following) {
    isFollowing_ = following;
    Path tick;
    tick.moveTo(5, 12.5).lineTo(10, 17.5).lineTo(19, 7);
    follow_->setImage(following ? std::make_shared<const UIImage>(std::move(tick), CGSize{16, 16}) : nullptr);
    follow_->setAccessibility(AccessibilityRole::button,
                              readerText("Follow") + ", " + readerText(following ? "on" : "off"));
    if (following) scrollToEnd();
    viewDidLayoutSubviews();
}

void ReaderLogController::toggleFollowing() { setFollowing(!isFollowing_); }

void ReaderLogController::scrollViewDidScroll(UIScrollView& scroll) {
    if (isScrolling_ || !isFollowing_) return;
    if (scroll.contentOffset().y < scroll.maximumOffsetY() - endSlack) setFollowing(false);
}

void ReaderLogController::copyAll() {
    const auto& set = UIApplication::sharedApplication().setPasteboardText;
    if (!set) return;
    set(log_->text());
    copy_->setTitle(readerText("Copied"));
    viewDidLayoutSubviews();
    if (copiedTimer_) RunLoop::main().cancel(copiedTimer_);
    copiedTimer_ = RunLoop::main().performAfter(copiedSeconds, [weak = weakSelf()] {
        const auto self = weak.lock();
        if (!self) return;
        self->copiedTimer_ = 0;
        self->copy_->setTitle(readerText("Copy All"));
        self->viewDidLayoutSubviews();
    });
}

void ReaderLogController::clear() { log_->clear(); }

std::int64_t ReaderLogController::tableViewNumberOfRowsInSection(UITableView&, std::int64_t) {
    return static_cast<std::int64_t>(lines_.size());
}

CGFloat ReaderLogController::tableViewHeightForRowAtIndexPath(UITableView&, NSIndexPath) {
    return UITableViewAutomaticDimension;
}

std::shared_ptr<UITableViewCell> ReaderLogController::tableViewCellForRowAtIndexPath(UITableView& table,
                                                                                     NSIndexPath path) {
    static const std::string identifier = "line";
    auto cell = std::static_pointer_cast<ReaderLogCell>(table.dequeueReusableCell(identifier));
    if (!cell) cell = make<ReaderLogCell>(UITableViewCellStyle::defaultStyle, identifier);
    cell->show(lines_.at(static_cast<std::size_t>(path.row)));
    return cell;
}

}  // namespace ostrel
