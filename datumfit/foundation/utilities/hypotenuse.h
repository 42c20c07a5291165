#pragma once

#include <algorithm>
#include <cmath>

namespace datumfit {
namespace internal {

/// The length of a vector to rounding, whatever its size. The library's own, as the last bit of std::hypot differs from
/// one C library to the next.
inline double hypotenuse(double x, double y, double z = 0.0) {
    double const size = std::max({std::abs(x), std::abs(y), std::abs(z)});
    if (!(size > 0.0) || !std::isfinite(size)) return std::abs(x) + std::abs(y) + std::abs(z);
    int exponent = 0;
    std::frexp(size, &exponent);
    double const a = std::ldexp(x, -exponent), b = std::ldexp(y, -exponent), c = std::ldexp(z, -exponent);
    return std::ldexp(std::sqrt(a * a + b * b + c * c), exponent);
}

}  // namespace internal
}  // namespace datumfit
