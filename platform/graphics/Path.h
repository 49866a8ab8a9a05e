#pragma once

#include "platform/graphics/Geometry.h"

#include <optional>
#include <string_view>
#include <vector>

namespace ostrel {

/// A vector outline made of straight lines, cubic curves and ellipses, in its own square of `extent` points.
struct Path {
    enum class Verb { moveTo, lineTo, cubicTo, close, ellipse };
    struct Element {
        Verb verb;
        CGPoint p1, p2,
            p3;  ///< cubicTo: two control points and the end; ellipse: p1 is the centre, p2 the radii
        friend bool operator==(const Element&, const Element&) = default;
    };

    std::vector<Element> elements;
    CGFloat extent = 24;
    CGFloat strokeWidth = 1.8;  ///< in units of the square; 0: the path is filled
    bool filled = false;

    Path& moveTo(CGFloat x, CGFloat y);
    Path& lineTo(CGFloat x, CGFloat y);
    Path& cubicTo(CGFloat x1, CGFloat y1, CGFloat x2, CGFloat y2, CGFloat x, CGFloat y);
    Path& ellipse(CGFloat cx, CGFloat cy, CGFloat rx, CGFloat ry);
    Path& close();
    /// An arc of a circle from one angle to another, in degrees clockwise from the right. A line joins it to
    /// the path so far unless `begins`.
    Path& arc(CGFloat cx, CGFloat cy, CGFloat radius, CGFloat from, CGFloat to, bool begins = true);
    Path& roundedRectangle(const CGRect& rect, CGFloat radius);
    friend bool operator==(const Path&, const Path&) = default;
};

/// The outline of a symbol of UIImage::systemImageNamed; absent for unknown names.
std::optional<Path> symbolPath(std::string_view name);

}  // namespace ostrel
