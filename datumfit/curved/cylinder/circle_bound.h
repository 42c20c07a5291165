#pragma once

#include <datumfit/foundation/geometry/point3.h>

namespace datumfit {
namespace internal {

/// What the sum of squares of a circle fitted to points seen along an axis can not fall below, without a pass over
/// them.
///
/// For a circle of centre c and radius R at distances r from the points, (r - R)² = (r² - R²)² / (r + R)². So the sum
/// of squares is at least N(c) / (max r + R)² with N(c) = sum of (r² - mean r²)², the algebraic residual of Kåsa 1976,
/// which is a quadratic function of c. It is least, N0, at a centre c0, and grows from there at least as
/// 4 l |c - c0|², l the least eigenvalue of the scatter of the projected points. With all points within a distance p of
/// their mean and s² the mean of their squared distances from it, max r + R is at most 2 |c| + p + s. The least value
/// of the quotient over all c is then 1 / (1 / l + (2 |c0| + p + s)² / N0). All of this follows from the moments of the
/// points up to the fourth order, since r² is a linear function of the products of their coordinates.
class circle_bound {
public:
    explicit circle_bound(giPoint3coDynArr const & points);

    /// The bound for an axis direction of unit length; 0 where rounding leaves nothing to say.
    double along(double const * axis) const;

private:
    static constexpr int pairs = 6;  // xx, yy, zz, xy, xz, yz

    void add_up(giPoint3coDynArr const & points, double const * mean);
    void take_off_means(double const * sum_of_points);
    void find_reach(giPoint3coDynArr const & points, double const * mean);
    double scatter(double const * a, double const * b) const;

    int n_;
    double second_[pairs] = {};         // sums of the products of two coordinates, from the mean of the points
    double third_[3][pairs] = {};       // of each coordinate and each product, less their means
    double fourth_[pairs][pairs] = {};  // of two products, less their means
    double size_of_fourth_ = 0.0;       // the sum of the fourth powers of the distances from the mean
    double reach_ = 0.0;                // the greatest of these distances
    double thickness_ = 0.0;            // added to the ellipsoid of the second moments, for points in a plane
    double ellipsoid_ = 0.0;            // the factor by which it holds all points
};

}  // namespace internal
}  // namespace datumfit
