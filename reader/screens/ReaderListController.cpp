#include "reader/screens/ReaderListController.h"

#include "article/server/OstrelServer.h"
#include "platform/foundation/runloop/RunLoop.h"
#include "platform/uikit/screens/UINavigationController.h"
#include "reader/services/ReaderText.h"

namespace ostrel {

namespace {
/// A list is empty before its first answer, too: the sentence waits until the answer had time to come.
constexpr double secondsUntilHint = 0.8;
constexpr CGFloat hintWidth = 300;
}  // namespace

ReaderListController::~ReaderListController() {
    if (timer_) RunLoop::main().cancel(timer_);
}

bool ReaderListController::isCovered() const {
    const UINavigationController* const navigation = navigationController();
    return navigation && navigation->topViewController().get() != this;
}

void ReaderListController::viewWillAppear(bool animated) {
    UIArticleListTableViewController::viewWillAppear(animated);
    if (coverChanged) coverChanged();
}

void ReaderListController::viewWillDisappear(bool animated) {
    UIArticleListTableViewController::viewWillDisappear(animated);
    if (coverChanged) coverChanged();
}

std::int64_t ReaderListController::numberOfSectionsInTableView(UITableView& table) {
    const std::int64_t sections = UIArticleListTableViewController::numberOfSectionsInTableView(table);
    if (hint_) hint_->setHidden(true);
    if (sections == 0) scheduleHint();
    return sections;
}

void ReaderListController::scheduleHint() {
    if (timer_) return;
    const auto weak = weak_from_this();
    timer_ = RunLoop::main().performAfter(secondsUntilHint, [this, weak] {
        if (weak.expired()) return;
        timer_ = 0;
        showHint();
    });
}

void ReaderListController::showHint() {
    const bool isPrompt = isMySelfOnly() && !OstrelServer::shareServer().currentUser();
    if (!isViewLoaded() || !articlesArray().empty() || isPrompt || !lastLoadDate()) return;
    if (!hint_) {
        hint_ = make<UILabel>();
        hint_->setFont(UIFont::system(15));
        hint_->setTextColor(UIColor::secondaryLabel());
        hint_->setNumberOfLines(0);
        hint_->setTextAlignment(NSTextAlignment::center);
        tableView()->addSubview(hint_);
    }
    hint_->setText(readerText(isMySelfOnly() ? "You have not written an article yet." : "There are no articles yet."));
    hint_->setHidden(false);
    placeHint();
}

void ReaderListController::viewDidLayoutSubviews() {
    UIArticleListTableViewController::viewDidLayoutSubviews();
    if (hint_) placeHint();
}

void ReaderListController::placeHint() {
    const CGSize size = tableView()->frame().size;
    const CGFloat height = hint_->sizeThatFits({hintWidth, size.height}).height;
    hint_->setFrame({(size.width - hintWidth) / 2, size.height * 0.38, hintWidth, height});
}

}  // namespace ostrel
