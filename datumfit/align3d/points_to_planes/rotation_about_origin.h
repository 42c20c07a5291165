#pragma once

#include <datumfit/foundation/geometry/xform3.h>

namespace datumfit {
namespace internal {

inline giXform3 rotation_about_origin(giUnitVec3 const & axis, giAngle const & angle) {
    return giXform3(giXformRotate, giPoint3(giOrigin), axis, angle);
}

}  // namespace internal
}  // namespace datumfit
