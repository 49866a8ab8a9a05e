#pragma once

#include "platform/graphics/Geometry.h"

#include <optional>

namespace ostrel {

/// The frames of the login screen's parts, in points: one centred column that is at most `maximumWidth` wide.
struct LoginLayout {
    static constexpr CGFloat maximumWidth = 400;
    static constexpr CGFloat margin = 20;
    static constexpr CGFloat rowHeight = 52;
    static constexpr CGFloat buttonHeight = 50;

    /// The heights of the texts at `columnWidth(bounds)`. An absent text is not shown.
    struct Texts {
        CGFloat heading = 0;
        CGFloat subtitle = 0;
        std::optional<CGFloat> hint;
        std::optional<CGFloat> error;
        /// The width of the wider row title.
        CGFloat rowTitleWidth = 0;
    };

    CGRect heading, subtitle, mode, card, hint, error, button;
    /// In the coordinates of the card.
    CGRect nameTitle, nameField, separator, passwordTitle, passwordField;
    /// The height of the scrolled content, including the margin below the button.
    CGFloat contentHeight = 0;

    static CGFloat columnWidth(CGSize bounds);
    /// About a third of the height that the column leaves free is above it.
    static LoginLayout make(CGSize bounds, const Texts& texts);
};

}  // namespace ostrel
