#pragma once

#include <datumfit/primitives/circle_fits.h>

namespace datumfit {
namespace internal {

/// Fits circles to one set of points of the plane after another, all of one size, for searches that try many: nothing
/// is allocated after the first.
class repeated_circle_fit {
public:
    /// For n points, or probe centres with their radii (null for none), which are referred to.
    repeated_circle_fit(int n, doublecoDynArr const * radii, int inside);

    /// The points, to be written before each fit; best counted from a place among them.
    giPoint2coDynArr & points() { return points_; }
    giPoint2coDynArr const & points() const { return points_; }

    /// Fits the circle. False with fewer than 3 points.
    bool fit();

    /// Of the circle fitted last, the deviation as the root mean square distance.
    giPoint2 centre() const { return giPoint2(circle_.read(0), circle_.read(1)); }
    double radius() const { return circle_.read(2); }
    double deviation() const { return deviation_; }

private:
    doublecoDynArr const * radii_;
    doublecoDynArr no_radii_;
    giPoint2coDynArr points_;
    sqLeastSquareCircle2 free_;
    sqLeastSquareProbedCircle2 probed_;
    mlLevenbergMarquardt free_solver_, probed_solver_;
    mlVector circle_, scratch_;
    double deviation_ = 0.0;
};

}  // namespace internal
}  // namespace datumfit
