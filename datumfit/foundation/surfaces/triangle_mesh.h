#pragma once

#include <datumfit/foundation/geometry/unit_vec3.h>
#include <datumfit/foundation/surfaces/box_tree.h>
#include <datumfit/foundation/surfaces/mesh_links.h>
#include <datumfit/foundation/surfaces/triangle.h>

#include <cmath>
#include <vector>

namespace datumfit {
namespace internal {

/// Beyond this coordinate a point is no point of a mesh: the boxes about such would leave the range of floats.
constexpr double greatest_coordinate = 0x1p+100;

inline bool is_within_range(giPoint3 const & p) {
    return std::abs(p.x()) <= greatest_coordinate && std::abs(p.y()) <= greatest_coordinate &&
           std::abs(p.z()) <= greatest_coordinate;
}

/// Triangles with all that their projections need. It is not changed once it is made, and shared by the copies of a
/// surface.
struct triangle_mesh {
    std::vector<giPoint3> vertices;
    std::vector<sknTriangle> given;         ///< as the vertices were numbered
    std::vector<triangle_corners> corners;  ///< with one number for equal vertices; negative where left out
    std::vector<giUnitVec3> normals;        ///< invalid where a triangle has no area
    mesh_links links;
    box_tree tree;

    int from(int side) const { return corners.data()[side / 3].data()[side % 3]; }
    int to(int side) const { return from(next_side(side)); }
    giPoint3 const & start(int side) const { return vertices.data()[from(side)]; }
    giVector3 along(int side) const { return vertices.data()[to(side)] - start(side); }
    giUnitVec3 const & normal_beside(int side) const { return normals.data()[side / 3]; }

    /// Whether exactly two triangles meet at the edge.
    bool is_between_two(int side) const {
        return links.around(side) != side && links.around(links.around(side)) == side;
    }

    bool is_left_out(int triangle) const { return corners.data()[triangle][0] < 0; }
};

/// Vertices within the range and numbers of such vertices make a mesh. false when no triangle is left: those without
/// area, and those with the corners of an earlier one, are left out.
bool make_triangle_mesh(std::vector<giPoint3> vertices, std::vector<sknTriangle> triangles, triangle_mesh & mesh);

/// The cosine of the angle between the normals of the two triangles at an edge; -2 for an edge of one triangle or of
/// more than two. When the two disagree about what is outside, one normal is reversed, and `reversed` becomes true.
double cosine_across(triangle_mesh const & mesh, int side, bool & reversed);

}  // namespace internal
}  // namespace datumfit
