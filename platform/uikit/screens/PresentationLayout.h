#pragma once

#include "platform/graphics/Geometry.h"

#include <optional>

namespace ostrel {

/// How a presented screen stands in its window: over all of it, as a card in the middle, as a sheet at the lower edge
/// (with a background of its own or bare), beside what it belongs to, or as an alert.
enum class PresentationKind { cover, card, sheet, bareSheet, popover, alert };

/// What a presentation may use of its window.
struct PresentationSpace {
    CGSize window;
    UIEdgeInsets safeArea;
    std::optional<CGRect> anchor;  ///< of a popover, in the window; absent: the middle
};

/// The frame in the window of a presentation that wants `preferred` points (0: the usual size of its kind). Always
/// within the window.
CGRect presentationFrame(PresentationKind kind, CGSize preferred, const PresentationSpace& space);

}  // namespace ostrel
