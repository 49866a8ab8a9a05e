// The part of a collection view that asks for items, makes their cells and places them.

#include "platform/foundation/runloop/NSLog.h"
#include "platform/uikit/collection/UICollectionViewImplementation.h"
#include "platform/uikit/view/UIWindow.h"

#include <cassert>

namespace ostrel {

// Numbers and sizes

void UICollectionView::Implementation::askNumbers() {
    retireAll();
    needsNumbers = false;
    sections.clear();
    const auto source = dataSource.lock();
    const std::int64_t count = source ? std::max<std::int64_t>(0, source->numberOfSectionsInCollectionView(view)) : 0;
    for (std::int64_t number = 0; number < count; ++number) {
        Section& section = sections.emplace_back();
        section.sizes.resize(static_cast<std::size_t>(
            std::max<std::int64_t>(0, source->collectionViewNumberOfItemsInSection(view, number))));
    }
    askSizes();
}

void UICollectionView::Implementation::ensureNumbers() {
    if (needsNumbers && !isLayingOut && batchDepth == 0) askNumbers();
}

void UICollectionView::Implementation::askSizes() {
    needsSizes = false;
    laidOutWidth = view.frame().width();
    const auto asked = delegate.lock();
    const UICollectionViewFlowLayout& layout = *view.layout_;
    CGFloat y = 0;
    for (std::size_t i = 0; i < sections.size(); ++i) {
        Section& section = sections[i];
        const auto number = static_cast<std::int64_t>(i);
        section.metrics = {laidOutWidth, layout.sectionInset, layout.minimumLineSpacing,
                           layout.minimumInteritemSpacing};
        if (asked) {
            section.metrics.inset = asked->collectionViewLayoutInsetForSectionAtIndex(view, number);
            section.metrics.lineSpacing = asked->collectionViewLayoutMinimumLineSpacingForSectionAtIndex(view, number);
        }
        for (std::int64_t row = 0; row < section.count(); ++row) {
            section.sizes[static_cast<std::size_t>(row)] =
                asked ? asked->collectionViewLayoutSizeForItemAtIndexPath(view, {number, row}) : layout.itemSize;
        }
        section.top = y;
        arrange(section, number);
        y += section.flow.height();
    }
    view.setContentSize({laidOutWidth, y});
}

void UICollectionView::Implementation::arrange(Section& section, std::int64_t number) const {
    if (!movement || movement->from.section != number) {
        section.flow = FlowSection(section.metrics, section.sizes);
        return;
    }
    std::vector<CGSize> byPosition;
    byPosition.reserve(section.sizes.size());
    for (std::int64_t position = 0; position < section.count(); ++position)
        byPosition.push_back(section.sizes[static_cast<std::size_t>(rowAt(number, position))]);
    section.flow = FlowSection(section.metrics, byPosition);
}

bool UICollectionView::Implementation::exists(NSIndexPath path) const {
    return path.section >= 0 && path.section < static_cast<std::int64_t>(sections.size()) && path.row >= 0 &&
           path.row < sections[static_cast<std::size_t>(path.section)].count();
}

std::int64_t UICollectionView::Implementation::positionOf(NSIndexPath path) const {
    if (!movement || movement->from.section != path.section) return path.row;
    const std::int64_t from = movement->from.row, to = movement->to;
    if (path.row == from) return to;
    if (from < path.row && path.row <= to) return path.row - 1;
    if (to <= path.row && path.row < from) return path.row + 1;
    return path.row;
}

std::int64_t UICollectionView::Implementation::rowAt(std::int64_t section, std::int64_t position) const {
    if (!movement || movement->from.section != section) return position;
    const std::int64_t from = movement->from.row, to = movement->to;
    if (position == to) return from;
    if (from <= position && position < to) return position + 1;
    if (to < position && position <= from) return position - 1;
    return position;
}

CGRect UICollectionView::Implementation::frameOf(NSIndexPath path) const {
    const Section& section = sections[static_cast<std::size_t>(path.section)];
    return section.flow.frame(static_cast<std::size_t>(positionOf(path))).offsetBy(0, section.top);
}

std::optional<NSIndexPath> UICollectionView::Implementation::pathOf(const UIView* inCell) const {
    while (inCell && inCell->superview() != &view) inCell = inCell->superview();
    if (!inCell) return {};
    for (const auto& [path, cell] : cells) {
        if (cell.get() == inCell) return path;
    }
    return {};
}

// Cells

void UICollectionView::Implementation::retireAll() {
    for (const auto& [path, cell] : cells) retired.emplace_back(path, cell);
    cells.clear();
}

/// Resets the transform and the alpha that an animation may have left.
void UICollectionView::Implementation::resetLook(UICollectionViewCell& cell) {
    cell.setAlpha(1);
    takeLiftBack(cell);
    cell.setShadow({});
    cell.setUserInteractionEnabled(true);
}

void UICollectionView::Implementation::recycle(const Cell& cell) {
    cell->isInCollectionView_ = false;
    cell->removeFromSuperview();
    pool.push_front(cell);
    if (pool.size() > reusePoolLimit) pool.pop_back();
}

std::shared_ptr<UICollectionViewCell> UICollectionView::dequeueReusableCellWithReuseIdentifierForIndexPath(
    const std::string& identifier, NSIndexPath path) {
    using Cell = Implementation::Cell;
    Implementation& self = *implementation_;
    const CGRect frame = self.exists(path) ? self.frameOf(path) : CGRect({}, layout_->itemSize);
    const auto takeRetired = [&](auto fits) -> Cell {
        const auto found = std::find_if(self.retired.begin(), self.retired.end(), [&](const auto& entry) {
            return entry.second->reuseIdentifier_ == identifier && fits(entry.first);
        });
        if (found == self.retired.end()) return nullptr;
        const Cell cell = found->second;
        self.retired.erase(found);
        return cell;
    };
    if (Cell cell = takeRetired([&](NSIndexPath other) { return other == path; })) {
        // The cell keeps its place on screen, and moves from there.
        if (cell->frame().size != frame.size) cell->setFrame({cell->frame().origin, frame.size});
        cell->prepareForReuse();
        return cell;
    }
    Cell cell;
    const auto pooled = std::find_if(self.pool.begin(), self.pool.end(),
                                     [&](const Cell& other) { return other->reuseIdentifier_ == identifier; });
    if (pooled != self.pool.end()) {
        cell = *pooled;
        self.pool.erase(pooled);
    } else {
        cell = takeRetired([](NSIndexPath) { return true; });
    }
    if (cell) {
        Implementation::resetLook(*cell);
        cell->setFrame(frame);
        cell->prepareForReuse();
        return cell;
    }
    const auto maker = self.makers.find(identifier);
    if (maker == self.makers.end()) {
        NSLog("Collection view: no cell class is registered for \"%@\".", identifier);
        assert(false && "a cell class is registered before its cells are dequeued");
    }
    cell = maker != self.makers.end() ? maker->second(frame) : make<UICollectionViewCell>(frame);
    cell->reuseIdentifier_ = identifier;
    return cell;
}

UICollectionView::Implementation::Cell UICollectionView::Implementation::askForCell(NSIndexPath path) {
    const auto source = dataSource.lock();
    askedPath = path;
    Cell cell = source ? source->collectionViewCellForItemAtIndexPath(view, path) : nullptr;
    askedPath.reset();
    if (!cell) {
        NSLog("Collection view: the data source gave no cell for item %@ of section %@.", std::to_string(path.row),
              std::to_string(path.section));
        cell = make<UICollectionViewCell>(frameOf(path));
    }
    // The data source may hand out a cell of its own that already is in another place.
    std::erase_if(retired, [&](const auto& entry) { return entry.second == cell; });
    pool.remove(cell);
    if (std::erase(leaving, cell) > 0) resetLook(*cell);
    std::erase_if(cells, [&](const auto& entry) { return entry.second == cell; });
    return cell;
}

void UICollectionView::Implementation::ensureCell(NSIndexPath path, const Transition* transition,
                                                  std::vector<Cell>& appearing) {
    if (cells.contains(path)) return;
    const Cell cell = askForCell(path);
    const bool wasShown = cell->superview() == &view;
    cells[path] = cell;
    insertCellView(path, cell);
    cell->isInCollectionView_ = true;
    const CGRect frame = frameOf(path);
    if (!transition) {
        if (!wasShown) cell->setFrame(frame);
        return;
    }
    if (wasShown) return;
    const auto old = transition->oldFrame ? transition->oldFrame(path) : std::nullopt;
    cell->setFrame(old.value_or(frame));
    if (old || !view.window()) return;
    appearing.push_back(cell);
    cell->setAlpha(0);
    constexpr CGFloat appearingScale = 0.7;
    cell->setTransform(CGAffineTransform::scale(appearingScale, appearingScale));
}

/// Subviews stand in the order of the items, because the Tab key follows the order of subviews.
void UICollectionView::Implementation::insertCellView(NSIndexPath path, const Cell& cell) {
    const auto& all = view.subviews();
    const auto indexOf = [&](const Cell& other) {
        const auto found = std::find(all.begin(), all.end(), other);
        return found == all.end() ? -1 : found - all.begin();
    };
    const std::ptrdiff_t present = indexOf(cell);
    // A cell under the finger is in front of all others and is left out of the comparison.
    const auto indexWithout = [&](const Cell& other) -> std::ptrdiff_t {
        if (movement && movement->cell == other) return -1;
        const std::ptrdiff_t index = indexOf(other);
        return present >= 0 && present < index ? index - 1 : index;
    };
    const auto self = cells.find(path);
    std::ptrdiff_t target = -1;
    for (auto next = std::next(self); next != cells.end() && target < 0; ++next) target = indexWithout(next->second);
    for (auto previous = self; previous != cells.begin() && target < 0;) {
        --previous;
        const std::ptrdiff_t index = indexWithout(previous->second);
        if (index >= 0) target = index + 1;
    }
    target = std::max<std::ptrdiff_t>(0, target);
    if (present != target) view.insertSubview(cell, static_cast<std::size_t>(target));
}

bool UICollectionView::Implementation::holdsFocus(const UICollectionViewCell& cell) const {
    const UIWindow* const window = view.window();
    if (!window) return false;
    const UIView* const first = window->firstResponder();
    const UIView* const focused = window->focusedView();
    return (first && first->isDescendantOfView(cell)) || (focused && focused->isDescendantOfView(cell));
}

// Layout

void UICollectionView::Implementation::layout() {
    if (isLayingOut || batchDepth > 0 || !(view.frame().width() > 0)) return;
    if (needsNumbers) {
        askNumbers();
    } else if (needsSizes || laidOutWidth != view.frame().width()) {
        askSizes();
    }
    // Outside of a window nothing changes, because the view may return to one.
    if (view.window()) layOutItems();
}

void UICollectionView::Implementation::layOutItems(const Transition* transition) {
    isLayingOut = true;
    const CGRect seen = view.visibleRect();
    const CGFloat from = seen.minY() - overscan, to = seen.maxY() + overscan;
    std::vector<NSIndexPath> wanted;
    for (std::size_t i = 0; i < sections.size(); ++i) {
        const Section& section = sections[i];
        const auto range = section.flow.itemsBetween(from - section.top, to - section.top);
        for (std::size_t position = range.first; position < range.end; ++position) {
            const auto number = static_cast<std::int64_t>(i);
            wanted.push_back({number, rowAt(number, static_cast<std::int64_t>(position))});
        }
    }
    std::vector<Cell> appearing;
    for (const NSIndexPath path : wanted) ensureCell(path, transition, appearing);
    std::sort(wanted.begin(), wanted.end());
    for (auto entry = cells.begin(); entry != cells.end();) {
        const Cell cell = entry->second;
        const bool isMoved = movement && movement->cell == cell;
        const bool isGone = !exists(entry->first);
        if (!isGone &&
            (isMoved || holdsFocus(*cell) || std::binary_search(wanted.begin(), wanted.end(), entry->first))) {
            ++entry;
            continue;
        }
        entry = cells.erase(entry);
        recycle(cell);
    }
    for (const auto& [path, cell] : std::exchange(retired, {})) recycle(cell);
    isLayingOut = false;

    const auto place = [this] {
        for (const auto& [path, cell] : cells) {
            if (!movement || movement->cell != cell) cell->setFrame(frameOf(path));
        }
    };
    if (!transition) return place();
    UIView::animate(
        transition->duration,
        [&] {
            place();
            for (const Cell& cell : appearing) {
                cell->setAlpha(1);
                cell->setTransform({});
            }
            if (transition->settling) takeLiftBack(*transition->settling);
            constexpr CGFloat vanishingScale = 0.7;
            for (const Cell& cell : transition->gone) {
                cell->setAlpha(0);
                cell->setTransform(CGAffineTransform::scale(vanishingScale, vanishingScale));
            }
        },
        [weak = view.weak_from_this(), gone = transition->gone, settled = transition->settling,
         completion = transition->completion](bool finished) {
            const auto owner = std::static_pointer_cast<UICollectionView>(weak.lock());
            if (settled && owner) owner->implementation_->putDown(settled);
            for (const Cell& cell : gone) {
                if (!owner || std::erase(owner->implementation_->leaving, cell) == 0) continue;
                resetLook(*cell);
                owner->implementation_->recycle(cell);
            }
            if (completion) completion(finished);
        },
        UIViewAnimationCurve::easeOut);
}

}  // namespace ostrel
