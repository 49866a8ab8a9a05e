#pragma once

#include "platform/graphics/Geometry.h"

namespace ostrel {

/// The motion of a scroll offset along one axis without a finger: after a fling, back from beyond the limits,
/// to the goal of the program or of a key, after a wheel's notch. Pure arithmetic; points and seconds.
class ScrollMotion final {
public:
    enum class Kind { rest, decelerating, bouncing, gliding, following };
    /// The goal of a glide or of the wheel: a fixed offset, or a limit, which may change during the motion.
    enum class Goal { asGiven, withinLimits, lowerLimit, upperLimit };

    /// The factor by which the velocity shrinks in a millisecond.
    static constexpr CGFloat decelerationRate = 0.998;
    static constexpr CGFloat maximumVelocity = 12'000;

    /// The offset at which the content is shown while a finger has dragged it to `offset`: beyond the limits
    /// the content follows less and less, and never by more than a viewport.
    static CGFloat rubberBanded(CGFloat offset, CGFloat lower, CGFloat upper, CGFloat viewport);
    /// The inverse of `rubberBanded`.
    static CGFloat unbanded(CGFloat shown, CGFloat lower, CGFloat upper, CGFloat viewport);

    Kind kind() const { return kind_; }
    CGFloat position() const { return position_; }
    CGFloat velocity() const { return velocity_; }
    CGFloat target() const { return target_; }

    void stop();
    /// The finger leaves the content at `position` with `velocity`. Outside of the limits the content bounces
    /// back.
    void fling(CGFloat position, CGFloat velocity, CGFloat lower, CGFloat upper);
    void glide(CGFloat from, CGFloat to, double duration, Goal goal);
    /// Approaches `to` exponentially. Called again with every notch of a wheel.
    void follow(CGFloat from, CGFloat to);
    /// The content was shifted by `distance`; the motion continues relative to the content.
    void shift(CGFloat distance);
    /// Advances the motion by `seconds`. False when the motion has ended, at its exact goal.
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
