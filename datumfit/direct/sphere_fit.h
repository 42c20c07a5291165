#pragma once

#include <datumfit/direct/direct_fit_status.h>
#include <datumfit/foundation/geometry/point3.h>

/// A sphere through at least 4 points: the x² + y² + z² + D x + E y + F z + G = 0 of least mean square of its left
/// side, by its normal equations in the coordinates as they stand. One pass, and nothing is allocated.
///
/// Its digits go with the square of the distance from the origin and faster: exact points of a sphere give centre and
/// radius to 1e-12 of the radius at 10 radii, 1e-9 at 100, 1e-6 (six digits) at 1000 and 1e-3 at 10000.
///
/// On points that determine no sphere, as those of a plane, the status is a success as well: centre and radius are what
/// the elimination left, and the radius is not a number when its square comes out negative.
/// sqLeastSquareEvaluator::evaluate_sphere() fits such points, and those far from the origin.
class sqSphereFit {
public:
    /// The points are referred to, for chi(): they must outlive this then.
    explicit sqSphereFit(giPoint3coDynArr const & points);

    giPoint3 const & centre() const { return centre_; }
    double radius() const { return radius_; }
    sqDirectFitStatus status() const { return status_; }

    /// The root mean square distance of the points from the sphere. Only after a success.
    double chi() const;

    /// 1 for a fit, or 0 with fewer than 4 points, and then the results are as they were.
    static int fit(giPoint3coDynArr const & points, giPoint3 & centre, double & radius);

    /// Gauss-Jordan elimination of a matrix stored row by row: its left square becomes the identity, the columns behind
    /// it the solutions. A pivot of at most 1e-20 is left as it is, with its column.
    ///
    /// The pivot comes from the last row below the diagonal whose element exceeds that on the diagonal, not the largest
    /// one.
    static void matrix_rowred(double * m, int rows, int cols);

private:
    void do_fit();

    giPoint3coDynArr const * points_;
    double radius_ = 0.0;
    giPoint3 centre_;
    sqDirectFitStatus status_ = sqDirectFitUnfitted;
};
