#pragma once

#include <datumfit/foundation/geometry/xform3.h>

#include <cmath>

namespace datumfit {
namespace internal {

/// The turn by the arc tangent of g about an axis through a point, which is how a linear step of g radians is carried
/// out: it stays below a right angle however long the step. The identity when |g| is below `tiny` or the axis has no
/// direction.
inline giXform3 tangent_turn(giPoint3 const & point, giUnitVec3 const & axis, double g, double tiny) {
    if (!(std::abs(g) >= tiny) || axis.invalid()) return giXform3(giXformIdentity);
    return giXform3(giXformRotate, point, axis, giAngle(giAngleTangent2, g, 1.0));
}

/// The same for a rotation vector, whose length is g.
inline giXform3 tangent_turn(giPoint3 const & point, giVector3 const & r, double tiny) {
    return tangent_turn(point, r.unit(), r.length(), tiny);
}

}  // namespace internal
}  // namespace datumfit
