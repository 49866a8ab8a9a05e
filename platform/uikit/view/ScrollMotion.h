#pragma once

#include "platform/graphics/Geometry.h"

namespace ostrel {

/// How an offset moves by itself along one axis: after a fling, back from beyond the ends, to where the program or a key
/// sends it, after a wheel. Pure arithmetic of time; points and seconds.
class ScrollMotion final {
public:
    enum class Kind { rest, decelerating, bouncing, gliding, following };
    /// What a glide or the wheel is bound for: a fixed offset, or one of the limits, which may move meanwhile.
    enum class Goal { asGiven, withinLimits, lowerLimit, upperLimit };

    /// The share of the velocity that a millisecond leaves.
    static constexpr CGFloat decelerationRate = 0.998;
    static constexpr CGFloat maximumVelocity = 12'000;

    /// Where a finger that has dragged to `offset` leaves the content: beyond the limits it follows less and less, never by
    /// more than a viewport.
    static CGFloat rubberBanded(CGFloat offset, CGFloat lower, CGFloat upper, CGFloat viewport);
    /// The inverse.
    static CGFloat unbanded(CGFloat shown, CGFloat lower, CGFloat upper, CGFloat viewport);

    Kind kind() const { return kind_; }
    CGFloat position() const { return position_; }
    CGFloat velocity() const { return velocity_; }
    CGFloat target() const { return target_; }

    void stop();
    /// Lets go of the content at `position`; bounces when that lies outside of the limits.
    void fling(CGFloat position, CGFloat velocity, CGFloat lower, CGFloat upper);
    void glide(CGFloat from, CGFloat to, double duration, Goal goal);
    /// Goes to `to` soon, quickly at first; called again with every notch of a wheel.
    void follow(CGFloat from, CGFloat to);
    /// The content moved by `distance` under the motion, which goes on in it.
    void shift(CGFloat distance);
    /// Moves on by `seconds`. False when it has come to rest, then at its exact end.
    bool step(double seconds, CGFloat lower, CGFloat upper);

private:
    bool decelerate(double seconds, CGFloat lower, CGFloat upper);
    bool bounce(double seconds, CGFloat lower, CGFloat upper);
    bool end(CGFloat position);

    Kind kind_ = Kind::rest;
    Goal goal_ = Goal::asGiven;
    CGFloat position_ = 0, velocity_ = 0, from_ = 0, target_ = 0;
    double duration_ = 0, elapsed_ = 0;
    bool atLower_ = false;
};

}  // namespace ostrel
