// The part of a collection view that moves items: under the finger and by the keyboard.

#include "platform/foundation/resources/PlatformText.h"
#include "platform/foundation/runloop/Clock.h"
#include "platform/uikit/collection/UICollectionViewImplementation.h"
#include "platform/uikit/view/UIDevice.h"
#include "platform/uikit/view/UIWindow.h"

namespace ostrel {

namespace {

constexpr double roomDuration = 0.25;
constexpr double liftDuration = 0.15;
constexpr CGFloat liftedScale = 1.05;
constexpr CGFloat edgeZone = 56;            // points from an edge in which the content scrolls
constexpr CGFloat fastestScroll = 720;      // points a second, at the edge itself
constexpr double longestScrollStep = 0.05;  // seconds of scrolling in one frame

}  // namespace

// Under the finger

bool UICollectionView::isInteractiveMovementUnderWay() const { return implementation_->movement.has_value(); }

bool UICollectionView::beginInteractiveMovementForItemAtIndexPath(NSIndexPath path) {
    Implementation& self = *implementation_;
    self.endMovement(false, true);
    self.layout();
    const auto found = self.cells.find(path);
    const auto source = self.dataSource.lock();
    if (found == self.cells.end() || !source || !source->collectionViewCanMoveItemAtIndexPath(*this, path))
        return false;
    const auto cell = found->second;
    self.movement = Implementation::Movement{.cell = cell, .from = path, .to = path.row};
    bringSubviewToFront(cell);
    cell->setShadow({UIColor::black().withAlpha(0.35f), 8, {0, 3}});
    // A view with a shadow needs an opaque background.
    cell->hasPlate_ = cell->backgroundColor().isClear();
    if (cell->hasPlate_) cell->setBackgroundColor(UIColor::systemBackground());
    UIView::animate(liftDuration, [&] { cell->setTransform(CGAffineTransform::scale(liftedScale, liftedScale)); });
    return true;
}

void UICollectionView::updateInteractiveMovementTargetPosition(CGPoint point) {
    Implementation& self = *implementation_;
    if (!self.movement || !window() || !std::isfinite(point.x) || !std::isfinite(point.y)) return;
    auto& movement = *self.movement;
    if (!std::exchange(movement.hasGrip, true)) {
        const CGPoint middle = movement.cell->center();
        if (movement.cell->frame().contains(point)) movement.grip = {middle.x - point.x, middle.y - point.y};
    }
    movement.finger = convertPointToView(point, nullptr);
    self.follow();
    self.scrollNearEdge();
}

void UICollectionView::endInteractiveMovement() { implementation_->endMovement(true, true); }

void UICollectionView::cancelInteractiveMovement() { implementation_->endMovement(false, true); }

NSIndexPath UICollectionView::Implementation::targetOf(NSIndexPath from, NSIndexPath proposed) const {
    const auto asked = delegate.lock();
    if (asked) {
        proposed =
            asked->collectionViewTargetIndexPathForMoveFromItemAtIndexPathToProposedIndexPath(view, from, proposed);
    }
    return proposed.section == from.section && exists(proposed) ? proposed : from;
}

/// Moves the cell to the finger, and the other cells out of its way.
void UICollectionView::Implementation::follow() {
    const CGPoint point = view.window()->convertPointToView(movement->finger, &view);
    movement->cell->setCenter({point.x + movement->grip.x, point.y + movement->grip.y});
    const Section& section = sections[static_cast<std::size_t>(movement->from.section)];
    const std::size_t position = section.flow.itemNear({point.x, point.y - section.top});
    const NSIndexPath target = targetOf(movement->from, {movement->from.section, static_cast<std::int64_t>(position)});
    if (target.row != movement->to) makeRoom(target.row);
}

void UICollectionView::Implementation::makeRoom(std::int64_t position) {
    const std::int64_t number = movement->from.section;
    Section& section = sections[static_cast<std::size_t>(number)];
    const Section before = section;
    std::vector<std::int64_t> oldPositions(section.sizes.size());
    for (std::int64_t row = 0; row < section.count(); ++row)
        oldPositions[static_cast<std::size_t>(row)] = positionOf({number, row});
    movement->to = position;
    const bool isUniform = std::all_of(section.sizes.begin(), section.sizes.end(),
                                       [&](CGSize size) { return size == section.sizes.front(); });
    if (!isUniform) arrange(section, number);
    Transition transition{.duration = roomDuration, .oldFrame = {}, .gone = {}, .settling = {}, .completion = {}};
    transition.oldFrame = [&](NSIndexPath path) -> std::optional<CGRect> {
        if (path.section != number) return frameOf(path);
        const auto old = static_cast<std::size_t>(oldPositions[static_cast<std::size_t>(path.row)]);
        return before.flow.frame(old).offsetBy(0, before.top);
    };
    layOutItems(&transition);
}

void UICollectionView::Implementation::endMovement(bool moves, bool animated) {
    if (!movement) return;
    const Movement ended = *std::exchange(movement, std::nullopt);
    const NSIndexPath to{ended.from.section, ended.to};
    Section& section = sections[static_cast<std::size_t>(ended.from.section)];
    arrange(section, ended.from.section);
    // The cell returns to the z-order of the others.
    const auto row = cells.find(ended.from);
    if (row != cells.end()) insertCellView(row->first, row->second);
    if (moves && to != ended.from) return commitMove(ended.from, to);
    if (!animated || !view.window()) {
        takeLiftBack(*ended.cell);
        putDown(ended.cell);
        view.setNeedsLayout();
        return;
    }
    Transition transition{
        .duration = roomDuration, .oldFrame = {}, .gone = {}, .settling = ended.cell, .completion = {}};
    transition.oldFrame = [this](NSIndexPath path) -> std::optional<CGRect> { return frameOf(path); };
    layOutItems(&transition);
}

/// The animated part of a lifted cell's appearance.
void UICollectionView::Implementation::takeLiftBack(UICollectionViewCell& cell) {
    cell.setTransform({});
    const bool isPlate = std::exchange(cell.hasPlate_, false);
    if (isPlate && cell.backgroundColor() == UIColor::systemBackground()) cell.setBackgroundColor({});
}

void UICollectionView::Implementation::putDown(const Cell& cell) {
    if (movement && movement->cell == cell) return;
    cell->setShadow({});
}

void UICollectionView::Implementation::commitMove(NSIndexPath from, NSIndexPath to) {
    const auto kept = view.shared_from_this();
    const auto source = dataSource.lock();
    const auto moved = cells.find(from);
    const Cell cell = moved == cells.end() ? nullptr : moved->second;
    // The cells take the order that an insertion gives; the data source is asked for each cell again at its new place.
    std::map<NSIndexPath, Cell> rearranged;
    for (const auto& [path, shown] : cells) {
        NSIndexPath place = path;
        if (path == from) {
            place = to;
        } else if (path.section == from.section && from.row < path.row && path.row <= to.row) {
            --place.row;
        } else if (path.section == from.section && to.row <= path.row && path.row < from.row) {
            ++place.row;
        }
        rearranged[place] = shown;
    }
    cells = std::move(rearranged);
    for (const auto& [path, shown] : cells) insertCellView(path, shown);
    if (source) source->collectionViewMoveItemAtIndexPathToIndexPath(view, from, to);
    const std::vector<std::int64_t> wanted = wantedCounts();
    std::vector<std::int64_t> present;
    for (const Section& section : sections) present.push_back(section.count());
    if (needsNumbers || batchDepth > 0 || isLayingOut || wanted != present) needsNumbers = true;
    Transition transition{.duration = roomDuration, .oldFrame = {}, .gone = {}, .settling = cell, .completion = {}};
    transition.oldFrame = [this](NSIndexPath path) -> std::optional<CGRect> { return frameOf(path); };
    if (needsNumbers || !view.window()) {
        if (cell) {
            takeLiftBack(*cell);
            putDown(cell);
        }
        return view.setNeedsLayout();
    }
    retireAll();
    askSizes();
    layOutItems(&transition);
}

// Scrolling under the finger

/// The scroll view that scrolls while the finger rests near its edge, and its speed: points a second, positive towards
/// the end.
std::pair<UIScrollView*, CGFloat> UICollectionView::Implementation::scrollWanted() const {
    CGRect seen = view.window()->bounds();
    std::vector<UIScrollView*> around;
    for (UIView* above = &view; above; above = above->superview()) {
        if (auto* const scroll = dynamic_cast<UIScrollView*>(above)) around.push_back(scroll);
    }
    for (UIScrollView* const scroll : around) {
        const CGRect visible = scroll->visibleRect().intersection(scroll->bounds().insetBy(scroll->contentInset()));
        const CGRect inWindow = scroll->convertRectToView(visible, nullptr).intersection(seen);
        if (inWindow.isEmpty()) continue;
        const CGFloat zone = std::min(edgeZone, inWindow.height() / 4);
        const CGFloat above = inWindow.minY() + zone - movement->finger.y;
        const CGFloat below = movement->finger.y - (inWindow.maxY() - zone);
        const CGFloat offset = scroll->contentOffset().y;
        if (above > 0 && offset > scroll->minimumOffsetY())
            return {scroll, -fastestScroll * std::min(1.0, above / zone)};
        if (below > 0 && offset < scroll->maximumOffsetY())
            return {scroll, fastestScroll * std::min(1.0, below / zone)};
    }
    return {nullptr, 0};
}

void UICollectionView::Implementation::scrollNearEdge() {
    if (movement->scrolls || !scrollWanted().first) return;
    movement->scrolls = true;
    movement->lastFrame = -1;
    view.window()->requestFrames([weak = view.weak_from_this()](double time) {
        const auto owner = std::static_pointer_cast<UICollectionView>(weak.lock());
        return owner && owner->implementation_->scrollStep(time);
    });
}

bool UICollectionView::Implementation::scrollStep(double time) {
    if (!movement || !movement->scrolls || !view.window()) return false;
    const auto [scroll, speed] = scrollWanted();
    if (!scroll) return movement->scrolls = false;
    const double seconds = movement->lastFrame < 0 ? 0 : std::clamp(time - movement->lastFrame, 0.0, longestScrollStep);
    movement->lastFrame = time;
    const CGFloat y =
        std::clamp(scroll->contentOffset().y + speed * seconds, scroll->minimumOffsetY(), scroll->maximumOffsetY());
    scroll->setContentOffset({scroll->contentOffset().x, y});
    if (movement) follow();
    return movement && movement->scrolls;
}

// By the keyboard

std::optional<NSIndexPath> UICollectionView::Implementation::neighbour(NSIndexPath path, UIKeyCode direction) const {
    NSIndexPath target = path;
    const auto& flow = sections[static_cast<std::size_t>(path.section)].flow;
    const auto row = static_cast<std::size_t>(path.row);
    switch (direction) {
    case UIKeyCode::left: --target.row; break;
    case UIKeyCode::right: ++target.row; break;
    case UIKeyCode::up: target.row = static_cast<std::int64_t>(flow.itemBeyond(row, -1)); break;
    case UIKeyCode::down: target.row = static_cast<std::int64_t>(flow.itemBeyond(row, 1)); break;
    default: return {};
    }
    return exists(target) ? std::optional(target) : std::nullopt;
}

/// Scrolls the enclosing scroll views until the rectangle is visible.
void UICollectionView::Implementation::reveal(const CGRect& rect) {
    for (UIView* above = &view; above; above = above->superview()) {
        auto* const scroll = dynamic_cast<UIScrollView*>(above);
        if (scroll) scroll->scrollRectToVisible(view.convertRectToView(rect, scroll), false);
    }
}

void UICollectionView::Implementation::focus(NSIndexPath path) {
    if (!exists(path) || !view.window()) return;
    reveal(frameOf(path));
    layout();
    const auto found = cells.find(path);
    if (found == cells.end()) return;
    UIView* target = found->second.get();
    const auto firstFocusable = [](const auto& self, UIView& in) -> UIView* {
        if (in.isHidden() || in.alpha() <= 0.01 || !in.isUserInteractionEnabled()) return nullptr;
        if (in.canBecomeFocused()) return &in;
        for (const auto& child : in.subviews()) {
            if (UIView* const hit = self(self, *child)) return hit;
        }
        return nullptr;
    };
    target = firstFocusable(firstFocusable, *target);
    if (target) view.window()->setFocusedView(target, true);
}

bool UICollectionView::Implementation::moveByKeyboard(NSIndexPath from, NSIndexPath proposed) {
    const auto source = dataSource.lock();
    if (!source || !source->collectionViewCanMoveItemAtIndexPath(view, from)) return false;
    const NSIndexPath to = targetOf(from, proposed);
    if (to == from) return true;
    commitMove(from, to);
    layout();
    focus(to);
    const auto shown = cells.find(to);
    const auto& announce = UIApplication::sharedApplication().announce;
    if (!announce || shown == cells.end()) return true;
    // The cell itself announces its new position to assistive programs.
    const std::string& name = shown->second->accessibility().label;
    const std::string place =
        std::to_string(to.row + 1) + " / " + std::to_string(view.numberOfItemsInSection(to.section));
    announce(platformText("Moved") + ": " + (name.empty() ? place : name));
    return true;
}

bool UICollectionView::Implementation::handleKey(const UIPress& press) {
    UIWindow* const window = view.window();
    // While text is edited, keys that the editor leaves unused do not operate the items.
    if (!window || window->firstResponder() || !window->focusedView() || movement || batchDepth > 0) return false;
    layout();
    const auto path = pathOf(window->focusedView());
    if (!path) return false;
    const bool itemHasFocus = cells.at(*path).get() == window->focusedView();
    const unsigned modifiers = press.key.modifiers;
    const auto asked = delegate.lock();
    switch (press.key.code) {
    case UIKeyCode::left:
    case UIKeyCode::right:
    case UIKeyCode::up:
    case UIKeyCode::down: {
        const auto target = neighbour(*path, press.key.code);
        if (modifiers & (modifierShift | modifierCommand)) return false;
        if (modifiers & (modifierAlternate | modifierControl)) return target && moveByKeyboard(*path, *target);
        if (!target) return false;
        focus(*target);
        return true;
    }
    case UIKeyCode::enter:
    case UIKeyCode::space:
        if (!itemHasFocus || press.isRepeat || modifiers || !asked) return false;
        asked->collectionViewDidSelectItemAtIndexPath(view, *path);
        return true;
    case UIKeyCode::deleteBackward:
    case UIKeyCode::deleteForward: {
        // Delete removes an item only when the item visibly has the focus.
        if (!itemHasFocus || !cells.at(*path)->showsFocus_ || press.isRepeat || modifiers || !asked) return false;
        const auto kept = view.shared_from_this();
        if (!asked->collectionViewRemoveItemAtIndexPath(view, *path)) return false;
        layout();
        const std::int64_t left = view.numberOfItemsInSection(path->section);
        if (left > 0) focus({path->section, std::min(path->row, left - 1)});
        return true;
    }
    default: return false;
    }
}

}  // namespace ostrel
