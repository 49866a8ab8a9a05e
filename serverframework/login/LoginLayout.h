#pragma once

#include "platform/graphics/Geometry.h"

#include <optional>

namespace ostrel {

/// Where the parts of the login screen stand: one column, at most `maximumWidth` wide, centred. Points.
struct LoginLayout {
    static constexpr CGFloat maximumWidth = 400;
    static constexpr CGFloat margin = 20;
    static constexpr CGFloat rowHeight = 52;
    static constexpr CGFloat buttonHeight = 50;

    /// The heights of the texts at `columnWidth(bounds)`; absent: not shown.
    struct Texts {
        CGFloat heading = 0;
        CGFloat subtitle = 0;
        std::optional<CGFloat> hint;
        std::optional<CGFloat> error;
        /// The width of the longer of the two row titles.
        CGFloat rowTitleWidth = 0;
    };

    CGRect heading, subtitle, mode, card, hint, error, button;
    /// Within the card.
    CGRect nameTitle, nameField, separator, passwordTitle, passwordField;
    /// What there is to scroll, the margin below the button included.
    CGFloat contentHeight = 0;

    static CGFloat columnWidth(CGSize bounds);
    /// Higher windows leave more room above the column, about a third of what is left over.
    static LoginLayout make(CGSize bounds, const Texts& texts);
};

}  // namespace ostrel
