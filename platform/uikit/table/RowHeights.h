#pragma once

#include "platform/foundation/values/NSIndexPath.h"
#include "platform/uikit/table/HeightRuns.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace ostrel {

/// To the nearest 1/64 point, 0 to 1,000,000; what is no number is 0. Sums of such heights are exact in double
/// precision up to 2^47 points, so that a row's place never depends on how it was reached.
CGFloat roundedHeight(CGFloat height);

/// The heights of a table: sections of a header, rows and a footer, one below the other from 0. A height is an estimate
/// until it is known. Finding, inserting, removing and a new height take O(log n); a million equal sections take one
/// entry.
class RowHeights final {
public:
    /// How new sections look. Points.
    struct Section {
        CGFloat header = 0, footer = 0;
        std::int64_t rows = 0;
        CGFloat estimate = 44;  ///< of rows whose height is not known
        /// Known heights of the rows in order, below 0: not known. Empty: none is known.
        std::vector<CGFloat> known;
        friend bool operator==(const Section&, const Section&) = default;
    };
    struct SectionPlace {
        CGFloat top = 0, header = 0, footer = 0, height = 0;
        std::int64_t rows = 0;
        CGFloat bottom() const { return top + height; }
    };
    struct RowPlace {
        CGFloat top = 0, height = 0;
        bool isKnown = false;
        CGFloat bottom() const { return top + height; }
    };
    enum class Part { header, row, footer };
    struct Hit {
        Part part = Part::header;
        NSIndexPath path;  ///< header and footer: row is 0 and the number of rows
    };

    std::int64_t sections() const { return sections_.count(); }
    CGFloat total() const { return sections_.total(); }
    void clear() { sections_.clear(); }
    /// `first` is 0 to `sections()`.
    void insertSections(std::int64_t first, std::int64_t count, const Section& section);
    void eraseSections(std::int64_t first, std::int64_t count);

    // Preconditions: the section and the row exist.
    SectionPlace section(std::int64_t section) const;
    RowPlace row(NSIndexPath path) const;
    void setRowHeight(NSIndexPath path, CGFloat height);
    /// All heights are kept as estimates.
    void forgetKnown() { ++generation_; }

    /// The part of the table at `offset`: the first part for offsets above the table, the last for offsets below.
    /// Precondition: the table has a section.
    Hit at(CGFloat offset) const;
    /// The row that covers `offset`, else the first one after it, else the last; none without rows.
    std::optional<NSIndexPath> rowAtOrAfter(CGFloat offset) const;
    std::optional<NSIndexPath> next(NSIndexPath path) const;
    std::optional<NSIndexPath> previous(NSIndexPath path) const;
    /// Entries of the structure, for tests of its size.
    std::size_t entries() const { return sections_.runCount(); }

private:
    struct Row {
        CGFloat rowHeight = 0;
        std::uint32_t knownIn = 0;  // the generation in which the height became known; 0: never
        friend CGFloat height(const Row& row) { return row.rowHeight; }
    };
    struct Record {
        CGFloat header = 0, footer = 0;
        std::int64_t rows = 0;
        Row each;                                 // of all rows, while `varied` is null
        std::shared_ptr<HeightRuns<Row>> varied;  // shared by equal sections, copied when one of them changes
        friend CGFloat height(const Record& record) {
            const CGFloat rows =
                record.varied ? record.varied->total() : record.each.rowHeight * static_cast<CGFloat>(record.rows);
            return record.header + rows + record.footer;
        }
    };
    std::optional<NSIndexPath> firstRowFrom(std::int64_t section) const;
    std::optional<NSIndexPath> lastRowUpTo(std::int64_t section) const;

    HeightRuns<Record> sections_;
    std::uint32_t generation_ = 1;
};

}  // namespace ostrel
