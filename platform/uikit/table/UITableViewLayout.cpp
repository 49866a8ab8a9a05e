#include "platform/foundation/runloop/NSLog.h"
#include "platform/uikit/table/UITableViewImplementation.h"
#include "platform/uikit/view/UIDevice.h"
#include "platform/uikit/view/UIWindow.h"

namespace ostrel {

namespace {

constexpr CGFloat phoneMargin = 16, wideMargin = 20;
constexpr CGFloat cardRadius = 10;
constexpr CGFloat plainHeader = 28, groupedHeader = 38, groupedGap = 18;
constexpr CGFloat headerInset = 16;
constexpr double flingLookahead = 0.3;      // seconds of the present velocity for which rows are made
constexpr int rowsMadeAhead = 2;            // in one layout, beyond the overscan
constexpr std::size_t mostPrefetched = 64;  // rows named to the data source in one layout

}  // namespace

// Numbers

CGFloat UITableView::rowWidth() const {
    const CGFloat margin = implementation_ ? implementation_->rowX() : 0;
    return std::max(0.0, frame().width() - 2 * margin);
}

CGFloat UITableView::Implementation::rowX() const {
    if (table.style_ != UITableViewStyle::insetGrouped) return 0;
    return UIDevice::currentDevice().userInterfaceIdiom() == UIUserInterfaceIdiom::phone ? phoneMargin : wideMargin;
}

std::optional<CGFloat> UITableView::Implementation::fixedHeight(NSIndexPath path) const {
    const CGFloat height =
        table.delegate_ ? table.delegate_->tableViewHeightForRowAtIndexPath(table, path) : table.rowHeight;
    return height < 0 ? std::nullopt : std::optional(height);
}

RowHeights::Section UITableView::Implementation::shapeOf(std::int64_t section) const {
    RowHeights::Section shape;
    shape.rows = std::max<std::int64_t>(0, table.dataSource_->tableViewNumberOfRowsInSection(table, section));
    shape.estimate = std::max(1.0, table.estimatedRowHeight);
    shape.header = table.delegate_ ? table.delegate_->tableViewHeightForHeaderInSection(table, section) : -1;
    shape.footer = table.delegate_ ? table.delegate_->tableViewHeightForFooterInSection(table, section) : -1;
    if (shape.header < 0) {
        const bool hasTitle = !table.dataSource_->tableViewTitleForHeaderInSection(table, section).empty();
        const bool isPlain = table.style_ == UITableViewStyle::plain;
        shape.header = isPlain ? (hasTitle ? plainHeader : 0) : (hasTitle ? groupedHeader : groupedGap);
    }
    shape.footer = std::max(0.0, shape.footer);
    for (std::int64_t row = 0; row < shape.rows; ++row) {
        const auto height = fixedHeight({section, row});
        if (!height && shape.known.empty()) continue;
        if (shape.known.empty()) shape.known.assign(static_cast<std::size_t>(shape.rows), -1);
        shape.known[static_cast<std::size_t>(row)] = height.value_or(-1);
    }
    return shape;
}

void UITableView::Implementation::askNumbers() {
    needsNumbers = false;
    // A known height becomes the estimate of the same row, so that the same offset shows the same rows.
    heights.forgetKnown();
    const std::int64_t count =
        table.dataSource_ ? std::max<std::int64_t>(0, table.dataSource_->numberOfSectionsInTableView(table)) : 0;
    const bool isUniform = count > 0 && table.delegate_ && table.delegate_->tableViewHasUniformSections(table);
    if (isUniform) {
        auto shape = shapeOf(0);
        if (uniformShape != shape) heights.clear();
        uniformShape = std::move(shape);
    } else {
        uniformShape.reset();
        for (std::int64_t section = 0; section < count; ++section) {
            const auto shape = shapeOf(section);
            if (section < heights.sections()) {
                const auto present = heights.section(section);
                if (present.rows == shape.rows && present.header == roundedHeight(shape.header) &&
                    present.footer == roundedHeight(shape.footer)) {
                    for (std::size_t row = 0; row < shape.known.size(); ++row) {
                        const NSIndexPath path{section, static_cast<std::int64_t>(row)};
                        if (shape.known[row] >= 0) heights.setRowHeight(path, shape.known[row]);
                    }
                    continue;
                }
                heights.eraseSections(section, 1);
            }
            heights.insertSections(section, 1, shape);
        }
    }
    if (heights.sections() > count) heights.eraseSections(count, heights.sections() - count);
    if (heights.sections() < count)
        heights.insertSections(heights.sections(), count - heights.sections(), *uniformShape);
}

void UITableView::Implementation::ensureNumbers() {
    if (needsNumbers && !isLayingOut) reload();
}

void UITableView::Implementation::reload() {
    if (isLayingOut) {
        reloadsAfter = true;
        table.setNeedsLayout();
        return;
    }
    endPress(false);
    closeSwipe(false);
    if (const auto open = menu.lock()) open->close();
    batch = {};
    table.selected_.reset();
    retireAll();
    askNumbers();
    needsRows = settlesAfter = true;
    prefetched.reset();
    updateContentSize();
    table.setNeedsLayout();
}

bool UITableView::Implementation::exists(NSIndexPath path) const {
    return path.section >= 0 && path.section < heights.sections() && path.row >= 0 &&
           path.row < heights.section(path.section).rows;
}

std::optional<NSIndexPath> UITableView::Implementation::pathOf(const UIView* view) const {
    for (const UIView* v = view; v && v != &table; v = v->superview()) {
        if (v->superview() != &table) continue;
        for (const auto& [path, row] : rows) {
            if (row.cell.get() == v) return path;
        }
    }
    return {};
}

CGRect UITableView::Implementation::rowFrame(NSIndexPath path) const {
    const auto place = heights.row(path);
    return {rowX(), contentTop() + place.top, table.rowWidth(), place.height};
}

void UITableView::Implementation::updateContentSize() {
    const CGFloat bottom = contentTop() + heights.total();
    if (table.headerView_) table.headerView_->setFrame({0, 0, table.frame().width(), contentTop()});
    const CGFloat footer = table.footerView_ ? table.footerView_->frame().height() : 0;
    if (table.footerView_) table.footerView_->setFrame({0, bottom, table.frame().width(), footer});
    table.setContentSize({table.frame().width(), bottom + footer});
}

// Rows

void UITableView::Implementation::detach(UITableViewCell& cell) {
    cell.accessoryTapped = nullptr;
    cell.heightDidChange = nullptr;
    cell.isInTable_ = false;
}

void UITableView::Implementation::recycle(const std::shared_ptr<UITableViewCell>& cell) {
    if (swipe && swipe->cell == cell) closeSwipe(false);
    detach(*cell);
    cell->setHighlighted(false, false);
    cell->setSelected(false, false);
    cell->removeFromSuperview();
    pool.put(cell);
}

void UITableView::Implementation::retireAll() {
    for (auto& [path, row] : rows) retired.emplace_back(path, row.cell);
    rows.clear();
    for (const auto& [section, header] : headers) {
        if (header) header->removeFromSuperview();
    }
    headers.clear();
}

bool UITableView::Implementation::holdsFirstResponder(const UITableViewCell& cell) const {
    const UIView* const first = table.window() ? table.window()->firstResponder() : nullptr;
    return first && first->isDescendantOfView(cell);
}

std::shared_ptr<UITableViewCell> UITableView::dequeueReusableCell(const std::string& identifier) {
    Implementation& self = *implementation_;
    auto& retired = self.retired;
    const auto takeRetired = [&](auto fits) -> std::shared_ptr<UITableViewCell> {
        const auto found = std::find_if(retired.begin(), retired.end(), [&](const auto& entry) {
            return entry.second->reuseIdentifier() == identifier && fits(entry.first);
        });
        if (found == retired.end()) return nullptr;
        const auto cell = found->second;
        retired.erase(found);
        return cell;
    };
    // The same view shows the row again, so that a playing video or text under edit stays in it.
    auto cell = takeRetired([&](NSIndexPath path) { return path == self.askedPath; });
    if (!cell) cell = self.pool.take(identifier);
    if (!cell) cell = takeRetired([](NSIndexPath) { return true; });
    if (!cell) return nullptr;
    cell->setHighlighted(false, false);
    cell->setSelected(false, false);
    if (cell->frame().width() != rowWidth()) {
        cell->setFrame({cell->frame().origin, {rowWidth(), cell->frame().height()}});
    }
    cell->prepareForReuse();
    return cell;
}

std::shared_ptr<UITableViewCell> UITableView::Implementation::askForCell(NSIndexPath path) {
    const CGFloat formerWidth = std::exchange(UITableViewCell::currentRowWidth, table.rowWidth());
    askedPath = path;
    auto cell = table.dataSource_ ? table.dataSource_->tableViewCellForRowAtIndexPath(table, path) : nullptr;
    if (!cell) {
        NSLog("Table view: the data source gave no row %@ of section %@.", std::to_string(path.row),
              std::to_string(path.section));
        cell = make<UITableViewCell>(UITableViewCellStyle::defaultStyle, std::string());
    }
    askedPath.reset();
    UITableViewCell::currentRowWidth = formerWidth;
    // The data source may hand out a view of its own that already is in another place of the table.
    std::erase_if(retired, [&](const auto& entry) { return entry.second == cell; });
    pool.remove(*cell);
    if (std::erase(leaving, cell) > 0) {
        cell->setAlpha(1);
        cell->setUserInteractionEnabled(true);
    }
    std::erase_if(rows, [&](const auto& entry) { return entry.second.cell == cell; });
    return cell;
}

void UITableView::Implementation::wire(const std::shared_ptr<UITableViewCell>& cell) {
    cell->isInTable_ = true;
    const auto weak = std::weak_ptr(std::static_pointer_cast<UITableView>(table.shared_from_this()));
    UITableViewCell* const raw = cell.get();
    cell->accessoryTapped = [weak, raw] {
        const auto owner = weak.lock();
        const auto path = owner ? owner->implementation_->pathOf(raw) : std::nullopt;
        if (path && owner->delegate_)
            owner->delegate_->tableViewAccessoryButtonTappedForRowWithIndexPath(*owner, *path);
    };
    cell->heightDidChange = [weak, raw] {
        if (const auto owner = weak.lock()) owner->implementation_->heightChanged(*raw);
    };
}

void UITableView::Implementation::heightChanged(const UITableViewCell& cell) {
    const auto path = pathOf(&cell);
    if (!path) return;
    Row& row = rows.at(*path);
    if (!row.isAutomatic || roundedHeight(cell.automaticHeight()) == cell.frame().height()) return;
    row.isHeightStale = needsRows = true;
    table.setNeedsLayout();
}

void UITableView::Implementation::measure(NSIndexPath path, Row& row) {
    const auto fixed = fixedHeight(path);
    row.isAutomatic = !fixed;
    const CGRect place = rowFrame(path);
    const CGFloat x = row.cell->superview() == &table ? row.cell->frame().minX() : place.minX();
    // The row gets its width first, because its height depends on it; some rows need a second pass.
    constexpr int attempts = 3;
    CGFloat height = fixed ? roundedHeight(*fixed) : row.cell->frame().height();
    row.cell->setFrame({x, place.minY(), place.width(), height});
    for (int i = 0; !fixed && i < attempts; ++i) {
        const CGFloat wanted = roundedHeight(row.cell->automaticHeight());
        if (wanted == height && i > 0) break;
        height = wanted;
        row.cell->setFrame({x, place.minY(), place.width(), height});
    }
    const auto present = heights.row(path);
    if (!present.isKnown || present.height != height) heights.setRowHeight(path, height);
    row.isHeightStale = false;
}

void UITableView::Implementation::ensureRow(NSIndexPath path) {
    if (const auto found = rows.find(path); found != rows.end()) {
        if (found->second.isHeightStale) measure(path, found->second);
        return;
    }
    const auto cell = askForCell(path);
    Row& row = rows[path];
    row.cell = cell;
    measure(path, row);
    insertRowView(path, cell);
    wire(cell);
}

std::int64_t UITableView::Implementation::indexOfSubview(const UIView* view) const {
    const auto& all = table.subviews();
    const auto found = std::find_if(all.begin(), all.end(), [&](const auto& other) { return other.get() == view; });
    return found == all.end() ? -1 : found - all.begin();
}

/// Subviews stand in the order of the rows, because the Tab key follows the order of subviews.
void UITableView::Implementation::insertRowView(NSIndexPath path, const std::shared_ptr<UITableViewCell>& cell) {
    const auto self = rows.find(path);
    const std::int64_t present = indexOfSubview(cell.get());
    std::int64_t target = -1;
    for (auto next = std::next(self); next != rows.end() && target < 0; ++next)
        target = indexOfSubview(next->second.cell.get());
    for (auto previous = self; previous != rows.begin() && target < 0;) {
        --previous;
        const std::int64_t index = indexOfSubview(previous->second.cell.get());
        if (index >= 0) target = index + 1;
    }
    if (target < 0) target = table.refreshControl_ ? 1 : 0;
    if (present >= 0 && present < target) --target;
    if (present < 0 || present != target) table.insertSubview(cell, static_cast<std::size_t>(target));
}

void UITableView::Implementation::placeRow(NSIndexPath path, const Row& row) {
    CGRect frame = rowFrame(path);
    UITableViewCell::Place place;
    const std::int64_t count = heights.section(path.section).rows;
    const bool isLast = path.row + 1 == count;
    if (table.style_ == UITableViewStyle::insetGrouped) {
        place.cornerRadius = cardRadius;
        place.roundsTop = path.row == 0;
        place.roundsBottom = isLast;
    }
    place.hasSeparator = !table.separatorNone && (!isLast || table.style_ == UITableViewStyle::plain);
    row.cell->setPlace(place);
    row.cell->setSelected(path == table.selected_, false);
    if (swipe && swipe->cell == row.cell) {
        swipe->actions->setFrame(frame);
        frame.origin.x -= swipe->revealed;
    }
    row.cell->setFrame(frame);
}

// Layout

std::optional<UITableView::Implementation::Anchor> UITableView::Implementation::findAnchor() const {
    const CGFloat offset = table.contentOffset().y, bottom = offset + table.frame().height();
    for (const auto& [path, row] : rows) {
        const CGRect& frame = row.cell->frame();
        if (frame.maxY() > offset && frame.minY() < bottom) return Anchor{path, frame.minY() - offset};
    }
    const auto path = heights.rowAtOrAfter(offset - contentTop());
    if (!path) return {};
    return Anchor{*path, contentTop() + heights.row(*path).top - offset};
}

void UITableView::Implementation::widthChanged() {
    if (table.contentOffset().y > table.minimumOffsetY()) keptPlace = findAnchor();
    heights.forgetKnown();
    closeSwipe(false);
    retireAll();
    prefetched.reset();
    needsRows = settlesAfter = true;
}

void UITableView::Implementation::layout() {
    if (isLayingOut || !(table.frame().width() > 0) || !(table.frame().height() > 0)) return;
    if (needsNumbers || std::exchange(reloadsAfter, false)) reload();
    if (table.rowWidth() != laidOutWidth) {
        if (laidOutWidth >= 0) widthChanged();
        laidOutWidth = table.rowWidth();
    }
    if (table.refreshControl_) {
        table.refreshControl_->setFrame(
            {0, -UIRefreshControl::height, table.frame().width(), UIRefreshControl::height});
    }
    const bool isLaidOut = !needsRows && laidOutOffset == table.contentOffset() && laidOutSize == table.frame().size &&
                           laidOutVelocity == table.scrollVelocity();
    if (!isLaidOut) {
        layOutRows();
        updateContentSize();
    }
    if (std::exchange(settlesAfter, false)) table.settle(false);
}

void UITableView::Implementation::layOutRows(Transition* transition) {
    isLayingOut = true;
    needsRows = false;
    const CGFloat viewport = table.frame().height();
    const CGFloat before = table.contentOffset().y;
    auto anchor = std::exchange(keptPlace, std::nullopt);
    if (!anchor || !exists(anchor->path)) anchor = findAnchor();
    CGFloat offset = before;
    if (anchor) {
        const auto top = [&] { return contentTop() + heights.row(anchor->path).top; };
        const CGFloat velocity = table.scrollVelocity();
        const auto reach = [&](CGFloat speed) {
            return std::max(overscan, std::min(viewport, speed * flingLookahead));
        };
        const CGFloat above = reach(-velocity), below = reach(velocity);
        int budget = rowsMadeAhead;
        const auto mayMake = [&](NSIndexPath path, CGFloat distance, CGFloat farthest) {
            if (distance < overscan) return true;
            return distance < farthest && (rows.contains(path) || budget-- > 0);
        };
        ensureRow(anchor->path);
        for (auto path = heights.next(anchor->path); path; path = heights.next(*path)) {
            const CGFloat screenY = contentTop() + heights.row(*path).top - (top() - anchor->screenY);
            if (!mayMake(*path, screenY - viewport, below)) break;
            ensureRow(*path);
        }
        for (auto path = heights.previous(anchor->path); path; path = heights.previous(*path)) {
            const CGFloat screenBottom = contentTop() + heights.row(*path).bottom() - (top() - anchor->screenY);
            if (!mayMake(*path, -screenBottom, above)) break;
            ensureRow(*path);
        }
        offset = top() - anchor->screenY;
        table.shiftContentOffset(offset - before);
        letGoOutside(offset - above, offset + viewport + below, transition);
        for (const auto& [path, row] : rows) placeRow(path, row);
        placeHeaders(offset - above, offset + viewport + below);
        settlesAfter = settlesAfter || offset != before;
    } else {
        for (const auto& [path, row] : std::exchange(rows, {})) recycle(row.cell);
        placeHeaders(before, before + viewport);
    }
    for (const auto& [path, cell] : std::exchange(retired, {})) recycle(cell);
    for (const auto& [path, row] : rows) needsRows = needsRows || row.isHeightStale;
    const CGFloat moved = before - laidOutOffset.y;
    laidOutOffset = table.contentOffset();
    laidOutSize = table.frame().size;
    laidOutVelocity = table.scrollVelocity();
    isLayingOut = false;
    prefetch(moved);
}

void UITableView::Implementation::prefetch(CGFloat moved) {
    if (moved == 0 || rows.empty() || !table.dataSource_) return;
    const bool down = moved > 0;
    const CGFloat reach = overscan + prefetchScreens * table.frame().height();
    const CGFloat from = table.contentOffset().y - contentTop() - reach;
    const CGFloat to = table.contentOffset().y - contentTop() + table.frame().height() + reach;
    std::vector<NSIndexPath> named;
    std::optional<NSIndexPath> path = down ? rows.rbegin()->first : rows.begin()->first;
    // After a jump of the offset, the rows that were named before are no longer near.
    if (prefetched && (*path < prefetched->first || prefetched->second < *path)) prefetched.reset();
    if (!prefetched) prefetched = {rows.begin()->first, rows.rbegin()->first};
    path = down ? prefetched->second : prefetched->first;
    while (named.size() < mostPrefetched) {
        path = down ? heights.next(*path) : heights.previous(*path);
        if (!path) break;
        const auto place = heights.row(*path);
        if (down ? place.top > to : place.bottom() < from) break;
        named.push_back(*path);
        (down ? prefetched->second : prefetched->first) = *path;
    }
    if (!named.empty()) table.dataSource_->tableViewPrefetchRowsAtIndexPaths(table, named);
}

void UITableView::Implementation::letGoOutside(CGFloat lower, CGFloat upper, Transition* transition) {
    for (auto entry = rows.begin(); entry != rows.end();) {
        const auto cell = entry->second.cell;
        const auto place = heights.row(entry->first);
        const bool isInReach = contentTop() + place.bottom() >= lower && contentTop() + place.top <= upper;
        if (isInReach || holdsFirstResponder(*cell)) {
            ++entry;
            continue;
        }
        const NSIndexPath path = entry->first;
        entry = rows.erase(entry);
        const bool slides = transition && transition->isAnimated && transition->oldScreenY.contains(path);
        if (slides) {
            transition->pushedOut.emplace_back(cell, rowFrame(path));
        } else {
            recycle(cell);
        }
    }
}

// Section headers

std::shared_ptr<UIView> UITableView::Implementation::makeHeader(std::int64_t section) const {
    std::string title = table.dataSource_ ? table.dataSource_->tableViewTitleForHeaderInSection(table, section) : "";
    if (title.empty()) return nullptr;
    const bool isPlain = table.style_ == UITableViewStyle::plain;
    const CGFloat width = table.frame().width(), height = heights.section(section).header;
    const auto header = make<UIView>(CGRect{0, 0, width, height});
    header->setAutoresizingMask(flexibleWidth);
    header->setUserInteractionEnabled(false);
    if (isPlain) header->setBackgroundColor(UIColor::rgb(0xF7F8FA));
    header->setSurface(true);
    const auto label = make<UILabel>();
    const UIFont font = isPlain ? UIFont::mediumSystem(15) : UIFont::system(13);
    const CGFloat line = std::min(height, TextMeasurer::shared().lineHeight(font) + 2);
    const CGFloat x = rowX() + headerInset;
    // The title of a section stands close to the card below.
    label->setFrame(
        {x, isPlain ? (height - line) / 2 : std::max(0.0, height - line - 6), std::max(0.0, width - 2 * x), line});
    label->setAutoresizingMask(flexibleWidth);
    label->setFont(font);
    label->setTextColor(isPlain ? UIColor::label() : UIColor::secondaryLabel());
    label->setText(std::move(title));
    header->addSubview(label);
    return header;
}

void UITableView::Implementation::placeHeaders(CGFloat from, CGFloat to) {
    std::int64_t first = 0, last = -1;
    if (heights.sections() > 0 && heights.total() > 0) {
        first = heights.at(from - contentTop()).path.section;
        last = heights.at(to - contentTop()).path.section;
    }
    for (auto entry = headers.begin(); entry != headers.end();) {
        if (entry->first >= first && entry->first <= last) {
            ++entry;
            continue;
        }
        if (entry->second) entry->second->removeFromSuperview();
        entry = headers.erase(entry);
    }
    const CGFloat offset = table.contentOffset().y + table.contentInset().top;
    for (std::int64_t section = first; section <= last; ++section) {
        const auto place = heights.section(section);
        if (place.header <= 0) continue;
        auto [entry, isNew] = headers.try_emplace(section);
        if (isNew && (entry->second = makeHeader(section))) table.addSubview(entry->second);
        if (!entry->second) continue;
        CGFloat y = contentTop() + place.top;
        if (table.style_ == UITableViewStyle::plain) {
            // A header sticks to the upper edge while any row of its section is visible.
            y = std::max(y, std::min(offset, contentTop() + place.bottom() - place.header));
        }
        entry->second->setFrame({0, y, table.frame().width(), place.header});
    }
}

}  // namespace ostrel
