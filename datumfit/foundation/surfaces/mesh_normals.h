#pragma once

#include <datumfit/foundation/surfaces/triangle_mesh.h>

namespace datumfit {
namespace internal {

/// Unit normals at the corners of the triangles, that of corner k of triangle t at 3 t + k; invalid for triangles that
/// are left out.
using corner_normals = std::vector<giUnitVec3>;

/// The mean of the normals around a vertex, each weighted by the triangle's angle there (Thürmer & Wüthrich 1998). It
/// takes in the triangles that a corner is joined to by smooth edges.
corner_normals mean_normals(triangle_mesh const & mesh, double crease_cosine);

/// Between the normals at the corners of a triangle, as a place lies between these.
giUnitVec3 interpolated_normal(triangle_mesh const & mesh, corner_normals const & normals, int triangle,
                               giPoint3 const & place);

}  // namespace internal
}  // namespace datumfit
