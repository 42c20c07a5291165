#pragma once

#include <datumfit/foundation/surfaces/surf_point.h>
#include <datumfit/foundation/surfaces/triangle_mesh.h>

namespace datumfit {
namespace internal {

/// A part of a mesh that a foot may lie on.
///
/// Which side of a plane a point lies on is decided with a margin for rounding, and always by the same computation for
/// the same side of a triangle, whoever asks: so a foot at the border of two parts belongs to one of them.
struct mesh_feature {
    enum feature_kind { face, edge, vertex } kind;
    int number;  ///< of the triangle, of a side on the edge, or of the vertex
};

/// The part of a triangle that is nearest to a point.
mesh_feature nearest_feature(triangle_mesh const & mesh, int triangle, giPoint3 const & p);

/// Whether the nearest place of a feature is nearest in its neighbourhood, given that it is so within one triangle.
bool is_nearest_around(triangle_mesh const & mesh, mesh_feature const & feature, giPoint3 const & p);

/// The nearest place of a feature to a point, with what tells the normal there.
///
/// u is the number of a triangle that the foot lies on and v is 0: the normal is that of the triangle. Where edges bend
/// by no more than the crease angle, a foot on an edge or vertex has a normal of its own, the line along which it is
/// seen: u is greater then by 0.5 + 0.49 x, and v = y, the coordinates of that normal in the frame of the triangle. Of
/// several triangles it is the one with the normal nearest to the line, and the first of equals.
sknSurfPoint foot_on(triangle_mesh const & mesh, mesh_feature const & feature, giPoint3 const & p,
                     double crease_cosine);

/// The number of the triangle, or -1 when u holds none of this mesh.
int triangle_of(triangle_mesh const & mesh, sknSurfPoint const & foot);

/// The normal that a foot tells of; its triangle is known to be one of this mesh.
giUnitVec3 normal_at_foot(triangle_mesh const & mesh, sknSurfPoint const & foot);

/// Whether the surface is smooth across the edge of a side.
bool is_smooth(triangle_mesh const & mesh, int side, double crease_cosine);

}  // namespace internal
}  // namespace datumfit
