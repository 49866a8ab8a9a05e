#include "platform/uikit/screens/PresentationLayout.h"

#include <algorithm>
#include <array>

namespace ostrel {

namespace {

constexpr CGSize cardSize{540, 620};
constexpr CGSize popoverSize{320, 480};
constexpr CGSize alertSize{270, 120};
constexpr CGFloat cardMargin = 20;
constexpr CGFloat popoverMargin = 8;
constexpr CGFloat popoverGap = 6;
constexpr CGFloat sheetTopMargin = 10;

CGSize bounded(CGSize preferred, CGSize usual, const CGRect& space) {
    return {std::min(preferred.width > 0 ? preferred.width : usual.width, space.width()),
            std::min(preferred.height > 0 ? preferred.height : usual.height, space.height())};
}

/// `space` less a margin; the margin shrinks in a very small space.
CGRect withMargin(const CGRect& space, CGFloat margin) {
    return space.insetBy(std::min(margin, space.width() / 8), std::min(margin, space.height() / 8));
}

/// The position of a stretch of `length` within `low` to `high`, as near to `wanted` as fits.
CGFloat keptWithin(CGFloat wanted, CGFloat length, CGFloat low, CGFloat high) {
    return std::max(low, std::min(wanted, high - length));
}

CGRect kept(const CGRect& rect, const CGRect& space) {
    return {keptWithin(rect.minX(), rect.width(), space.minX(), space.maxX()),
            keptWithin(rect.minY(), rect.height(), space.minY(), space.maxY()), rect.width(), rect.height()};
}

CGRect centred(CGSize size, const CGRect& space) {
    return kept({{std::floor(space.midX() - size.width / 2), std::floor(space.midY() - size.height / 2)}, size}, space);
}

CGRect besideAnchor(CGSize size, CGRect anchor, const CGRect& space, const CGRect& whole) {
    // An anchor that was scrolled out of the window places the popover at the edge by which the anchor left.
    anchor = anchor.intersects(whole) ? anchor.intersection(whole) : kept({anchor.origin, {}}, whole);
    const CGFloat x = std::floor(anchor.midX() - size.width / 2), y = std::floor(anchor.midY() - size.height / 2);
    struct Side {
        CGFloat room, needed;
        CGPoint origin;
    };
    const std::array<Side, 4> sides{{
        {space.maxY() - anchor.maxY() - popoverGap, size.height, {x, anchor.maxY() + popoverGap}},
        {anchor.minY() - space.minY() - popoverGap, size.height, {x, anchor.minY() - popoverGap - size.height}},
        {space.maxX() - anchor.maxX() - popoverGap, size.width, {anchor.maxX() + popoverGap, y}},
        {anchor.minX() - space.minX() - popoverGap, size.width, {anchor.minX() - popoverGap - size.width, y}},
    }};
    const auto fits = std::ranges::find_if(sides, [](const Side& side) { return side.room >= side.needed; });
    const auto& side = fits != sides.end() ? *fits : *std::ranges::max_element(sides, {}, [](const Side& candidate) {
        return candidate.room - candidate.needed;
    });
    return kept({side.origin, size}, space);
}

}  // namespace

CGRect presentationFrame(PresentationKind kind, CGSize preferred, const PresentationSpace& space) {
    const CGRect whole{{}, space.window};
    const CGRect safe = whole.insetBy(space.safeArea);
    switch (kind) {
    case PresentationKind::cover: return whole;
    case PresentationKind::card: {
        const CGRect room = withMargin(safe, cardMargin);
        return centred(bounded(preferred, cardSize, room), room);
    }
    case PresentationKind::alert: {
        const CGRect room = withMargin(safe, cardMargin);
        return centred(bounded(preferred, alertSize, room), room);
    }
    case PresentationKind::sheet:
    case PresentationKind::bareSheet: {
        const CGFloat most = std::max(0.0, whole.height() - space.safeArea.top - sheetTopMargin);
        const CGFloat wanted = preferred.height > 0 ? preferred.height + space.safeArea.bottom : most;
        const CGFloat height = std::min(wanted, most);
        return {0, whole.height() - height, whole.width(), height};
    }
    case PresentationKind::popover: {
        const CGRect room = withMargin(safe, popoverMargin);
        const CGSize size = bounded(preferred, popoverSize, room);
        return space.anchor ? besideAnchor(size, *space.anchor, room, whole) : centred(size, room);
    }
    }
    return whole;
}

}  // namespace ostrel
