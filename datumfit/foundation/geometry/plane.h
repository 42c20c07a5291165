#pragma once

#include <datumfit/foundation/geometry/point3.h>
#include <datumfit/foundation/geometry/unit_vec3.h>

/// A plane: a point of it and its normal.
class giPlane {
public:
    giPlane(giUnitVec3 const & normal, giPoint3 const & point) : point_(point), normal_(normal) {}

    giPoint3 const & point() const { return point_; }
    giUnitVec3 const & normal() const { return normal_; }

    /// The distance of p, positive on the side of the normal.
    double distance(giPoint3 const & p) const { return normal_.dot(p - point_); }

private:
    giPoint3 point_;
    giUnitVec3 normal_;
};
