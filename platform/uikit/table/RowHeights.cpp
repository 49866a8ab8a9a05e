#include "platform/uikit/table/RowHeights.h"

namespace ostrel {

CGFloat roundedHeight(CGFloat height) {
    if (!(height > 0)) return 0;
    return std::round(std::min(height, 1'000'000.0) * 64) / 64;
}

void RowHeights::insertSections(std::int64_t first, std::int64_t count, const Section& section) {
    Record record{
        .header = roundedHeight(section.header), .footer = roundedHeight(section.footer), .rows = section.rows};
    record.each.rowHeight = roundedHeight(section.estimate);
    const auto rowOf = [&](std::size_t i) {
        const CGFloat known = section.known[i];
        return known < 0 ? record.each : Row{roundedHeight(known), generation_};
    };
    if (section.rows == 1 && section.known.size() == 1) {
        record.each = rowOf(0);
    } else if (!section.known.empty()) {
        assert(static_cast<std::int64_t>(section.known.size()) == section.rows);
        record.varied = std::make_shared<HeightRuns<Row>>();
        for (std::size_t i = 0; i < section.known.size();) {
            std::size_t end = i + 1;
            while (end < section.known.size() && section.known[end] == section.known[i]) ++end;
            record.varied->insert(static_cast<std::int64_t>(i), static_cast<std::int64_t>(end - i), rowOf(i));
            i = end;
        }
    }
    sections_.insert(first, count, std::move(record));
}

void RowHeights::eraseSections(std::int64_t first, std::int64_t count) { sections_.erase(first, count); }

RowHeights::SectionPlace RowHeights::section(std::int64_t section) const {
    const auto place = sections_.at(section);
    return {place.top, place.payload->header, place.payload->footer, height(*place.payload), place.payload->rows};
}

RowHeights::RowPlace RowHeights::row(NSIndexPath path) const {
    const auto place = sections_.at(path.section);
    const Record& record = *place.payload;
    assert(path.row >= 0 && path.row < record.rows);
    const CGFloat top = place.top + record.header;
    if (!record.varied) {
        return {top + record.each.rowHeight * static_cast<CGFloat>(path.row), record.each.rowHeight,
                record.each.knownIn == generation_};
    }
    const auto row = record.varied->at(path.row);
    return {top + row.top, row.payload->rowHeight, row.payload->knownIn == generation_};
}

void RowHeights::setRowHeight(NSIndexPath path, CGFloat newHeight) {
    const Row known{roundedHeight(newHeight), generation_};
    sections_.change(path.section, [&](Record& record) {
        assert(path.row >= 0 && path.row < record.rows);
        if (record.rows == 1) {
            record.each = known;
            record.varied = nullptr;
            return;
        }
        if (!record.varied) {
            record.varied = std::make_shared<HeightRuns<Row>>();
            record.varied->insert(0, record.rows, record.each);
        } else if (record.varied.use_count() > 1) {
            record.varied = std::make_shared<HeightRuns<Row>>(*record.varied);
        }
        record.varied->change(path.row, [&](Row& row) { row = known; });
    });
}

RowHeights::Hit RowHeights::at(CGFloat offset) const {
    const auto place = sections_.find(offset);
    const Record& record = *place.payload;
    const CGFloat y = std::max(0.0, offset) - place.top - record.header;
    if (y < 0 && record.header > 0) return {Part::header, {place.index, 0}};
    const CGFloat rowsHeight = height(record) - record.header - record.footer;
    if (record.rows == 0 || y >= rowsHeight) return {Part::footer, {place.index, record.rows}};
    if (record.varied) return {Part::row, {place.index, record.varied->find(y).index}};
    return {Part::row, {place.index, HeightRuns<Row>::indexInRun(y, record.each.rowHeight, record.rows)}};
}

std::optional<NSIndexPath> RowHeights::rowAtOrAfter(CGFloat offset) const {
    if (sections() == 0) return {};
    const Hit hit = at(offset);
    switch (hit.part) {
    case Part::row: return hit.path;
    case Part::header:
        if (sections_.at(hit.path.section).payload->rows > 0) return NSIndexPath{hit.path.section, 0};
        break;
    case Part::footer: break;
    }
    if (const auto after = firstRowFrom(hit.path.section + 1)) return after;
    return lastRowUpTo(hit.path.section);
}

std::optional<NSIndexPath> RowHeights::firstRowFrom(std::int64_t section) const {
    while (section < sections()) {
        const auto place = sections_.at(section);
        if (place.payload->rows > 0) return NSIndexPath{section, 0};
        section = place.runFirst + place.runCount;
    }
    return {};
}

std::optional<NSIndexPath> RowHeights::lastRowUpTo(std::int64_t section) const {
    while (section >= 0) {
        const auto place = sections_.at(section);
        if (place.payload->rows > 0) return NSIndexPath{section, place.payload->rows - 1};
        section = place.runFirst - 1;
    }
    return {};
}

std::optional<NSIndexPath> RowHeights::next(NSIndexPath path) const {
    if (path.row + 1 < sections_.at(path.section).payload->rows) return NSIndexPath{path.section, path.row + 1};
    return firstRowFrom(path.section + 1);
}

std::optional<NSIndexPath> RowHeights::previous(NSIndexPath path) const {
    if (path.row > 0) return NSIndexPath{path.section, path.row - 1};
    return lastRowUpTo(path.section - 1);
}

}  // namespace ostrel
