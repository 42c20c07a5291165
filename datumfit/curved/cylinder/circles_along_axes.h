#pragma once

#include <datumfit/curved/cylinder/circle_bound.h>
#include <datumfit/curved/cylinder/probe_set.h>
#include <datumfit/foundation/geometry/unit_vec3.h>
#include <datumfit/primitives/repeated_circle_fit.h>

namespace datumfit {
namespace internal {

/// Fits circles to points as they are seen along one axis after another: cylinders of a given direction.
///
/// The buffers and solvers serve all axes; nothing is allocated for one.
class circles_along_axes {
public:
    /// The points and radii are referred to.
    explicit circles_along_axes(probe_set const & set);

    /// What the sum of squares of the circle along an axis can not fall below.
    double bound(giUnitVec3 const & axis) const;

    /// Fits the circle along an axis. False with fewer than 3 points, or when the fit leads to no number.
    bool fit(giUnitVec3 const & axis);

    /// Of the circle fitted last: a point of the axis through its centre, its radius, the sum of the squared distances
    /// and the greatest distance of a point from it, probe radii counted in.
    giPoint3 const & centre() const { return centre_; }
    double radius() const { return circle_.radius(); }
    double sum_of_squares() const { return sum_; }
    double greatest_distance() const;

private:
    probe_set set_;
    circle_bound bound_;
    giPoint3 mean_;
    repeated_circle_fit circle_;
    giPoint3 centre_;
    double sum_ = 0.0;
};

}  // namespace internal
}  // namespace datumfit
