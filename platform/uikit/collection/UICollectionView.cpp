#include "platform/uikit/collection/UICollectionView.h"

#include "platform/uikit/collection/UICollectionViewImplementation.h"

namespace ostrel {

namespace {

constexpr CGFloat cellTapTolerance = 10;

}  // namespace

CGSize UICollectionViewDelegateFlowLayout::collectionViewLayoutSizeForItemAtIndexPath(UICollectionView& view,
                                                                                      NSIndexPath) {
    return view.collectionViewLayout()->itemSize;
}

CGFloat UICollectionViewDelegateFlowLayout::collectionViewLayoutMinimumLineSpacingForSectionAtIndex(
    UICollectionView& view, std::int64_t) {
    return view.collectionViewLayout()->minimumLineSpacing;
}

UIEdgeInsets UICollectionViewDelegateFlowLayout::collectionViewLayoutInsetForSectionAtIndex(UICollectionView& view,
                                                                                            std::int64_t) {
    return view.collectionViewLayout()->sectionInset;
}

UICollectionView::UICollectionView(CGRect frame, std::shared_ptr<UICollectionViewFlowLayout> layout)
    : UIScrollView(frame),
      layout_(layout ? std::move(layout) : std::make_shared<UICollectionViewFlowLayout>()),
      implementation_(std::make_unique<Implementation>(*this)) {
    setObservesVisibleRect();
    setDefaultAccessibility(AccessibilityRole::list, {});
}

UICollectionView::~UICollectionView() {
    for (const auto& [path, cell] : implementation_->cells) cell->isInCollectionView_ = false;
}

void UICollectionView::initialise() { UIScrollView::initialise(); }

void UICollectionView::setDataSource(std::weak_ptr<UICollectionViewDataSource> source) {
    implementation_->dataSource = std::move(source);
    reloadData();
}

void UICollectionView::setDelegate(std::weak_ptr<UICollectionViewDelegateFlowLayout> delegate) {
    implementation_->delegate = std::move(delegate);
    invalidateLayout();
}

void UICollectionView::registerCell(const std::string& identifier, CellMaker maker) {
    implementation_->makers[identifier] = std::move(maker);
}

void UICollectionView::reloadData() {
    implementation_->endMovement(false, false);
    implementation_->needsNumbers = true;
    setNeedsLayout();
}

void UICollectionView::invalidateLayout() {
    implementation_->needsSizes = true;
    setNeedsLayout();
}

std::int64_t UICollectionView::numberOfSections() const {
    implementation_->ensureNumbers();
    return static_cast<std::int64_t>(implementation_->sections.size());
}

std::int64_t UICollectionView::numberOfItemsInSection(std::int64_t section) const {
    const std::int64_t count = numberOfSections();
    return section >= 0 && section < count ? implementation_->sections[static_cast<std::size_t>(section)].count() : 0;
}

std::optional<NSIndexPath> UICollectionView::indexPathForItemAtPoint(CGPoint point) const {
    const Implementation& self = *implementation_;
    for (std::int64_t number = 0, count = numberOfSections(); number < count; ++number) {
        const auto& section = self.sections[static_cast<std::size_t>(number)];
        const std::size_t position = section.flow.itemAt({point.x, point.y - section.top});
        if (position < section.flow.count())
            return NSIndexPath{number, self.rowAt(number, static_cast<std::int64_t>(position))};
    }
    return {};
}

std::optional<NSIndexPath> UICollectionView::indexPathForCell(const UICollectionViewCell& cell) const {
    return implementation_->pathOf(&cell);
}

std::shared_ptr<UICollectionViewCell> UICollectionView::cellForItemAtIndexPath(NSIndexPath path) const {
    implementation_->layout();
    const auto found = implementation_->cells.find(path);
    return found == implementation_->cells.end() ? nullptr : found->second;
}

std::vector<std::shared_ptr<UICollectionViewCell>> UICollectionView::visibleCells() const {
    implementation_->layout();
    const CGRect visible = visibleRect();
    std::vector<std::shared_ptr<UICollectionViewCell>> result;
    for (const auto& [path, cell] : implementation_->cells) {
        if (cell->frame().intersects(visible)) result.push_back(cell);
    }
    return result;
}

CGRect UICollectionView::frameForItemAtIndexPath(NSIndexPath path) const {
    implementation_->ensureNumbers();
    if (implementation_->needsSizes && !implementation_->isLayingOut) implementation_->askSizes();
    return implementation_->exists(path) ? implementation_->frameOf(path) : CGRect{};
}

std::size_t UICollectionView::liveCellCount() const {
    const Implementation& self = *implementation_;
    return self.cells.size() + self.pool.size() + self.retired.size() + self.leaving.size();
}

void UICollectionView::setFrame(const CGRect& newFrame) {
    const CGFloat width = frame().width();
    UIScrollView::setFrame(newFrame);
    if (frame().width() != width) implementation_->needsSizes = true;
}

void UICollectionView::layoutSubviews() {
    UIScrollView::layoutSubviews();
    implementation_->layout();
}

void UICollectionView::didMoveToWindow() {
    UIScrollView::didMoveToWindow();
    if (!window()) implementation_->endMovement(false, false);
}

void UICollectionView::contentOffsetDidChange() {
    UIScrollView::contentOffsetDidChange();
    setNeedsLayout();
}

void UICollectionView::visibleRectDidChange() {
    setNeedsLayout();
    // A lifted cell stays under the finger, whichever scroll view moves.
    if (implementation_->movement && implementation_->movement->hasGrip) implementation_->follow();
}

void UICollectionView::touchesBegan(const UITouch& touch) {
    const auto path = isDecelerating() ? std::nullopt : implementation_->pathOf(touch.view.lock().get());
    implementation_->pressed.reset();
    if (path && touch.button == UIButtonMask::primary) implementation_->pressed = implementation_->cells.at(*path);
    UIScrollView::touchesBegan(touch);
}

void UICollectionView::touchesEnded(const UITouch& touch) {
    const auto kept = shared_from_this();
    const auto cell = std::exchange(implementation_->pressed, {}).lock();
    UIScrollView::touchesEnded(touch);
    const CGFloat way = std::hypot(touch.location.x - touch.startLocation.x, touch.location.y - touch.startLocation.y);
    const auto path = cell ? implementation_->pathOf(cell.get()) : std::nullopt;
    const auto delegate = implementation_->delegate.lock();
    if (path && delegate && way <= cellTapTolerance) delegate->collectionViewDidSelectItemAtIndexPath(*this, *path);
}

bool UICollectionView::pressesBegan(const UIPress& press) {
    const auto kept = shared_from_this();
    return implementation_->handleKey(press) || UIScrollView::pressesBegan(press);
}

}  // namespace ostrel
