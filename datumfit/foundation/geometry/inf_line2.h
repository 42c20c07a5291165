#pragma once

#include <datumfit/foundation/geometry/point2.h>
#include <datumfit/foundation/geometry/unit_vec2.h>

/// An infinite line in the plane: a point of it and its direction.
class giInfLine2 {
public:
    giInfLine2(giPoint2 const & point, giUnitVec2 const & direction) : point_(point), direction_(direction) {}

    giPoint2 const & point() const { return point_; }
    giUnitVec2 const & direction() const { return direction_; }

    /// The distance of p, positive to the left of the direction.
    double distance_of_point(giPoint2 const & p) const { return direction_.cross(p - point_); }

private:
    giPoint2 point_;
    giUnitVec2 direction_;
};
