#pragma once

#include <datumfit/foundation/geometry/circle2.h>

#include <cmath>

namespace datumfit {
namespace internal {

/// The circle, or an empty one where its numbers have left the range of doubles.
inline giCircle2 finite_circle(giPoint2 const & centre, giLength const & radius) {
    bool const is_finite = std::isfinite(centre.x()) && std::isfinite(centre.y()) && std::isfinite(radius.value());
    return is_finite ? giCircle2(centre, radius) : giCircle2();
}

}  // namespace internal
}  // namespace datumfit
