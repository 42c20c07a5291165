#pragma once

#include <datumfit/align3d/projected_point3.h>

namespace datumfit {
namespace internal {

/// The extreme deviations of a set of projections, of which the invalid ones are only counted.
struct cloud_extremes {
    explicit cloud_extremes(sqProjectedPoint3coDynArr const & cloud);

    double largest_distance = 0.0;
    double smallest_signed, largest_signed;  // the largest double and its opposite without a valid record
    int invalid_points = 0, valid_points = 0;
};

}  // namespace internal
}  // namespace datumfit
