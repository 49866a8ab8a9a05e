#pragma once

#include "platform/graphics/Geometry.h"

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <utility>
#include <vector>

namespace ostrel {

/// A sequence of things one below the other, each with a height, kept as runs of equal ones in a counted tree with sums
/// (a treap: priorities are drawn at random, so that the depth is logarithmic in the number of runs whatever the order
/// of the changes). A million equal elements are one run; looking up, inserting and removing take O(log runs).
///
/// `Payload` is what an element knows; `CGFloat height(const Payload&)` is found by argument-dependent look-up. Heights
/// are multiples of 1/64 point (see `roundedHeight`), so that every sum is exact in binary.
template <class Payload>
class HeightRuns final {
public:
    struct Place {
        std::int64_t index = 0;
        CGFloat top = 0;
        const Payload* payload = nullptr;
        std::int64_t runFirst = 0, runCount = 0;  ///< the elements equal to this one around it
    };

    std::int64_t count() const { return root_ ? node(root_).totalCount : 0; }
    CGFloat total() const { return root_ ? node(root_).totalHeight : 0; }
    std::size_t runCount() const { return nodes_.size() - 1 - free_.size(); }

    void clear() {
        nodes_.resize(1);
        free_.clear();
        root_ = none;
    }

    /// `first` is 0 to `count()`.
    void insert(std::int64_t first, std::int64_t number, Payload payload) {
        assert(first >= 0 && first <= count() && number >= 0);
        if (number == 0) return;
        const auto [before, after] = cut(first);
        root_ = merged(merged(before, newNode(number, std::move(payload))), after);
    }

    void erase(std::int64_t first, std::int64_t number) {
        assert(first >= 0 && number >= 0 && first + number <= count());
        if (number == 0) return;
        const auto [before, rest] = cut(first);
        root_ = rest;
        const auto [gone, after] = cut(number);
        release(gone);
        root_ = merged(before, after);
    }

    /// Precondition: 0 <= index < count().
    Place at(std::int64_t index) const {
        assert(index >= 0 && index < count());
        Place place;
        std::int64_t first = 0;
        for (Index i = root_;;) {
            const Node& n = node(i);
            const std::int64_t left = node(n.left).totalCount;
            if (index < first + left) {
                i = n.left;
                continue;
            }
            first += left;
            place.top += node(n.left).totalHeight;
            if (index < first + n.number) {
                return {index, place.top + n.each * static_cast<CGFloat>(index - first), &n.payload, first, n.number};
            }
            first += n.number;
            place.top += n.each * static_cast<CGFloat>(n.number);
            i = n.right;
        }
    }

    /// Which of `number` elements of height `each` (above 0) covers `offset`.
    static std::int64_t indexInRun(CGFloat offset, CGFloat each, std::int64_t number) {
        auto k = std::clamp(static_cast<std::int64_t>(offset / each), std::int64_t{0}, number - 1);
        // The quotient is rounded, the products are exact.
        while (k > 0 && offset < each * static_cast<CGFloat>(k)) --k;
        while (k + 1 < number && offset >= each * static_cast<CGFloat>(k + 1)) ++k;
        return k;
    }

    /// The element that covers `offset`: its upper edge belongs to it, its lower edge does not. The first above all,
    /// the last below. Elements without height are never found, unless all that follow to the end are such.
    /// Precondition: count() > 0.
    Place find(CGFloat offset) const {
        if (!(offset > 0)) offset = 0;
        if (offset >= total()) return at(count() - 1);
        std::int64_t first = 0;
        CGFloat top = 0;
        for (Index i = root_;;) {
            const Node& n = node(i);
            const CGFloat left = node(n.left).totalHeight;
            if (offset < top + left) {
                i = n.left;
                continue;
            }
            first += node(n.left).totalCount;
            top += left;
            const CGFloat own = n.each * static_cast<CGFloat>(n.number);
            if (offset < top + own) {
                const std::int64_t k = indexInRun(offset - top, n.each, n.number);
                return {first + k, top + n.each * static_cast<CGFloat>(k), &n.payload, first, n.number};
            }
            first += n.number;
            top += own;
            i = n.right;
        }
    }

