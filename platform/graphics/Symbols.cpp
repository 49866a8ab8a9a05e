#include "platform/graphics/Path.h"

#include <array>
#include <utility>

namespace ostrel {

namespace {

/// A dot, a little wider than the stroke. Some renderers leave a hole in a stroked circle that is smaller
/// than the pen; the short line in the middle closes the hole.
Path& dot(Path& path, CGFloat x, CGFloat y, CGFloat radius) {
    return path.ellipse(x, y, radius, radius).moveTo(x - 0.05, y).lineTo(x + 0.05, y);
}

constexpr CGFloat markDot = 0.35, menuDot = 0.65;

Path& ring(Path& path) { return path.ellipse(12, 12, 9, 9); }

void chevronRight(Path& path) { path.moveTo(9, 5).lineTo(16, 12).lineTo(9, 19); }

void chevronLeft(Path& path) { path.moveTo(15, 5).lineTo(8, 12).lineTo(15, 19); }

void chevronDown(Path& path) { path.moveTo(5, 9).lineTo(12, 16).lineTo(19, 9); }

void checkmark(Path& path) { path.moveTo(5, 12.5).lineTo(10, 17.5).lineTo(19, 7); }

void infoCircle(Path& path) {
    ring(path);
    dot(path, 12, 7.9, markDot);
    path.moveTo(12, 11.4).lineTo(12, 16.4);
}

void exclamationmarkCircle(Path& path) {
    ring(path);
    path.moveTo(12, 7.4).lineTo(12, 12.8);
    dot(path, 12, 16.2, markDot);
}

void plus(Path& path) { path.moveTo(12, 4.5).lineTo(12, 19.5).moveTo(4.5, 12).lineTo(19.5, 12); }

void xmark(Path& path) { path.moveTo(6, 6).lineTo(18, 18).moveTo(18, 6).lineTo(6, 18); }

void ellipsis(Path& path) {
    for (const CGFloat x : {5.5, 12.0, 18.5}) dot(path, x, 12, menuDot);
}

void share(Path& path) {
    path.moveTo(12, 15).lineTo(12, 2.8).moveTo(8.2, 6.4).lineTo(12, 2.6).lineTo(15.8, 6.4);
    path.moveTo(8.4, 9.4).lineTo(6.8, 9.4);
    path.arc(6.8, 11.2, 1.8, -90, -180, false);
    path.arc(6.8, 19.2, 1.8, 180, 90, false);
    path.arc(17.2, 19.2, 1.8, 90, 0, false);
    path.arc(17.2, 11.2, 1.8, 0, -90, false);
    path.lineTo(15.6, 9.4);
}

void trash(Path& path) {
    path.moveTo(4, 6.4).lineTo(20, 6.4);
    path.moveTo(9, 6.2).lineTo(9, 4.6).cubicTo(9, 3.9, 9.5, 3.4, 10.2, 3.4).lineTo(13.8, 3.4);
    path.cubicTo(14.5, 3.4, 15, 3.9, 15, 4.6).lineTo(15, 6.2);
    path.moveTo(5.8, 6.6).lineTo(6.6, 19).cubicTo(6.7, 20.2, 7.4, 20.8, 8.5, 20.8).lineTo(15.5, 20.8);
    path.cubicTo(16.6, 20.8, 17.3, 20.2, 17.4, 19).lineTo(18.2, 6.6);
    path.moveTo(10, 10.4).lineTo(10.3, 17).moveTo(14, 10.4).lineTo(13.7, 17);
}

void pencil(Path& path) {
    path.moveTo(4, 20).lineTo(5.1, 15.6).lineTo(16.1, 4.6).cubicTo(16.9, 3.8, 18.2, 3.8, 19, 4.6);
    path.lineTo(19.4, 5).cubicTo(20.2, 5.8, 20.2, 7.1, 19.4, 7.9).lineTo(8.4, 18.9).close();
    path.moveTo(13.9, 6.8).lineTo(17.2, 10.1);
}

void link(Path& path) {
    // Two links of a chain along the rising diagonal, each open where the other one crosses it.
    path.moveTo(10.2, 13.8).cubicTo(8.6, 12.2, 8.6, 9.7, 10.2, 8.1).lineTo(13.4, 4.9);
    path.cubicTo(15, 3.3, 17.5, 3.3, 19.1, 4.9).cubicTo(20.7, 6.5, 20.7, 9, 19.1, 10.6).lineTo(16.9, 12.8);
    path.moveTo(13.8, 10.2).cubicTo(15.4, 11.8, 15.4, 14.3, 13.8, 15.9).lineTo(10.6, 19.1);
    path.cubicTo(9, 20.7, 6.5, 20.7, 4.9, 19.1).cubicTo(3.3, 17.5, 3.3, 15, 4.9, 13.4).lineTo(7.1, 11.2);
}

void compass(Path& path) {
    ring(path);
    path.moveTo(16.2, 7.8).lineTo(13.7, 13.7).lineTo(7.8, 16.2).lineTo(10.3, 10.3).close();
}

void envelope(Path& path) {
    path.roundedRectangle({3, 5.2, 18, 13.6}, 2.4);
    path.moveTo(3.8, 6.6).lineTo(10.7, 12.5).cubicTo(11.4, 13.1, 12.6, 13.1, 13.3, 12.5).lineTo(20.2, 6.6);
}

void personCircle(Path& path) {
    ring(path).ellipse(12, 9.6, 3.1, 3.1);
    path.moveTo(5.9, 18.4).cubicTo(7, 15.9, 9.3, 14.9, 12, 14.9).cubicTo(14.7, 14.9, 17, 15.9, 18.1, 18.4);
}

void arrowClockwise(Path& path) {
    path.arc(12, 12.4, 7.6, -35, -340);
    path.moveTo(18.9, 3.6).lineTo(18.6, 8.3).lineTo(13.9, 8);
}

void documents(Path& path) {
    path.roundedRectangle({9, 8.4, 11, 12.6}, 2.2);
    path.moveTo(6.2, 16.2).lineTo(5.6, 16.2);
    path.arc(6.2, 14, 2.2, 90, 180, false);
    path.arc(6.2, 5.2, 2.2, 180, 270, false);
    path.arc(12.8, 5.2, 2.2, 270, 360, false);
}

constexpr std::array<std::pair<std::string_view, void (*)(Path&)>, 18> symbols{{
    {"chevron.right", chevronRight},
    {"chevron.left", chevronLeft},
    {"chevron.down", chevronDown},
    {"checkmark", checkmark},
    {"info.circle", infoCircle},
    {"plus", plus},
    {"square.and.arrow.up", share},
    {"xmark", xmark},
    {"trash", trash},
    {"pencil", pencil},
    {"link", link},
    {"safari", compass},
    {"envelope", envelope},
    {"person.crop.circle", personCircle},
    {"arrow.clockwise", arrowClockwise},
    {"ellipsis", ellipsis},
    {"exclamationmark.circle", exclamationmarkCircle},
    {"doc.on.doc", documents},
}};

}  // namespace

std::optional<Path> symbolPath(std::string_view name) {
    for (const auto& [known, draw] : symbols) {
        if (known != name) continue;
        Path path;
        draw(path);
        return path;
    }
    return std::nullopt;
}

}  // namespace ostrel
