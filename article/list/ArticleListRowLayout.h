#pragma once

#include "platform/graphics/Geometry.h"

namespace ostrel {

/// Where the parts of an article's row in the list stand, in points from the row's upper left corner: the
/// avatar at the left, name and time beside it, the text below them, and the buttons along the lower edge.
struct ArticleListRowLayout {
    /// What the text leaves free at the right for the row's accessory.
    static constexpr CGFloat plainAccessoryRoom = 30, ownersAccessoryRoom = 65;
    static constexpr CGFloat textTop = 32;
    /// From the text's lower edge to the row's; the buttons stand in there.
    static constexpr CGFloat roomBelowText = 35;
    static constexpr CGFloat smallestTextHeight = 24, largestTextHeight = 120;

    struct Content {
        CGFloat accessoryRoom = plainAccessoryRoom;
        /// The width of the author's name on one line.
        CGFloat nameWidth = 0;
        /// As `shownTextHeight` gives it; a row without a record has the default.
        CGFloat textHeight = 36;
    };

    CGRect face, name, text, time, like, comment, share;

    static ArticleListRowLayout make(CGSize row, const Content& content);
    /// The width in which the text is measured and shown; 0 in a row that is too narrow.
    static CGFloat textWidth(CGFloat rowWidth, CGFloat accessoryRoom);
    /// The height that a text of `measured` points gets: 4 % more, within the smallest and the largest
    /// height.
    static CGFloat shownTextHeight(CGFloat measured);
    /// How many lines decide the text's height; further lines are cut off in any case.
    static int measuredLines(CGFloat lineHeight);
};

}  // namespace ostrel
