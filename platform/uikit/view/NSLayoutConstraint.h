#pragma once

#include "platform/graphics/Geometry.h"

#include <memory>

namespace ostrel {

class UIView;

/// "This view's height relates to that view's height": what rows size themselves by. The only kind the platform has.
/// height = (or >=) multiplier * item's height + constant, in points.
struct NSLayoutConstraint {
    enum class Relation { equal, greaterThanOrEqual };
    Relation relation = Relation::equal;
    std::weak_ptr<const UIView> toItem;
    CGFloat multiplier = 1;
    CGFloat constant = 0;
};

}  // namespace ostrel
