#include "platform/graphics/Path.h"

#include <numbers>

namespace ostrel {

Path& Path::moveTo(CGFloat x, CGFloat y) {
    elements.push_back({Verb::moveTo, {x, y}, {}, {}});
    return *this;
}

Path& Path::lineTo(CGFloat x, CGFloat y) {
    elements.push_back({Verb::lineTo, {x, y}, {}, {}});
    return *this;
}

Path& Path::cubicTo(CGFloat x1, CGFloat y1, CGFloat x2, CGFloat y2, CGFloat x, CGFloat y) {
    elements.push_back({Verb::cubicTo, {x1, y1}, {x2, y2}, {x, y}});
    return *this;
}

Path& Path::ellipse(CGFloat cx, CGFloat cy, CGFloat rx, CGFloat ry) {
    elements.push_back({Verb::ellipse, {cx, cy}, {rx, ry}, {}});
    return *this;
}

Path& Path::close() {
    elements.push_back({Verb::close, {}, {}, {}});
    return *this;
}

Path& Path::arc(CGFloat cx, CGFloat cy, CGFloat radius, CGFloat from, CGFloat to, bool begins) {
    const auto radians = [](CGFloat degrees) { return degrees * std::numbers::pi / 180; };
    const int pieces = std::max(1, static_cast<int>(std::ceil(std::abs(to - from) / 90)));
    const CGFloat step = radians(to - from) / pieces;
    // The length of the handles with which a cubic curve is nearest to the arc.
    const CGFloat handle = 4.0 / 3 * std::tan(step / 4) * radius;
    CGFloat angle = radians(from);
    CGPoint start{cx + radius * std::cos(angle), cy + radius * std::sin(angle)};
    begins ? moveTo(start.x, start.y) : lineTo(start.x, start.y);
    for (int i = 0; i < pieces; ++i) {
        const CGFloat next = angle + step;
        const CGPoint end{cx + radius * std::cos(next), cy + radius * std::sin(next)};
        cubicTo(start.x - handle * std::sin(angle), start.y + handle * std::cos(angle), end.x + handle * std::sin(next),
                end.y - handle * std::cos(next), end.x, end.y);
        angle = next;
        start = end;
    }
    return *this;
}

Path& Path::roundedRectangle(const CGRect& rect, CGFloat radius) {
    const CGFloat r = std::min({radius, rect.width() / 2, rect.height() / 2});
    arc(rect.maxX() - r, rect.minY() + r, r, -90, 0);
    arc(rect.maxX() - r, rect.maxY() - r, r, 0, 90, false);
    arc(rect.minX() + r, rect.maxY() - r, r, 90, 180, false);
    arc(rect.minX() + r, rect.minY() + r, r, 180, 270, false);
    return close();
}

}  // namespace ostrel
