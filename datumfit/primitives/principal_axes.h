#pragma once

#include <datumfit/foundation/geometry/point3.h>
#include <datumfit/foundation/maths/matrix.h>
#include <datumfit/foundation/maths/vector.h>

namespace datumfit {
namespace internal {

/// The principal axes of points: centroid, axes and extents along them.
///
/// These are the singular value decomposition of the coordinates less their mean, found without a copy of the points,
/// in one pass as a rule. Squared coordinates would lose half of the digits of the small extents; in a frame near the
/// final one they do not. A sample of the points gives that frame, and one pass over all points its second moments
/// there, whose eigenvectors (by Jacobi's method, accurate also for the small ones: Demmel & Veselić 1992) turn the
/// frame into the axes. Where the sample was misleading, the pass is made again in the better frame.
template <int Dimension>
struct point_axes {
    double centroid[Dimension];         // rounded to the coordinates
    double beyond[Dimension];           // what that rounding left over
    double extent[Dimension];           // the singular values, in descending order
    double axis[Dimension][Dimension];  // axis[k] is the unit direction of extent[k]

    /// The mean square of what the points lie off the centroid along axis k and those behind it.
    double mean_square_from(int k, int points) const;
};

/// coordinates holds n points, n at least 1.
template <int Dimension>
point_axes<Dimension> find_axes(double const * coordinates, int n);

extern template struct point_axes<2>;
extern template struct point_axes<3>;
extern template point_axes<2> find_axes<2>(double const *, int);
extern template point_axes<3> find_axes<3>(double const *, int);

/// The same as the decomposition of a matrix: singular values s, in descending order, and axes in the columns of v.
/// Gives 1, or 0 with fewer than 2 points, and then the results are as they were.
int principal_axes(giPoint3coDynArr const & points, giPoint3 & centroid, mlVector & s, mlMatrix & v);

}  // namespace internal
}  // namespace datumfit
