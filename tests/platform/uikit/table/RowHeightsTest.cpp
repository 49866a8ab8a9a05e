#include "platform/uikit/table/RowHeights.h"

#include <gtest/gtest.h>

#include <chrono>
#include <random>

namespace ostrel {
namespace {

/// The same as RowHeights, slow and plain.
struct Model {
    struct Section {
        CGFloat header, footer;
        std::vector<std::pair<CGFloat, bool>> rows;
        CGFloat height() const {
            CGFloat sum = header + footer;
            for (const auto& row : rows) sum += row.first;
            return sum;
        }
    };
    std::vector<Section> sections;

    CGFloat top(std::size_t section) const {
        CGFloat sum = 0;
        for (std::size_t i = 0; i < section; ++i) sum += sections[i].height();
        return sum;
    }
};

TEST(RowHeights, RandomChangesAgreeWithAPlainModel) {
    for (unsigned seed = 1; seed <= 12; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const auto upTo = [&](std::int64_t n) { return std::uniform_int_distribution<std::int64_t>(0, n)(random); };
        const auto height = [&] { return roundedHeight(static_cast<CGFloat>(upTo(20000)) / 97); };
        RowHeights heights;
        Model model;
        for (int step = 0; step < 500; ++step) {
            const auto count = static_cast<std::int64_t>(model.sections.size());
            switch (upTo(5)) {
            case 0: {
                const auto first = upTo(count), number = upTo(6);
                RowHeights::Section section{
                    .header = height(), .footer = height(), .rows = upTo(4), .estimate = height()};
                if (upTo(1)) {
                    for (std::int64_t i = 0; i < section.rows; ++i) section.known.push_back(upTo(1) ? height() : -1);
                }
                Model::Section one{section.header, section.footer, {}};
                for (std::int64_t i = 0; i < section.rows; ++i) {
                    const bool known = !section.known.empty() && section.known[static_cast<std::size_t>(i)] >= 0;
                    one.rows.emplace_back(known ? section.known[static_cast<std::size_t>(i)] : section.estimate, known);
                }
                heights.insertSections(first, number, section);
                model.sections.insert(model.sections.begin() + first, static_cast<std::size_t>(number), one);
                break;
            }
            case 1: {
                if (count < 8) break;
                const auto first = upTo(count - 1), number = std::min(count - first, upTo(4));
                heights.eraseSections(first, number);
                model.sections.erase(model.sections.begin() + first, model.sections.begin() + first + number);
                break;
            }
            case 2:
                if (upTo(30) > 0) break;
                heights.forgetKnown();
                for (auto& section : model.sections) {
                    for (auto& row : section.rows) row.second = false;
                }
                break;
            default: {
                if (count == 0) break;
                const auto section = upTo(count - 1);
                auto& rows = model.sections[static_cast<std::size_t>(section)].rows;
                if (rows.empty()) break;
                const auto row = upTo(static_cast<std::int64_t>(rows.size()) - 1);
                const CGFloat newHeight = height();
                heights.setRowHeight({section, row}, newHeight);
                rows[static_cast<std::size_t>(row)] = {newHeight, true};
            }
            }
            ASSERT_EQ(heights.sections(), static_cast<std::int64_t>(model.sections.size()));
            ASSERT_EQ(heights.total(), model.top(model.sections.size()));
            if (model.sections.empty()) continue;
            const auto section = upTo(heights.sections() - 1);
            const Model::Section& one = model.sections[static_cast<std::size_t>(section)];
            CGFloat y = model.top(static_cast<std::size_t>(section));
            ASSERT_EQ(heights.section(section).top, y);
            ASSERT_EQ(heights.section(section).height, one.height());
            y += one.header;
            for (std::size_t r = 0; r < one.rows.size(); ++r) {
                const auto row = heights.row({section, static_cast<std::int64_t>(r)});
                ASSERT_EQ(row.top, y);
                ASSERT_EQ(row.height, one.rows[r].first);
                ASSERT_EQ(row.isKnown, one.rows[r].second);
                y += row.height;
            }
            if (heights.total() == 0) continue;
            const CGFloat offset = std::uniform_real_distribution<CGFloat>(0, heights.total() * 0.999999)(random);
            const auto [part, path] = heights.at(offset);
            const Model::Section& hit = model.sections.at(static_cast<std::size_t>(path.section));
            const CGFloat top = model.top(static_cast<std::size_t>(path.section));
            const CGFloat rowsEnd = top + hit.height() - hit.footer;
            if (part == RowHeights::Part::header) {
                ASSERT_TRUE(top <= offset && offset < top + hit.header && path.row == 0) << offset;
            } else if (part == RowHeights::Part::row) {
                const auto row = heights.row(path);
                ASSERT_TRUE(row.top <= offset && offset < row.top + row.height) << offset;
            } else {
                ASSERT_TRUE(rowsEnd <= offset && offset < rowsEnd + hit.footer) << offset;
                ASSERT_EQ(path.row, static_cast<std::int64_t>(hit.rows.size()));
            }
        }
    }
}

TEST(RowHeights, WalkingVisitsEveryRowOnceInBothDirections) {
    RowHeights heights;
    for (const std::int64_t rows : {0, 2, 0, 0, 1, 3, 0}) heights.insertSections(heights.sections(), 1, {.rows = rows});
    std::vector<NSIndexPath> forth, back;
    for (auto path = heights.rowAtOrAfter(-5); path; path = heights.next(*path)) forth.push_back(*path);
    for (auto path = heights.rowAtOrAfter(1e9); path; path = heights.previous(*path)) back.insert(back.begin(), *path);
    EXPECT_EQ(forth, (std::vector<NSIndexPath>{{1, 0}, {1, 1}, {4, 0}, {5, 0}, {5, 1}, {5, 2}}));
    EXPECT_EQ(back, forth);
}

TEST(RowHeights, HeightsAreRoundedToTheGridThatKeepsSumsExact) {
    EXPECT_EQ(roundedHeight(88.001), 88);
    EXPECT_EQ(roundedHeight(10.0 + 1.0 / 64), 10.015625);
    EXPECT_EQ(roundedHeight(-3), 0);
    EXPECT_EQ(roundedHeight(std::nan("")), 0);
    EXPECT_EQ(roundedHeight(1e12), 1e6);
}

TEST(RowHeights, AMillionEqualSectionsAreOneEntryAndStayExactWhenVisited) {
    RowHeights heights;
    const auto start = std::chrono::steady_clock::now();
    heights.insertSections(0, 1'000'000, {.header = 8, .footer = 1, .rows = 1, .estimate = 88});
    const std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - start;
    EXPECT_LT(taken.count(), 10);
    EXPECT_EQ(heights.entries(), 1U);
    EXPECT_EQ(heights.total(), 97e6);
    for (std::int64_t i = 500'000; i < 501'000; ++i) heights.setRowHeight({i, 0}, 100.3);
    EXPECT_LE(heights.entries(), 1003U);
    EXPECT_EQ(heights.section(999'999).top, 97.0 * 999'999 + 1000 * (roundedHeight(100.3) - 88));
    heights.insertSections(0, 1, {.header = 8, .footer = 1, .rows = 1, .estimate = 50});
    EXPECT_EQ(heights.at(59 + 97.0 * 400'000 + 9).path.section, 400'001);
}

}  // namespace
}  // namespace ostrel
