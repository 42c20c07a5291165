#pragma once

#include <datumfit/foundation/geometry/angle.h>
#include <datumfit/foundation/geometry/point3.h>
#include <datumfit/foundation/geometry/unit_vec3.h>

/// The outward direction from a cone at a point.
///
/// `axis` points from the body of the cone towards the apex. At a point beside the body it is the normal of the surface
/// nearest to the point in its plane through the axis; at a point on the axis, `axis` itself. At a point beyond the
/// apex along `axis` it is the direction from the apex to the point.
giUnitVec3 sqGetConeNormal(giPoint3 const & apex, giUnitVec3 const & axis, giAngle const & half_angle,
                           giPoint3 const & point);

namespace datumfit {
namespace internal {

/// The same where the apex may lie anywhere up to infinity, as that of a cylinder does: it stands at q + height * axis.
/// Unlike a far apex, q near the points keeps the digits of the normals.
giUnitVec3 cone_normal(giPoint3 const & q, double height, giUnitVec3 const & axis, giAngle const & half_angle,
                       giPoint3 const & point);

}  // namespace internal
}  // namespace datumfit
