#pragma once

#include <datumfit/foundation/geometry/point3.h>
#include <datumfit/foundation/geometry/unit_vec3.h>
#include <datumfit/foundation/surfaces/mesh_links.h>
#include <datumfit/foundation/surfaces/range3.h>

#include <vector>

namespace datumfit {
namespace internal {

/// What the hierarchy is made of. Triangles whose corners are negative are left out.
struct tree_triangles {
    std::vector<giPoint3> const & vertices;
    std::vector<triangle_corners> const & corners;
    std::vector<giUnitVec3> const & normals;

    /// For each vertex a box of directions: a point that sees the vertex as the nearest place of its neighbourhood sees
    /// it along a line within the hull of these.
    std::vector<range3> const & directions;

    /// For each side of a triangle the cosine of the angle between the normals at the edge, and at most 0 when that may
    /// be seen from everywhere. What sees the edge as the nearest place sees it along a line between the normals.
    std::vector<double> const & edge_cosines;
};

/// Four boxes side by side, rounded outwards, in coordinates relative to the origin of the hierarchy. The child of a
/// box is a node, or below 0 the group ~child; that of a missing one is nowhere.
///
/// Each box has a ball about its middle, and a double cone about an axis with the lines along which a point can see
/// a nearest place there. Single precision keeps a node within three lines of the cache.
struct alignas(64) box_node {
    float low[3][4], high[3][4], axis[3][4], sine[4], radius[4];
    int child[4];
};

/// Up to four triangles side by side: a corner, the two sides from there, and the unit normal. When a corner, or a
/// side, holds the nearest place of its neighbourhood, the point lies along a line whose squared cosine with the normal
/// is not below that given. The number of a missing triangle is negative, and its shape that of the first.
struct triangle_group {
    double corner[3][4], first_side[3][4], last_side[3][4], normal[3][4];
    float corner_cosine[3][4], side_cosine[3][4];
    int number[4];
};

/// A hierarchy of boxes about triangles. Node 0 is the root; without triangles there is none.
struct box_tree {
    std::vector<box_node> nodes;
    std::vector<triangle_group> groups;
    giPoint3 origin;
    double diagonal = 0.0;  ///< of the box that holds all
};

/// No leaf lies deeper than so many nodes.
constexpr int greatest_depth = 40;

/// Divides the triangles by the surface area that the boxes will have (MacDonald & Booth 1990).
box_tree make_box_tree(tree_triangles const & triangles);

}  // namespace internal
}  // namespace datumfit
