#pragma once

#include "platform/graphics/Geometry.h"

#include <memory>

namespace ostrel {

class UIView;

/// Relates the height of one view to the height of another; rows compute their height from such constraints.
/// The platform has no other kind of constraint. height = (or >=) multiplier * item's height + constant, in
/// points.
struct NSLayoutConstraint {
    enum class Relation { equal, greaterThanOrEqual };
    Relation relation = Relation::equal;
    std::weak_ptr<const UIView> toItem;
    CGFloat multiplier = 1;
    CGFloat constant = 0;
};

}  // namespace ostrel
