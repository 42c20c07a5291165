#pragma once

#include <cmath>

namespace datumfit {
namespace internal {

/// The squared distance of (x, y) from the ellipse of semi-axes a and b along the ray from its centre. Nearer to the
/// centre than tol in both coordinates the ray is that of b.
inline double radial_square(double a, double b, double x, double y, double tol) {
    if (std::abs(x) < tol && std::abs(y) < tol) return b * b;
    double const beyond = 1.0 - a * b / std::sqrt(y * y * a * a + x * x * b * b);
    return (x * x + y * y) * beyond * beyond;
}

}  // namespace internal
}  // namespace datumfit
