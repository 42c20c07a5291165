#pragma once

#include <datumfit/foundation/geometry/point2.h>

namespace datumfit {
namespace internal {

/// Where c lies as seen from a looking to b. 1: on the left, or straight on beyond b. -1: on the right, or behind a. 0:
/// between a and b. The tolerance is one of areas.
inline int turn_test(giPoint2 const & a, giPoint2 const & b, giPoint2 const & c, double tolerance) {
    giVector2 const d1 = b - a, d2 = c - a;
    double const area = d2.y() * d1.x() - d2.x() * d1.y();
    if (area > tolerance) return 1;
    if (-tolerance > area || -tolerance > d2.x() * d1.x() || -tolerance > d2.y() * d1.y()) return -1;
    return -tolerance > d1.dot(d1) - d2.dot(d2) ? 1 : 0;
}

}  // namespace internal
}  // namespace datumfit
