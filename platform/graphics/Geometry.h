#pragma once

#include <algorithm>
#include <cmath>

namespace ostrel {

/// Lengths and positions are points: 1/160 inch on a phone held in the hand, one device pixel at scale 1.
using CGFloat = double;

struct CGPoint {
    CGFloat x = 0, y = 0;
    friend bool operator==(const CGPoint&, const CGPoint&) = default;
};

struct CGSize {
    CGFloat width = 0, height = 0;
    friend bool operator==(const CGSize&, const CGSize&) = default;
};

struct UIEdgeInsets {
    CGFloat top = 0, left = 0, bottom = 0, right = 0;
    friend bool operator==(const UIEdgeInsets&, const UIEdgeInsets&) = default;
};

/// A rectangle with its origin in the upper left corner; y grows downwards.
struct CGRect {
    CGPoint origin;
    CGSize size;

    constexpr CGRect() = default;
    constexpr CGRect(CGFloat x, CGFloat y, CGFloat width, CGFloat height) : origin{x, y}, size{width, height} {}
    constexpr CGRect(CGPoint o, CGSize s) : origin(o), size(s) {}

    CGFloat minX() const { return origin.x; }
    CGFloat minY() const { return origin.y; }
    CGFloat maxX() const { return origin.x + size.width; }
    CGFloat maxY() const { return origin.y + size.height; }
    CGFloat midX() const { return origin.x + size.width / 2; }
    CGFloat midY() const { return origin.y + size.height / 2; }
    CGFloat width() const { return size.width; }
    CGFloat height() const { return size.height; }
    bool isEmpty() const { return !(size.width > 0 && size.height > 0); }
    /// The left and upper edges belong to the rectangle, the others do not.
    bool contains(CGPoint p) const { return p.x >= minX() && p.x < maxX() && p.y >= minY() && p.y < maxY(); }
    bool intersects(const CGRect& r) const {
        return minX() < r.maxX() && r.minX() < maxX() && minY() < r.maxY() && r.minY() < maxY();
    }
    CGRect intersection(const CGRect& r) const {
        const CGFloat x = std::max(minX(), r.minX()), y = std::max(minY(), r.minY());
        return {x, y, std::max(0.0, std::min(maxX(), r.maxX()) - x), std::max(0.0, std::min(maxY(), r.maxY()) - y)};
    }
    CGRect offsetBy(CGFloat dx, CGFloat dy) const { return {origin.x + dx, origin.y + dy, size.width, size.height}; }
    CGRect insetBy(const UIEdgeInsets& i) const {
        return {origin.x + i.left, origin.y + i.top, std::max(0.0, size.width - i.left - i.right),
                std::max(0.0, size.height - i.top - i.bottom)};
    }
    CGRect insetBy(CGFloat dx, CGFloat dy) const { return insetBy(UIEdgeInsets{dy, dx, dy, dx}); }
    friend bool operator==(const CGRect&, const CGRect&) = default;
};

/// x' = a x + c y + tx, y' = b x + d y + ty; applied about the centre of a view.
struct CGAffineTransform {
    CGFloat a = 1, b = 0, c = 0, d = 1, tx = 0, ty = 0;

    static CGAffineTransform translation(CGFloat x, CGFloat y) { return {1, 0, 0, 1, x, y}; }
    static CGAffineTransform scale(CGFloat x, CGFloat y) { return {x, 0, 0, y, 0, 0}; }
    /// Radians, clockwise on screen.
    static CGAffineTransform rotation(CGFloat angle) {
        return {std::cos(angle), std::sin(angle), -std::sin(angle), std::cos(angle), 0, 0};
    }
    bool isIdentity() const { return *this == CGAffineTransform{}; }
    CGPoint apply(CGPoint p) const { return {a * p.x + c * p.y + tx, b * p.x + d * p.y + ty}; }
    friend bool operator==(const CGAffineTransform&, const CGAffineTransform&) = default;
};

}  // namespace ostrel
