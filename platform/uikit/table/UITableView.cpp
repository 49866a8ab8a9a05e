#include "platform/uikit/table/UITableView.h"

#include "platform/uikit/table/UITableViewImplementation.h"
#include "platform/uikit/view/UIWindow.h"

namespace ostrel {

CGFloat UITableViewDelegate::tableViewHeightForRowAtIndexPath(UITableView& table, NSIndexPath) {
    return table.rowHeight;
}

UITableView::UITableView(CGRect frame, UITableViewStyle style)
    : UIScrollView(frame), style_(style), implementation_(std::make_unique<Implementation>(*this)) {
    setBackgroundColor(style == UITableViewStyle::plain ? UIColor::systemBackground() : UIColor::groupedBackground());
    setDefaultAccessibility(AccessibilityRole::list, {});
}

UITableView::~UITableView() {
    if (refreshControl_) refreshControl_->refreshingDidChange = nullptr;
    const auto release = [this](const std::shared_ptr<UITableViewCell>& cell) { implementation_->detach(*cell); };
    for (const auto& [path, row] : implementation_->rows) release(row.cell);
    for (const auto& [path, cell] : implementation_->retired) release(cell);
    if (implementation_->swipe) implementation_->swipe->actions->chosen = nullptr;
}

void UITableView::initialise() {
    UIScrollView::initialise();
    implementation_->initialiseGestures();
}

// Data

void UITableView::setDataSource(UITableViewDataSource* source) {
    if (dataSource_ == source) return;
    dataSource_ = source;
    implementation_->needsNumbers = true;
    setNeedsLayout();
}

void UITableView::setDelegate(UITableViewDelegate* delegate) {
    if (delegate_ == delegate) return;
    delegate_ = delegate;
    implementation_->needsNumbers = true;
    setNeedsLayout();
}

void UITableView::reloadData() { implementation_->reload(); }

std::int64_t UITableView::numberOfSections() const {
    implementation_->ensureNumbers();
    return implementation_->heights.sections();
}

std::int64_t UITableView::numberOfRowsInSection(std::int64_t section) const {
    const std::int64_t count = numberOfSections();
    return section >= 0 && section < count ? implementation_->heights.section(section).rows : 0;
}

// Rows

std::shared_ptr<UITableViewCell> UITableView::cellForRowAtIndexPath(NSIndexPath path) const {
    Implementation& self = *implementation_;
    if (self.needsRows || self.needsNumbers) self.layout();
    const auto row = self.rows.find(path);
    return row == self.rows.end() ? nullptr : row->second.cell;
}

std::optional<NSIndexPath> UITableView::indexPathForCell(const UITableViewCell& cell) const {
    return implementation_->pathOf(&cell);
}

std::optional<NSIndexPath> UITableView::indexPathForRowAtPoint(CGPoint point) const {
    if (numberOfSections() == 0) return {};
    const auto& heights = implementation_->heights;
    const CGFloat y = point.y - implementation_->contentTop(), x = implementation_->rowX();
    if (y < 0 || y >= heights.total() || point.x < x || point.x >= x + rowWidth()) return {};
    const auto hit = heights.at(y);
    return hit.part == RowHeights::Part::row ? std::optional(hit.path) : std::nullopt;
}

std::vector<NSIndexPath> UITableView::indexPathsForVisibleRows() const {
    if (implementation_->needsRows || implementation_->needsNumbers) implementation_->layout();
    std::vector<NSIndexPath> paths;
    for (const auto& [path, row] : implementation_->rows) {
        const CGRect& frame = row.cell->frame();
        if (frame.minY() < bounds().maxY() && frame.maxY() > bounds().minY()) paths.push_back(path);
    }
    return paths;
}

CGRect UITableView::rectForRowAtIndexPath(NSIndexPath path) const {
    implementation_->ensureNumbers();
    return implementation_->exists(path) ? implementation_->rowFrame(path) : CGRect{};
}

void UITableView::scrollToRowAtIndexPath(NSIndexPath path, bool animated) {
    layoutIfNeeded();
    if (!implementation_->exists(path)) return;
    if (animated) return scrollRectToVisible(implementation_->rowFrame(path), true);
    // The heights of the row and of its neighbours are known only after these rows were made.
    constexpr int attempts = 4;
    for (int i = 0; i < attempts && implementation_->exists(path); ++i) {
        const CGPoint before = contentOffset();
        scrollRectToVisible(implementation_->rowFrame(path), false);
        layoutIfNeeded();
        if (contentOffset() == before) break;
    }
}

std::size_t UITableView::liveCellCount() const {
    const Implementation& self = *implementation_;
    return self.rows.size() + self.pool.size() + self.retired.size() + self.leaving.size();
}

// Parts

void UITableView::setTableFooterView(std::shared_ptr<UIView> view) {
    if (view == footerView_) return;
    if (footerView_) footerView_->removeFromSuperview();
    footerView_ = std::move(view);
    if (footerView_) addSubview(footerView_);
    implementation_->updateContentSize();
}

void UITableView::setTableHeaderView(std::shared_ptr<UIView> view) {
    if (view == headerView_) return;
    if (headerView_) headerView_->removeFromSuperview();
    headerView_ = std::move(view);
    if (headerView_) addSubview(headerView_);
    implementation_->needsRows = true;
    implementation_->updateContentSize();
    setNeedsLayout();
}

void UITableView::setRefreshControl(std::shared_ptr<UIRefreshControl> control) {
    if (control == refreshControl_) return;
    if (refreshControl_) {
        refreshControl_->refreshingDidChange = nullptr;
        refreshControl_->removeFromSuperview();
    }
    refreshControl_ = std::move(control);
    if (refreshControl_) {
        refreshControl_->setFrame({0, -UIRefreshControl::height, frame().width(), UIRefreshControl::height});
        insertSubview(refreshControl_, 0);
        refreshControl_->refreshingDidChange = [this] {
            settle(true);
            implementation_->updateRefresh();
        };
    }
    settle(true);
    implementation_->updateRefresh();
}

CGFloat UITableView::extraTopInset() const {
    return refreshControl_ && refreshControl_->isRefreshing() ? UIRefreshControl::height : 0;
}

void UITableView::Implementation::updateRefresh() {
    const auto control = table.refreshControl_;
    if (!control) return;
    const CGFloat pulled = (-table.contentInset().top - table.contentOffset().y) / UIRefreshControl::height;
    control->setPullProgress(pulled);
    if (pulled < 1 || !table.isDragging() || control->isRefreshing() || refreshFired) return;
    refreshFired = true;
    control->beginRefreshing();
    control->sendActions(UIControlEvent::valueChanged);
}

// Scrolling

void UITableView::setFrame(const CGRect& newFrame) {
    const CGSize old = frame().size;
    UIScrollView::setFrame(newFrame);
    if (frame().size != old) implementation_->needsRows = true;
}

void UITableView::layoutSubviews() {
    UIScrollView::layoutSubviews();
    implementation_->layout();
}

void UITableView::didMoveToWindow() {
    UIScrollView::didMoveToWindow();
    if (window()) return;
    implementation_->endPress(false);
    implementation_->closeSwipe(false);
}

void UITableView::contentOffsetDidChange() {
    UIScrollView::contentOffsetDidChange();
    if (implementation_->swipe) implementation_->closeSwipe(true);
    implementation_->updateRefresh();
    setNeedsLayout();
}

void UITableView::willBeginDragging() {
    implementation_->refreshFired = false;
    implementation_->endPress(true);
    implementation_->closeSwipe(true);
}

void UITableView::didEndDragging(bool willDecelerate) {
    UIScrollView::didEndDragging(willDecelerate);
    setNeedsLayout();
}

}  // namespace ostrel
