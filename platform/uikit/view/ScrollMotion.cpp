#include "platform/uikit/view/ScrollMotion.h"

namespace ostrel {

namespace {

constexpr CGFloat rubberStiffness = 0.55;
constexpr CGFloat restVelocity = 12;     // points a second; a slower fling ends
constexpr CGFloat bounceFrequency = 13;  // radians a second of the critically damped spring
constexpr double followTime = 0.05;      // seconds in which the wheel's distance shrinks by 1/e

CGFloat band(CGFloat excess, CGFloat viewport) {
    return viewport > 0 ? (1 - 1 / (excess * rubberStiffness / viewport + 1)) * viewport : 0;
}

CGFloat unband(CGFloat shown, CGFloat viewport) {
    if (!(viewport > 0)) return 0;
    const CGFloat share = std::min(shown / viewport, 0.99);
    return (1 / (1 - share) - 1) * viewport / rubberStiffness;
}

}  // namespace

CGFloat ScrollMotion::rubberBanded(CGFloat offset, CGFloat lower, CGFloat upper, CGFloat viewport) {
    if (offset < lower) return lower - band(lower - offset, viewport);
    if (offset > upper) return upper + band(offset - upper, viewport);
    return offset;
}

CGFloat ScrollMotion::unbanded(CGFloat shown, CGFloat lower, CGFloat upper, CGFloat viewport) {
    if (shown < lower) return lower - unband(lower - shown, viewport);
    if (shown > upper) return upper + unband(shown - upper, viewport);
    return shown;
}

void ScrollMotion::stop() {
    kind_ = Kind::rest;
    velocity_ = 0;
}

void ScrollMotion::fling(CGFloat position, CGFloat velocity, CGFloat lower, CGFloat upper) {
    position_ = position;
    velocity_ = std::clamp(velocity, -maximumVelocity, maximumVelocity);
    atLower_ = position < lower;
    kind_ = position < lower || position > upper ? Kind::bouncing : Kind::decelerating;
}

void ScrollMotion::glide(CGFloat from, CGFloat to, double duration, Goal goal) {
    kind_ = Kind::gliding;
    goal_ = goal;
    position_ = from_ = from;
    target_ = to;
    duration_ = duration;
    elapsed_ = 0;
    velocity_ = 0;
}

void ScrollMotion::follow(CGFloat from, CGFloat to) {
    kind_ = Kind::following;
    goal_ = Goal::withinLimits;
    position_ = from;
    target_ = to;
}

void ScrollMotion::shift(CGFloat distance) {
    position_ += distance;
    from_ += distance;
    target_ += distance;
}

bool ScrollMotion::end(CGFloat position) {
    position_ = position;
    stop();
    return false;
}

bool ScrollMotion::step(double seconds, CGFloat lower, CGFloat upper) {
    if (kind_ == Kind::gliding || kind_ == Kind::following) {
        switch (goal_) {
        case Goal::asGiven: break;
        case Goal::withinLimits: target_ = std::clamp(target_, lower, std::max(lower, upper)); break;
        case Goal::lowerLimit: target_ = lower; break;
        case Goal::upperLimit: target_ = upper; break;
        }
    }
    switch (kind_) {
    case Kind::rest: return false;
    case Kind::decelerating: return decelerate(seconds, lower, upper);
    case Kind::bouncing: return bounce(seconds, lower, upper);
    case Kind::gliding: {
        elapsed_ += seconds;
        const double t = duration_ > 0 ? elapsed_ / duration_ : 1;
        // The sum of the frames' steps has rounding errors.
        if (t > 1 - 1e-9) return end(target_);
        const CGFloat before = position_;
        position_ = from_ + (target_ - from_) * t * t * (3 - 2 * t);
        if (seconds > 0) velocity_ = (position_ - before) / seconds;
        return true;
    }
    case Kind::following: {
        const CGFloat before = position_;
        position_ += (target_ - position_) * (1 - std::exp(-seconds / followTime));
        if (seconds > 0) velocity_ = (position_ - before) / seconds;
        return std::abs(target_ - position_) < 0.5 ? end(target_) : true;
    }
    }
    return false;
}

bool ScrollMotion::decelerate(double seconds, CGFloat lower, CGFloat upper) {
    // The integral of v e^(kt), so that the distance does not depend on the number of frames.
    const CGFloat k = 1000 * std::log(decelerationRate);
    const CGFloat after = velocity_ * std::exp(k * seconds);
    position_ += (after - velocity_) / k;
    velocity_ = after;
    if (position_ < lower || position_ > upper) {
        atLower_ = position_ < lower;
        kind_ = Kind::bouncing;
        return true;
    }
    return std::abs(velocity_) < restVelocity ? end(position_) : true;
}

bool ScrollMotion::bounce(double seconds, CGFloat lower, CGFloat upper) {
    const CGFloat limit = atLower_ ? lower : upper;
    const CGFloat distance = position_ - limit;
    const CGFloat slope = velocity_ + bounceFrequency * distance;
    const CGFloat decay = std::exp(-bounceFrequency * seconds);
    const CGFloat next = (distance + slope * seconds) * decay;
    velocity_ = (velocity_ - bounceFrequency * slope * seconds) * decay;
    position_ = limit + next;
    if (distance * next < 0 && std::abs(velocity_) > 50 && position_ > lower && position_ < upper) {
        // The bounce ends at a limit with a velocity towards the content: it continues as a fling.
        kind_ = Kind::decelerating;
        return true;
    }
    if (distance * next < 0 || (std::abs(next) < 0.25 && std::abs(velocity_) < 20)) return end(limit);
    return true;
}

}  // namespace ostrel
