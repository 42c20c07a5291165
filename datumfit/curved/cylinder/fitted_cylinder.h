#pragma once

#include <datumfit/foundation/containers/dyn_arr.h>
#include <datumfit/foundation/containers/dyn_arr_iterator.h>
#include <datumfit/foundation/geometry/angle.h>
#include <datumfit/foundation/geometry/point3.h>
#include <datumfit/foundation/geometry/unit_vec3.h>

/// A cylinder that a search for several has found.
class sqFittedCylinder {
public:
    /// An invalid record: nothing is set.
    sqFittedCylinder();
    sqFittedCylinder(giPoint3 const & axis_point, giUnitVec3 const & axis_dir, double radius, double deviation);

    giPoint3 const & axis_point() const { return axis_point_; }
    giUnitVec3 const & axis_dir() const { return axis_dir_; }
    double radius() const { return radius_; }

    /// The root mean square distance of the points.
    double deviation() const { return deviation_; }

    /// 1 when the axis is not set, the radius is not above 0 or the deviation is negative; else 0.
    int invalid() const;

    /// 1 when the other is the same cylinder: its axis point lies no further than the distance tolerance from this
    /// axis, the radii differ by no more than that, and the axes, whichever way they point, by no more than the angle.
    /// Only that one point is looked at, so that the answer may change with the order of two tilted cylinders whose
    /// points lie far apart. 0 for a negative distance tolerance or an axis that is not set.
    int coincident(sqFittedCylinder const & other, double distance_tolerance, giAngle const & angle_tolerance) const;

private:
    giPoint3 axis_point_;
    giUnitVec3 axis_dir_;
    double radius_;
    double deviation_;
};

using sqFittedCylindercoDynArr = coDynArr<sqFittedCylinder>;
using sqFittedCylindercoDynArrcoIterator = coDynArrcoIterator<sqFittedCylinder>;
