#pragma once

#include <limits>
#include <string>
#include <vector>

namespace ostrel {

enum class CAMediaTimingFillMode { removed, forwards };

/// Moves one property of a layer through `values`, evenly over `duration`; a value, copied where it is added
/// (`UIView::addAnimationForKey`). What the view itself holds stays as it is. The one key path known is
/// "transform.rotation": radians, clockwise on screen, about the centre of the view, on top of its transform.
struct CAKeyframeAnimation {
    /// A repeat count that does not end by itself.
    static constexpr double withoutEnd = std::numeric_limits<float>::max();

    std::string keyPath;
    std::vector<double> values;
    double duration = 0.25;  ///< seconds of one run; not above 0: the values are taken as one that stands
    double repeatCount = 1;  ///< runs, also parts of one
    /// At its end the animation leaves the view; else it stays, and shows as `fillMode` says.
    bool removedOnCompletion = true;
    CAMediaTimingFillMode fillMode = CAMediaTimingFillMode::removed;
};

}  // namespace ostrel
