#include "platform/uikit/collection/UICollectionViewFlowLayout.h"

#include <algorithm>
#include <cmath>

namespace ostrel {

namespace {

// The tolerance lets items fit whose widths are a fraction of the view's width, rounded to single precision.
constexpr CGFloat tolerance = 0.01;

CGFloat sane(CGFloat length) { return std::isfinite(length) ? std::max(0.0, length) : 0; }

}  // namespace

FlowSection::FlowSection(const Metrics& metrics, const std::vector<CGSize>& sizes) {
    const CGFloat available = std::max(0.0, metrics.width - metrics.inset.left - metrics.inset.right);
    const CGFloat spacing = sane(metrics.itemSpacing);
    const std::size_t count = sizes.size();
    frames_.reserve(count);
    CGFloat y = metrics.inset.top, formerGap = spacing;
    for (std::size_t first = 0; first < count;) {
        std::size_t end = first + 1;
        CGFloat width = sane(sizes[first].width), height = sane(sizes[first].height);
        const auto fits = [&](CGFloat next) { return width + spacing + next <= available + tolerance; };
        for (; end < count && fits(sane(sizes[end].width)); ++end) {
            width += spacing + sane(sizes[end].width);
            height = std::max(height, sane(sizes[end].height));
        }
        const CGFloat free = std::max(0.0, available - width);
        const auto gaps = static_cast<CGFloat>(end - first - 1);
        const bool isFull = end < count || !fits(sane(sizes[end - 1].width));
        CGFloat x = metrics.inset.left, gap = spacing;
        if (isFull) {
            if (gaps > 0) {
                gap += free / gaps;
            } else {
                x += free / 2;
            }
            formerGap = gap;
        } else if (gaps * (formerGap - spacing) <= free) {
            gap = formerGap;
        }
        if (!lines_.empty()) y += sane(metrics.lineSpacing);
        lines_.push_back({first, end, y, y + height});
        for (; first < end; ++first) {
            const CGSize size{sane(sizes[first].width), sane(sizes[first].height)};
            frames_.push_back({{x, y + (height - size.height) / 2}, size});
            x += size.width + gap;
        }
        y += height;
    }
    height_ = std::max(0.0, y + metrics.inset.bottom);
}

FlowSection::Range FlowSection::itemsBetween(CGFloat top, CGFloat bottom) const {
    const auto first =
        std::partition_point(lines_.begin(), lines_.end(), [&](const Line& line) { return line.bottom <= top; });
    const auto end = std::partition_point(first, lines_.end(), [&](const Line& line) { return line.top < bottom; });
    if (first == end) return {};
    return {first->first, std::prev(end)->end};
}

std::size_t FlowSection::itemAt(CGPoint point) const {
    const Range range = itemsBetween(point.y, std::nextafter(point.y, HUGE_VAL));
    for (std::size_t item = range.first; item < range.end; ++item) {
        if (frames_[item].contains(point)) return item;
    }
    return count();
}

std::size_t FlowSection::itemNear(CGPoint point) const {
    if (lines_.empty()) return count();
    auto line =
        std::partition_point(lines_.begin(), lines_.end(), [&](const Line& other) { return other.bottom <= point.y; });
    if (line == lines_.end()) --line;
    if (line != lines_.begin() && point.y < line->top) {
        const auto above = std::prev(line);
        if (point.y - above->bottom < line->top - point.y) line = above;
    }
    const auto distance = [&](std::size_t item) {
        const CGRect& frame = frames_[item];
        return std::max({0.0, frame.minX() - point.x, point.x - frame.maxX()});
    };
    std::size_t nearest = line->first;
    for (std::size_t item = line->first; item < line->end; ++item) {
        if (distance(item) < distance(nearest)) nearest = item;
    }
    return nearest;
}

std::size_t FlowSection::lineOf(std::size_t item) const {
    const auto line =
        std::partition_point(lines_.begin(), lines_.end(), [&](const Line& other) { return other.end <= item; });
    return static_cast<std::size_t>(line - lines_.begin());
}

std::size_t FlowSection::itemBeyond(std::size_t item, int lines) const {
    if (item >= count()) return count();
    const auto target = static_cast<std::ptrdiff_t>(lineOf(item)) + lines;
    if (target < 0 || target >= static_cast<std::ptrdiff_t>(lines_.size())) return count();
    const Line& line = lines_[static_cast<std::size_t>(target)];
    std::size_t nearest = line.first;
    const auto distance = [&](std::size_t other) { return std::abs(frames_[other].midX() - frames_[item].midX()); };
    for (std::size_t other = line.first; other < line.end; ++other) {
        if (distance(other) < distance(nearest)) nearest = other;
    }
    return nearest;
}

}  // namespace ostrel
