#pragma once

#include <datumfit/foundation/geometry/point2.h>
#include <datumfit/foundation/geometry/point3.h>

namespace datumfit {
namespace internal {

/// The coordinates of an array of points as plain numbers, point by point.
inline double const * plain(giPoint2coDynArr const & points) {
    return reinterpret_cast<double const *>(points.data());
}
inline double const * plain(giPoint3coDynArr const & points) {
    return reinterpret_cast<double const *>(points.data());
}

/// Writes the mean of n points of so many coordinates. It is summed from the first point, so that points far from the
/// origin give it to the last digit. n is at least 1.
void mean_of_points(double const * coordinates, int dimension, int n, double * mean);

/// The mean distance of n points from a point; 0 without points.
double mean_distance(double const * coordinates, int dimension, int n, double const * from);

}  // namespace internal
}  // namespace datumfit
