#pragma once

#include "platform/graphics/Geometry.h"

#include <cstddef>
#include <vector>

namespace ostrel {

/// The platform's scroll views are vertical.
enum class UICollectionViewScrollDirection { vertical };

/// Lays items out in lines from left to right, lines from top to bottom. The values here apply where the delegate gives
/// none. The items of a full line are spread over the width, a single item is centred; the last line is aligned to the
/// left, with the spacing of the lines above. Within a line items are centred on its height.
class UICollectionViewFlowLayout final {
public:
    UICollectionViewScrollDirection scrollDirection = UICollectionViewScrollDirection::vertical;
    CGSize itemSize{50, 50};
    CGFloat minimumLineSpacing = 10;
    CGFloat minimumInteritemSpacing = 10;
    UIEdgeInsets sectionInset;
};

/// The places of a section's items, by the rules of the flow layout. A pure value.
class FlowSection final {
public:
    struct Metrics {
        CGFloat width = 0;  ///< of the collection view
        UIEdgeInsets inset;
        CGFloat lineSpacing = 10, itemSpacing = 10;
    };
    FlowSection() = default;
    FlowSection(const Metrics& metrics, const std::vector<CGSize>& sizes);

    std::size_t count() const { return frames_.size(); }
    CGFloat height() const { return height_; }
    /// From the upper left corner of the section.
    const CGRect& frame(std::size_t item) const { return frames_[item]; }
    struct Range {
        std::size_t first = 0, end = 0;
        friend bool operator==(const Range&, const Range&) = default;
    };
    /// The items of the lines that reach into `top` to `bottom`.
    Range itemsBetween(CGFloat top, CGFloat bottom) const;
    /// The item at the point; `count()` when it is beside all of them.
    std::size_t itemAt(CGPoint point) const;
    /// The item at the point, else the nearest across in the line that is nearest; `count()` without items.
    std::size_t itemNear(CGPoint point) const;
    /// The item in the next line below or above that is nearest across; `count()` when there is no such line.
    std::size_t itemBeyond(std::size_t item, int lines) const;

private:
    struct Line {
        std::size_t first = 0, end = 0;
        CGFloat top = 0, bottom = 0;
    };
    std::size_t lineOf(std::size_t item) const;
    std::vector<CGRect> frames_;
    std::vector<Line> lines_;
    CGFloat height_ = 0;
};

}  // namespace ostrel
