// The part of a collection view that shows insertions and deletions.

#include "platform/foundation/runloop/NSLog.h"
#include "platform/foundation/runloop/RunLoop.h"
#include "platform/uikit/collection/UICollectionViewImplementation.h"

#include <cassert>

namespace ostrel {

namespace {

constexpr double itemUpdateDuration = 0.3;

/// The rows of one section that are in `sorted`.
std::vector<std::int64_t> rowsOf(const std::vector<NSIndexPath>& sorted, std::int64_t section) {
    std::vector<std::int64_t> rows;
    for (const NSIndexPath path : sorted) {
        if (path.section == section) rows.push_back(path.row);
    }
    return rows;
}

/// For every row from before its row afterwards; -1: deleted.
std::vector<std::int64_t> rowsAfter(std::int64_t count, const std::vector<std::int64_t>& deleted,
                                    const std::vector<std::int64_t>& inserted) {
    std::vector<std::int64_t> after(static_cast<std::size_t>(count), -1);
    auto nextDeleted = deleted.begin();
    auto nextInserted = inserted.begin();
    std::int64_t to = 0;
    for (std::int64_t row = 0; row < count; ++row) {
        if (nextDeleted != deleted.end() && *nextDeleted == row) {
            ++nextDeleted;
            continue;
        }
        for (; nextInserted != inserted.end() && *nextInserted == to; ++nextInserted) ++to;
        after[static_cast<std::size_t>(row)] = to++;
    }
    return after;
}

}  // namespace

void UICollectionView::performBatchUpdates(const std::function<void()>& updates,
                                           std::function<void(bool finished)> completion) {
    const auto kept = shared_from_this();
    Implementation& self = *implementation_;
    // The data source still answers with the numbers of sections and items before the change.
    self.ensureNumbers();
    ++self.batchDepth;
    if (completion) self.batch.completions.push_back(std::move(completion));
    if (updates) updates();
    if (--self.batchDepth == 0) self.apply(std::exchange(self.batch, {}));
}

void UICollectionView::insertItemsAtIndexPaths(const std::vector<NSIndexPath>& paths) {
    auto& inserts = implementation_->batch.inserts;
    inserts.insert(inserts.end(), paths.begin(), paths.end());
    if (implementation_->batchDepth == 0) implementation_->apply(std::exchange(implementation_->batch, {}));
}

void UICollectionView::deleteItemsAtIndexPaths(const std::vector<NSIndexPath>& paths) {
    auto& deletes = implementation_->batch.deletes;
    deletes.insert(deletes.end(), paths.begin(), paths.end());
    if (implementation_->batchDepth == 0) implementation_->apply(std::exchange(implementation_->batch, {}));
}

std::vector<std::int64_t> UICollectionView::Implementation::wantedCounts() const {
    std::vector<std::int64_t> counts;
    const auto source = dataSource.lock();
    const std::int64_t count = source ? source->numberOfSectionsInCollectionView(view) : 0;
    for (std::int64_t section = 0; section < count; ++section) {
        counts.push_back(std::max<std::int64_t>(0, source->collectionViewNumberOfItemsInSection(view, section)));
    }
    return counts;
}

/// Null when the sorted batch leads from the items there are to those of the data source.
const char* UICollectionView::Implementation::faultOf(const Batch& update,
                                                      const std::vector<std::int64_t>& wanted) const {
    if (wanted.size() != sections.size()) return "a batch update does not change the number of sections";
    std::vector<std::int64_t> counts;
    for (const Section& section : sections) counts.push_back(section.count());
    const auto isOnce = [](const std::vector<NSIndexPath>& paths) {
        return std::adjacent_find(paths.begin(), paths.end()) == paths.end();
    };
    if (!isOnce(update.deletes) || !isOnce(update.inserts)) return "an item is inserted or deleted once";
    for (const NSIndexPath path : update.deletes) {
        if (!exists(path)) return "what is deleted was there before the update";
        --counts[static_cast<std::size_t>(path.section)];
    }
    for (const NSIndexPath path : update.inserts) {
        const bool isThere = path.section >= 0 && path.section < static_cast<std::int64_t>(wanted.size()) &&
                             path.row >= 0 && path.row < wanted[static_cast<std::size_t>(path.section)];
        if (!isThere) return "what is inserted is there after the update";
        ++counts[static_cast<std::size_t>(path.section)];
    }
    return counts == wanted ? nullptr
                            : "the items after an update are those before it, less the deleted, and the inserted";
}

/// Runs in a later turn of the run loop, because the caller is still in the middle of its update.
void UICollectionView::Implementation::completeLater(std::vector<std::function<void(bool)>> completions,
                                                     bool finished) {
    if (completions.empty() || !RunLoop::hasMain()) return;
    RunLoop::main().perform([completions = std::move(completions), finished] {
        for (const auto& completion : completions) completion(finished);
    });
}

void UICollectionView::Implementation::apply(Batch update) {
    endMovement(false, false);
    // The next layout shows the present state of the data source in any case.
    if (needsNumbers || isLayingOut) {
        needsNumbers = true;
        view.setNeedsLayout();
        return completeLater(std::move(update.completions), true);
    }
    std::sort(update.deletes.begin(), update.deletes.end());
    std::sort(update.inserts.begin(), update.inserts.end());
    const std::vector<std::int64_t> wanted = wantedCounts();
    if (const char* const fault = faultOf(update, wanted)) {
        NSLog("Collection view: %@; reloading.", fault);
        assert(false && "a batch update leads from the items before it to those of the data source");
        view.reloadData();
        return completeLater(std::move(update.completions), true);
    }

    const std::vector<Section> before = std::exchange(sections, {});
    std::map<NSIndexPath, CGRect> oldFrames;  // of items that stay, by new path
    std::map<NSIndexPath, Cell> shown = std::exchange(cells, {});
    Transition transition{.duration = itemUpdateDuration, .oldFrame = {}, .gone = {}, .settling = {}, .completion = {}};
    for (std::size_t i = 0; i < before.size(); ++i) {
        const auto number = static_cast<std::int64_t>(i);
        const Section& old = before[i];
        Section& section = sections.emplace_back();
        section.sizes.resize(static_cast<std::size_t>(wanted[i]));
        const auto after = rowsAfter(old.count(), rowsOf(update.deletes, number), rowsOf(update.inserts, number));
        for (std::int64_t row = 0; row < old.count(); ++row) {
            const std::int64_t to = after[static_cast<std::size_t>(row)];
            const auto cell = shown.find({number, row});
            if (to >= 0) {
                oldFrames.emplace(NSIndexPath{number, to},
                                  old.flow.frame(static_cast<std::size_t>(row)).offsetBy(0, old.top));
                if (cell != shown.end()) cells[{number, to}] = cell->second;
            } else if (cell != shown.end()) {
                transition.gone.push_back(cell->second);
            }
        }
    }
    askSizes();
    for (const Cell& cell : transition.gone) {
        cell->isInCollectionView_ = false;
        cell->setUserInteractionEnabled(false);
        view.sendSubviewToBack(cell);
        leaving.push_back(cell);
    }
    if (!view.window() || !(view.frame().width() > 0)) {
        for (const Cell& cell : std::exchange(transition.gone, {})) {
            std::erase(leaving, cell);
            resetLook(*cell);
            recycle(cell);
        }
        view.setNeedsLayout();
        return completeLater(std::move(update.completions), true);
    }
    transition.oldFrame = [&oldFrames](NSIndexPath path) -> std::optional<CGRect> {
        const auto found = oldFrames.find(path);
        return found == oldFrames.end() ? std::nullopt : std::optional(found->second);
    };
    transition.completion = [completions = std::move(update.completions)](bool finished) {
        for (const auto& completion : completions) completion(finished);
    };
    layOutItems(&transition);
    view.setNeedsLayout();
}

}  // namespace ostrel
