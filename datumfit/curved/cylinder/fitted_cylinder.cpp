#include <datumfit/curved/cylinder/fitted_cylinder.h>

#include <datumfit/foundation/geometry/point2.h>
#include <datumfit/foundation/geometry/workplane3.h>
#include <datumfit/foundation/utilities/math.h>

#include <cmath>

sqFittedCylinder::sqFittedCylinder() : radius_(-utMath::max_double()), deviation_(-utMath::max_double()) {}

sqFittedCylinder::sqFittedCylinder(giPoint3 const & axis_point, giUnitVec3 const & axis_dir, double radius,
                                   double deviation)
    : axis_point_(axis_point), axis_dir_(axis_dir), radius_(radius), deviation_(deviation) {}

int sqFittedCylinder::invalid() const {
    bool const sound = radius_ > 0.0 && !(deviation_ < 0.0);
    return !axis_point_.invalid() && !axis_dir_.invalid() && sound ? 0 : 1;
}

int sqFittedCylinder::coincident(sqFittedCylinder const & other, double distance_tolerance,
                                 giAngle const & angle_tolerance) const {
    if (distance_tolerance < 0.0 || axis_dir_.invalid() || axis_point_.invalid() || other.axis_point_.invalid()) {
        return 0;
    }
    giWorkplane3 const across(axis_point_, axis_dir_.any_normal(), axis_dir_);
    giPoint3 const there = across.to_work(other.axis_point_);
    bool const same_axis = giPoint2(there.x(), there.y()).distance(giPoint2(0.0, 0.0)) <= distance_tolerance;
    bool const same_radius = !(std::abs(radius_ - other.radius_) > distance_tolerance);
    bool const same_direction = !(angle_tolerance.cos() > std::abs(axis_dir_.dot(other.axis_dir_)));
    return same_axis && same_radius && same_direction ? 1 : 0;
}
