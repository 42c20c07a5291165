#pragma once

#include <datumfit/foundation/containers/dyn_arr.h>
#include <datumfit/foundation/containers/dyn_arr_iterator.h>
#include <datumfit/foundation/geometry/angle.h>
#include <datumfit/foundation/geometry/point3.h>
#include <datumfit/foundation/geometry/unit_vec3.h>

/// A cone that a search for several has found.
class sqFittedCone {
public:
    /// An invalid record: nothing is set.
    sqFittedCone();
    sqFittedCone(giPoint3 const & apex, giUnitVec3 const & axis_dir, giAngle const & half_angle, double deviation);

    giPoint3 const & apex() const { return apex_; }

    /// Points from the surface towards the apex.
    giUnitVec3 const & axis_dir() const { return axis_dir_; }
    giAngle const & half_angle() const { return half_angle_; }

    /// The root mean square distance of the points.
    double deviation() const { return deviation_; }

    /// 1 when the apex or the axis is not set, the half angle is not between 0 and 90 degrees, both excluded, or the
    /// deviation is not at least 0; else 0.
    int invalid() const;

    /// 1 when the other is the same cone: the apexes lie no further apart than the distance tolerance, and the half
    /// angles as well as the axes, whichever way they point, differ by no more than the angle. 0 for a negative
    /// tolerance, or where an apex or an axis is not set.
    int coincident(sqFittedCone const & other, double distance_tolerance, giAngle const & angle_tolerance) const;

private:
    giPoint3 apex_;
    giUnitVec3 axis_dir_;
    giAngle half_angle_;
    double deviation_;
};

using sqFittedConecoDynArr = coDynArr<sqFittedCone>;
using sqFittedConecoDynArrcoIterator = coDynArrcoIterator<sqFittedCone>;