    /// Takes the element out of its run and lets `change` alter its payload.
    template <class Change>
    void change(std::int64_t index, const Change& change) {
        if (at(index).runCount > 1) {
            const auto [before, rest] = cut(index);
            root_ = rest;
            const auto [own, after] = cut(1);
            root_ = merged(merged(before, own), after);
        }
        changeSingle(root_, index, change);
    }

private:
    using Index = std::uint32_t;
    static constexpr Index none = 0;  // a node of its own, empty, so that sums need no branch

    struct Node {
        Index left = none, right = none;
        std::uint32_t priority = 0;
        std::int64_t number = 0;
        CGFloat each = 0;
        std::int64_t totalCount = 0;
        CGFloat totalHeight = 0;
        Payload payload{};
    };

    const Node& node(Index i) const { return nodes_[i]; }

    Index newNode(std::int64_t number, Payload payload) {
        Index i;
        if (free_.empty()) {
            i = static_cast<Index>(nodes_.size());
            nodes_.emplace_back();
        } else {
            i = free_.back();
            free_.pop_back();
        }
        // Marsaglia's xorshift, 32 bits.
        random_ ^= random_ << 13;
        random_ ^= random_ >> 17;
        random_ ^= random_ << 5;
        Node& n = nodes_[i];
        n.left = n.right = none;
        n.priority = random_;
        n.number = number;
        n.each = height(payload);
        n.payload = std::move(payload);
        sum(i);
        return i;
    }

    void release(Index i) {
        std::vector<Index> pending{i};
        while (!pending.empty()) {
            const Index next = pending.back();
            pending.pop_back();
            if (next == none) continue;
            pending.push_back(nodes_[next].left);
            pending.push_back(nodes_[next].right);
            nodes_[next].payload = {};
            free_.push_back(next);
        }
    }

    void sum(Index i) {
        Node& n = nodes_[i];
        n.totalCount = node(n.left).totalCount + n.number + node(n.right).totalCount;
        n.totalHeight = node(n.left).totalHeight + n.each * static_cast<CGFloat>(n.number) + node(n.right).totalHeight;
    }

    Index merged(Index a, Index b) {
        if (a == none) return b;
        if (b == none) return a;
        if (node(a).priority > node(b).priority) {
            const Index right = merged(node(a).right, b);
            nodes_[a].right = right;
            sum(a);
            return a;
        }
        const Index left = merged(a, node(b).left);
        nodes_[b].left = left;
        sum(b);
        return b;
    }

    /// Splits the tree `i` before its element `index`, which is the first of a run.
    std::pair<Index, Index> split(Index i, std::int64_t index) {
        if (i == none) return {none, none};
        const std::int64_t left = node(node(i).left).totalCount;
        if (index <= left) {
            const auto [a, b] = split(node(i).left, index);
            nodes_[i].left = b;
            sum(i);
            return {a, i};
        }
        const auto [a, b] = split(node(i).right, index - left - node(i).number);
        nodes_[i].right = a;
        sum(i);
        return {i, b};
    }

    /// Takes the whole tree apart before element `index`; a run that lies across is divided.
    std::pair<Index, Index> cut(std::int64_t index) {
        if (index <= 0) return {none, root_};
        if (index >= count()) return {root_, none};
        const Place place = at(index);
        if (place.runFirst == index) return split(root_, index);
        const Payload payload = *place.payload;
        const auto [before, rest] = split(root_, place.runFirst);
        const auto [run, after] = split(rest, place.runCount);
        release(run);
        const Index upper = newNode(index - place.runFirst, payload);
        const Index lower = newNode(place.runFirst + place.runCount - index, payload);
        return {merged(before, upper), merged(lower, after)};
    }

    template <class Change>
    void changeSingle(Index i, std::int64_t index, const Change& change) {
        Node& n = nodes_[i];
        const std::int64_t left = node(n.left).totalCount;
        if (index < left) {
            changeSingle(n.left, index, change);
        } else if (index < left + n.number) {
            change(n.payload);
            n.each = height(std::as_const(n.payload));
        } else {
            changeSingle(n.right, index - left - n.number, change);
        }
        sum(i);
    }

    std::vector<Node> nodes_ = std::vector<Node>(1);
    std::vector<Index> free_;
    Index root_ = none;
    std::uint32_t random_ = 2463534242U;
};

}  // namespace ostrel
