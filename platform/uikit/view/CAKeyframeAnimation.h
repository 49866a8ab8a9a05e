#pragma once

#include <limits>
#include <string>
#include <vector>

namespace ostrel {

enum class CAMediaTimingFillMode { removed, forwards };

/// Animates one property of a layer through `values`, at equal intervals of `duration`.
/// `UIView::addAnimationForKey` copies the animation; the view's own properties do not change. The only
/// supported key path is "transform.rotation": radians, clockwise on screen, about the centre of the view,
/// applied after its transform.
struct CAKeyframeAnimation {
    /// A repeat count that does not end by itself.
    static constexpr double withoutEnd = std::numeric_limits<float>::max();

    std::string keyPath;
    std::vector<double> values;
    double duration = 0.25;  ///< seconds of one run; 0 or less: the view keeps the first value
    double repeatCount = 1;  ///< number of runs; may be fractional
    /// Whether the view removes the animation after the last run. Otherwise `fillMode` says what is shown
    /// then.
    bool removedOnCompletion = true;
    CAMediaTimingFillMode fillMode = CAMediaTimingFillMode::removed;
};

}  // namespace ostrel
