#pragma once

#include <datumfit/foundation/geometry/length.h>

#include <algorithm>
#include <vector>

namespace datumfit {
namespace internal {

/// The radii that are taken from distances: those of discs which the circle touches from outside, or, negated, of discs
/// inside of it.
inline std::vector<double> signed_radii(std::vector<double> radii, bool inside) {
    if (inside) std::transform(radii.begin(), radii.end(), radii.begin(), [](double r) { return -r; });
    return radii;
}

/// The radius of a circle, 0 where it comes out as less: a negative number would be taken for the square of a length.
inline giLength length_of(double radius) {
    return std::max(0.0, radius);
}

}  // namespace internal
}  // namespace datumfit
