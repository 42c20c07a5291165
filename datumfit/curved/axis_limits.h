#pragma once

#include <datumfit/foundation/geometry/angle.h>
#include <datumfit/foundation/geometry/point3.h>
#include <datumfit/foundation/geometry/unit_vec3.h>

#include <cmath>

namespace datumfit {
namespace internal {

/// Whether an axis, either way round, lies within an angle of a direction.
inline bool axis_in_limit(giUnitVec3 const & axis, giAngle const & limit, giUnitVec3 const & direction) {
    return !(limit.cos() > std::abs(axis.dot(direction)));
}

/// Whether the measured normals lie within an angle of the surface's, all of them or all reversed: normals may point
/// out of the surface or into it, but not some this way and some that. A point where the surface has no normal agrees
/// with any.
template <class SurfaceNormal>
bool normals_in_limit(giPoint3coDynArr const & points, giUnitVec3coDynArr const & normals, giAngle const & limit,
                      SurfaceNormal const & surface_normal) {
    for (bool const reversed : {false, true}) {
        bool all = true;
        for (int i = 0; i < points.size() && all; ++i) {
            giUnitVec3 const n = surface_normal(points[i]);
            all = n.invalid() || !(unsigned_angle(reversed ? -n : n, normals[i]) > limit);
        }
        if (all) return true;
    }
    return false;
}

/// Whether a round surface about an axis lies within the limits of a search: its axis near a preferred direction, if
/// one is set, and its normals near the measured ones, if there are any.
template <class SurfaceNormal>
int surface_in_limits(giPoint3coDynArr const & points, giAngle const & limit, giUnitVec3 const & preferred_dir,
                      giUnitVec3coDynArr const & normals, giUnitVec3 const & axis,
                      SurfaceNormal const & surface_normal) {
    if (!preferred_dir.invalid() && !axis_in_limit(axis, limit, preferred_dir)) return 0;
    return normals.size() == 0 || normals_in_limit(points, normals, limit, surface_normal) ? 1 : 0;
}

/// Appends a fit unless an entry coincides with it: of coincident fits the first one found stands.
template <class Fit, class Fits>
void append_distinct(Fit const & fit, double tolerance, giAngle const & angle_tolerance, Fits & results) {
    for (int i = 0; i < results.size(); ++i) {
        if (fit.coincident(results[i], tolerance, angle_tolerance) != 0) return;
    }
    results.append(fit);
}

}  // namespace internal
}  // namespace datumfit
