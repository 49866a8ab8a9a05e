#include "platform/foundation/runloop/NSLog.h"
#include "platform/uikit/table/UITableViewImplementation.h"
#include "platform/uikit/view/UIWindow.h"

namespace ostrel {

namespace {

constexpr double updateDuration = 0.3;

}  // namespace

void UITableView::beginUpdates() {
    // The data source still answers with the numbers of sections and rows before the change.
    if (implementation_->updateDepth++ == 0) implementation_->ensureNumbers();
}

void UITableView::endUpdates() {
    assert(implementation_->updateDepth > 0 && "endUpdates without beginUpdates");
    if (implementation_->updateDepth == 0 || --implementation_->updateDepth > 0) return;
    implementation_->apply(std::exchange(implementation_->batch, {}));
}

void UITableView::insertSections(std::int64_t first, std::int64_t count, UITableViewRowAnimation animation) {
    implementation_->updateDepth++;
    if (count > 0) implementation_->batch.inserts.push_back({first, count, animation});
    endUpdates();
}

void UITableView::deleteSections(std::int64_t first, std::int64_t count, UITableViewRowAnimation animation) {
    implementation_->updateDepth++;
    if (count > 0) implementation_->batch.deletes.push_back({first, count, animation});
    endUpdates();
}

void UITableView::reloadRow(NSIndexPath path, UITableViewRowAnimation animation) {
    implementation_->updateDepth++;
    implementation_->batch.reloads.push_back({path, animation});
    endUpdates();
}

void UITableView::reloadRowsAtIndexPaths(const std::vector<NSIndexPath>& paths, UITableViewRowAnimation animation) {
    implementation_->updateDepth++;
    for (const NSIndexPath path : paths) implementation_->batch.reloads.push_back({path, animation});
    endUpdates();
}

/// Where a section from before is afterwards; none when it is deleted. `inserts` are in ascending order.
std::optional<std::int64_t> UITableView::Implementation::sectionAfter(const Batch& update, std::int64_t section) {
    std::int64_t after = section;
    for (const Range& range : update.deletes) {
        if (section >= range.first && section < range.first + range.count) return {};
        if (range.first < section) after -= range.count;
    }
    for (const Range& range : update.inserts) {
        if (range.first <= after) after += range.count;
    }
    return after;
}

/// Whether the ranges of a sorted batch lie within the table and apart, and lead to the data source's number.
bool UITableView::Implementation::isConsistent(const Batch& update) const {
    std::int64_t count = heights.sections(), end = 0;
    for (const Range& range : update.deletes) {
        if (range.first < end || range.first + range.count > heights.sections()) return false;
        end = range.first + range.count;
        count -= range.count;
    }
    end = 0;
    for (const Range& range : update.inserts) {
        if (range.first < end || range.first > count) return false;
        end = range.first + range.count;
        count += range.count;
    }
    const std::int64_t wanted = table.dataSource_ ? table.dataSource_->numberOfSectionsInTableView(table) : 0;
    return count == wanted;
}

void UITableView::Implementation::apply(const Batch& unsorted) {
    if (isLayingOut || needsNumbers) {
        reloadsAfter = true;
        table.setNeedsLayout();
        return;
    }
    Batch update = unsorted;
    const auto byFirst = [](const Range& a, const Range& b) { return a.first < b.first; };
    std::sort(update.deletes.begin(), update.deletes.end(), byFirst);
    std::sort(update.inserts.begin(), update.inserts.end(), byFirst);
    if (!isConsistent(update)) {
        NSLog("Table view: the update does not lead from %@ sections to those of the data source; reloading.",
              std::to_string(heights.sections()));
        return reload();
    }

    const auto before = std::exchange(rows, {});
    prefetched.reset();
    keepPlace(before, update);
    for (auto range = update.deletes.rbegin(); range != update.deletes.rend(); ++range) {
        heights.eraseSections(range->first, range->count);
    }
    for (const Range& range : update.inserts) {
        if (uniformShape) {
            heights.insertSections(range.first, range.count, *uniformShape);
            continue;
        }
        for (std::int64_t i = 0; i < range.count; ++i)
            heights.insertSections(range.first + i, 1, shapeOf(range.first + i));
    }
    if (heights.sections() == 0) uniformShape.reset();
    if (!uniformShape && heights.sections() > 0 && table.delegate_ &&
        table.delegate_->tableViewHasUniformSections(table)) {
        uniformShape = shapeOf(0);
    }

    const bool changesSections = !update.deletes.empty() || !update.inserts.empty();
    if (changesSections && !keptPlace) {
        const CGFloat y = table.contentOffset().y - contentTop();
        if (const auto path = heights.rowAtOrAfter(y)) keptPlace = Anchor{*path, heights.row(*path).top - y};
    }

    Transition transition;
    transition.isAnimated = table.window() && laidOutWidth == table.rowWidth();
    const CGFloat offset = table.contentOffset().y;
    const CGRect visible{{0, offset}, table.frame().size};
    for (const auto& [path, row] : before) {
        const auto section = sectionAfter(update, path.section);
        const CGFloat screenY = row.cell->frame().minY() - offset;
        if (section) {
            rows[{*section, path.row}] = row;
            transition.oldScreenY[{*section, path.row}] = screenY;
            continue;
        }
        const auto range = std::find_if(update.deletes.begin(), update.deletes.end(), [&, at = path](const Range& r) {
            return at.section >= r.first && at.section < r.first + r.count;
        });
        const bool fades = transition.isAnimated && range->animation == UITableViewRowAnimation::fade;
        if (fades && row.cell->frame().intersects(visible)) {
            transition.gone.emplace_back(row.cell, screenY);
        } else {
            recycle(row.cell);
        }
    }
    for (const auto& [section, header] : std::exchange(headers, {})) {
        if (header) header->removeFromSuperview();
    }
    if (table.selected_) {
        const auto section = sectionAfter(update, table.selected_->section);
        table.selected_ = section ? std::optional(NSIndexPath{*section, table.selected_->row}) : std::nullopt;
    }
    for (const Range& range : update.inserts) {
        if (range.animation == UITableViewRowAnimation::fade) transition.inserted.push_back({range.first, range.count});
    }
    reloadRows(update, transition);
    // A row that stays may need another height: text under edit grows, a strip gets an item.
    for (auto& [path, row] : rows) row.isHeightStale = true;

    needsRows = true;
    if (!(table.frame().height() > 0) || !(table.frame().width() > 0)) {
        updateContentSize();
        for (const auto& [cell, screenY] : transition.gone) recycle(cell);
        return table.setNeedsLayout();
    }
    layOutRows(&transition);
    updateContentSize();
    settlesAfter = false;
    table.settle(false);
    if (table.contentOffset() != laidOutOffset) layOutRows(&transition);
    animate(transition);
    table.setNeedsLayout();
}

/// The topmost row on screen keeps its place; when it is deleted, the next one takes it. At the upper end of the
/// content nothing is kept: what is inserted there shows.
void UITableView::Implementation::keepPlace(const std::map<NSIndexPath, Row>& before, const Batch& update) {
    keptPlace.reset();
    if (table.contentOffset().y <= table.minimumOffsetY()) return;
    const CGFloat offset = table.contentOffset().y, bottom = offset + table.frame().height();
    std::optional<CGFloat> screenY;
    for (const auto& [path, row] : before) {
        const CGRect& frame = row.cell->frame();
        if (frame.maxY() <= offset || frame.minY() >= bottom) continue;
        if (!screenY) screenY = frame.minY() - offset;
        const auto section = sectionAfter(update, path.section);
        if (!section) continue;
        keptPlace = Anchor{{*section, path.row}, *screenY};
        break;
    }
}

void UITableView::Implementation::reloadRows(const Batch& update, Transition& transition) {
    for (const Reload& reload : update.reloads) {
        const auto section = sectionAfter(update, reload.path.section);
        if (!section) continue;
        const NSIndexPath path{*section, reload.path.row};
        if (!exists(path)) {
            NSLog("Table view: there is no row %@ of section %@ to reload.", std::to_string(path.row),
                  std::to_string(path.section));
            continue;
        }
        const auto shown = rows.find(path);
        if (shown == rows.end()) {
            if (const auto height = fixedHeight(path)) heights.setRowHeight(path, *height);
            continue;
        }
        retired.emplace_back(path, shown->second.cell);
        rows.erase(shown);
        if (reload.animation == UITableViewRowAnimation::fade) transition.reloaded.push_back(path);
    }
}

/// A row that was removed from the model stays a subview until the animation `change` has ended.
void UITableView::Implementation::leave(const std::shared_ptr<UITableViewCell>& cell,
                                        const std::function<void()>& change) {
    if (swipe && swipe->cell == cell) closeSwipe(false);
    detach(*cell);
    cell->setUserInteractionEnabled(false);
    leaving.push_back(cell);
    UIView::animate(updateDuration, change, [weak = table.weak_from_this(), cell](bool) {
        const auto owner = std::static_pointer_cast<UITableView>(weak.lock());
        if (!owner || std::erase(owner->implementation_->leaving, cell) == 0) return;
        cell->setAlpha(1);
        cell->setUserInteractionEnabled(true);
        owner->implementation_->recycle(cell);
    });
}

void UITableView::Implementation::animate(const Transition& transition) {
    const CGFloat offset = table.contentOffset().y;
    for (const auto& [cell, screenY] : transition.gone) {
        const CGRect frame = cell->frame();
        cell->setFrame({frame.minX(), screenY + offset, frame.width(), frame.height()});
        if (cell->superview() == &table) table.sendSubviewToBack(cell);
        leave(cell, [&cell = cell] { cell->setAlpha(0); });
    }
    for (const auto& [cell, frame] : transition.pushedOut) {
        leave(cell, [&cell = cell, &frame = frame] { cell->setFrame(frame); });
    }
    if (!transition.isAnimated) return;

    const auto isInserted = [&](NSIndexPath path) {
        return std::any_of(transition.inserted.begin(), transition.inserted.end(), [&](const auto& range) {
            return path.section >= range.first && path.section < range.first + range.second;
        });
    };
    std::vector<std::pair<UITableViewCell*, CGRect>> sliding;
    std::vector<UITableViewCell*> fading;
    // Rows that come on screen move with their neighbours.
    CGFloat displacement = 0;
    for (const auto& [path, row] : rows) {
        const CGRect frame = row.cell->frame();
        if (const auto old = transition.oldScreenY.find(path); old != transition.oldScreenY.end()) {
            displacement = old->second + offset - frame.minY();
            break;
        }
    }
    for (const auto& [path, row] : rows) {
        const CGRect frame = row.cell->frame();
        const auto old = transition.oldScreenY.find(path);
        const bool isReloaded =
            std::find(transition.reloaded.begin(), transition.reloaded.end(), path) != transition.reloaded.end();
        if (old != transition.oldScreenY.end()) displacement = old->second + offset - frame.minY();
        if (old == transition.oldScreenY.end() && isInserted(path)) {
            fading.push_back(row.cell.get());
        } else if (displacement != 0) {
            sliding.emplace_back(row.cell.get(), frame);
            row.cell->setFrame(frame.offsetBy(0, displacement));
        }
        if (isReloaded) fading.push_back(row.cell.get());
    }
    for (UITableViewCell* const cell : fading) cell->setAlpha(0);
    UIView::animate(updateDuration, [&] {
        for (const auto& [cell, frame] : sliding) cell->setFrame(frame);
        for (UITableViewCell* const cell : fading) cell->setAlpha(1);
    });
}

}  // namespace ostrel
