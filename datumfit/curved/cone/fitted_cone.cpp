#include <datumfit/curved/cone/fitted_cone.h>

#include <datumfit/foundation/utilities/math.h>

#include <cmath>

sqFittedCone::sqFittedCone() : deviation_(-utMath::max_double()) {}

sqFittedCone::sqFittedCone(giPoint3 const & apex, giUnitVec3 const & axis_dir, giAngle const & half_angle,
                           double deviation)
    : apex_(apex), axis_dir_(axis_dir), half_angle_(half_angle), deviation_(deviation) {}

int sqFittedCone::invalid() const {
    bool const opens = half_angle_ > giAngle(giAngle0) && half_angle_ < giAngle(giAngle90);
    return !apex_.invalid() && !axis_dir_.invalid() && opens && deviation_ >= 0.0 ? 0 : 1;
}

int sqFittedCone::coincident(sqFittedCone const & other, double distance_tolerance,
                             giAngle const & angle_tolerance) const {
    if (!(distance_tolerance >= 0.0) || axis_dir_.invalid() || other.axis_dir_.invalid()) return 0;
    bool const same_apex = apex_.distance(other.apex_) <= distance_tolerance;
    bool const same_angle = half_angle_.coincident(other.half_angle_, angle_tolerance);
    bool const same_direction = !(angle_tolerance.cos() > std::abs(axis_dir_.dot(other.axis_dir_)));
    return same_apex && same_angle && same_direction ? 1 : 0;
}
