#pragma once

#include <datumfit/foundation/containers/dyn_arr.h>
#include <datumfit/foundation/geometry/point3.h>

namespace datumfit {
namespace internal {

/// What the sum of squares of a circle fitted to points seen along an axis can not fall below, without a pass over
/// them.
///
/// A point at distance r from the centre c, with signed probe radius s (0 for a point on the surface), lies d = r + s -
/// R off the circle of radius R, and d (r + R - s) = r² - s² + 2 R s - R². So the sum of squares is at least N / m²: m
/// is the greatest of r + R + |s|, and N the sum of squares of the right side, the algebraic residual of Kåsa 1976, at
/// its least over what is added to it and multiplied with s. N is a quadratic function of c, least at a centre c0 with
/// N0, and grows from there at least as 4 l |c - c0|², l the least eigenvalue of the scatter of the projected points
/// less what s explains of it. With all points within a distance p of their mean, t² the mean of their squared
/// distances from it and s counted from its mean, m is at most 2 |c| + p + t + max |s|. The least value of the quotient
/// over all c is then 1 / (1 / l + (2 |c0| + p + t + max |s|)² / N0). All of this follows from the moments of the
/// points and radii up to the fourth order, since r² is a linear function of the products of the coordinates.
class circle_bound {
public:
    /// For points, or probe centres and their radii (null for none); the sense of the radii is +1 or -1.
    circle_bound(giPoint3coDynArr const & points, doublecoDynArr const * radii, double sense);

    /// The bound for an axis direction of unit length; 0 where rounding leaves nothing to say.
    double along(double const * axis) const;

private:
    static constexpr int coordinates = 4;  // x, y, z, s
    static constexpr int products = 7;     // xx, yy, zz, xy, xz, yz, ss

    struct sample {
        double q[coordinates];
        double product[products];
    };

    sample sample_of(int i) const;
    void add_up();
    void take_off_means(double const * sum);
    void find_reach();
    double scatter(double const * a, double const * b) const;

    double const * points_;
    doublecoDynArr const * radii_;
    double sense_;
    int n_;
    double mean_[coordinates] = {};
    double second_[products] = {};  // sums of the products, less their means
    bool radii_differ_ = false;
    double with_radius_[3] = {};  // of each coordinate and s
    double third_[coordinates][products] = {};
    double fourth_[products][products] = {};
    double size_of_fourth_ = 0.0;   // of the absolute values of what the fourth moments are made of
    double reach_ = 0.0;            // the greatest distance of a point from the mean
    double greatest_radius_ = 0.0;  // the greatest |s|
    double thickness_ = 0.0;        // added to the ellipsoid of the second moments, for points in a plane
    double ellipsoid_ = 0.0;        // the factor by which it holds all points
};

}  // namespace internal
}  // namespace datumfit
