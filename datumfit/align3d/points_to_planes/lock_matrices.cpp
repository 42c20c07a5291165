#include <datumfit/align3d/points_to_planes/points_to_planes.h>
#include <datumfit/align3d/points_to_planes/rotation_about_origin.h>
#include <datumfit/primitives/utils.h>

using datumfit::internal::rotation_about_origin;

namespace {

// Directions whose sine is smaller are turned apart first: their product is a poor axis.
constexpr double nearly_parallel = 0.01;

giUnitVec3 orthogonal_to(giVector3 const & v) {
    giVector3 result;
    sqUtils::get_orthogonal(v, result);
    return result;
}

}  // namespace

void sqPointsToPlanes::find_lock_matrix(giVector3 from, giVector3 to, giXform3 & matrix) {
    matrix.become(giXformIdentity);
    if (from.unitize().invalid() || to.unitize().invalid()) return;
    if (from.cross(to).length() < nearly_parallel) {
        matrix = rotation_about_origin(orthogonal_to(to), giAngle90);
        from = (matrix * from).unit();
    }
    giVector3 const c = from.cross(to);
    matrix.premultiply(rotation_about_origin(c, giAngle(giAngleTangent2, c.length(), from.dot(to))));
}

void sqPointsToPlanes::find_flip_matrix(giVector3 direction, giXform3 & matrix) {
    matrix.become(giXformIdentity);
    if (direction.unitize().invalid()) return;
    matrix = rotation_about_origin(orthogonal_to(direction), giAngle180);
}

void sqPointsToPlanes::linear_step_fixed_axis_orts(int m, giVector3 const & axis, giVector3 * const orts) {
    if (m == 4) {
        orts[0] = giVector3(giAxisX);
        orts[1] = giVector3(giAxisY);
        orts[2] = giVector3(giAxisZ);
    } else if (m == 3) {
        orts[0] = orthogonal_to(axis);
        orts[1] = giUnitVec3(axis.cross(orts[0]));
    } else if (m == 2) {
        orts[0] = axis;
    }
}
