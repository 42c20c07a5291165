#pragma once

#include <datumfit/foundation/geometry/circle2.h>
#include <datumfit/foundation/maths/lanes.h>

#include <cstddef>
#include <cstring>

#if !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpsabi"  // no vector crosses a call: all that hold one are inlined into the pass
#endif

namespace datumfit {
namespace internal {

/// A circle whose squares of distances are plain numbers, its centre as seen from an origin.
struct plain_circle {
    double origin_x, origin_y, x, y, square_of_radius;

    /// Formed as giPoint2::distance() forms it, for the point as seen from the origin.
    DATUMFIT_INLINE double square_of_distance(double const * p) const {
        double const dx = (p[0] - origin_x) - x, dy = (p[1] - origin_y) - y;
        return dx * dx + dy * dy;
    }
};

/// The first of the points i, i + 1, ... whose distance from the centre has a square above that of the radius, or
/// `end`.
template <class V>
DATUMFIT_INLINE std::size_t skip_held(double const * p, std::size_t i, std::size_t end, plain_circle const & circle) {
    constexpr std::size_t width = sizeof(V) / sizeof(double), at_once = 8, parts = at_once / width;
    V origin, centre, bound;
    for (std::size_t l = 0; l < width; ++l) {
        origin[l] = l % 2 == 0 ? circle.origin_x : circle.origin_y;
        centre[l] = l % 2 == 0 ? circle.x : circle.y;
        bound[l] = circle.square_of_radius;
    }
    for (; i + at_once <= end; i += at_once) {
        decltype(bound > bound) above = {};
        for (std::size_t k = 0; k < parts; ++k) {
            V a, b;  // x and y in turn of half of the points, and of the other half
            std::memcpy(&a, p + 2 * i + 2 * k * width, sizeof a);
            std::memcpy(&b, p + 2 * i + 2 * k * width + width, sizeof b);
            a -= origin;
            b -= origin;
            a -= centre;
            b -= centre;
            a *= a;
            b *= b;
            if constexpr (width == 4) {
                above |= __builtin_shufflevector(a, b, 0, 4, 2, 6) + __builtin_shufflevector(a, b, 1, 5, 3, 7) > bound;
            } else {
                above |= __builtin_shufflevector(a, b, 0, 2) + __builtin_shufflevector(a, b, 1, 3) > bound;
            }
        }
        long long any = 0;
        for (std::size_t l = 0; l < width; ++l) any |= above[l];
        if (any != 0) break;
    }
    while (i < end && !(circle.square_of_distance(p + 2 * i) > circle.square_of_radius)) ++i;
    return i;
}

DATUMFIT_WIDE inline std::size_t skip_held_wide(double const * p, std::size_t i, std::size_t end,
                                                plain_circle const & circle) {
    return skip_held<vector_of_4>(p, i, end, circle);
}

}  // namespace internal
}  // namespace datumfit

#if !defined(__clang__)
#pragma GCC diagnostic pop
#endif
