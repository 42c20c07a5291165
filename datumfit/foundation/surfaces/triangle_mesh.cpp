#include <datumfit/foundation/surfaces/mesh_weld.h>
#include <datumfit/foundation/surfaces/triangle_mesh.h>

#include <cmath>
#include <utility>

namespace datumfit {
namespace internal {

namespace {

constexpr triangle_corners no_corners = {-1, -1, -1};

// In squares of the longest side; a triangle of less area has no normal to speak of, and neither has one whose
// longest side has a square that leaves the range of normal doubles with its rounding.
constexpr double least_area = 0x1p-50, least_square = 0x1p-900;

struct exact_vector {
    long double x, y, z;

    exact_vector(giPoint3 const & from, giPoint3 const & to)
        : x(static_cast<long double>(to.x()) - from.x()), y(static_cast<long double>(to.y()) - from.y()),
          z(static_cast<long double>(to.z()) - from.z()) {}

    double square() const { return static_cast<double>(x * x + y * y + z * z); }
    giVector3 cross(exact_vector const & b) const {
        return giVector3(static_cast<double>(y * b.z - z * b.y), static_cast<double>(z * b.x - x * b.z),
                         static_cast<double>(x * b.y - y * b.x));
    }
};

// The product of the two shorter sides, in more digits: that of others, or in doubles, would turn the normal of a
// sliver.
giUnitVec3 normal_of(giPoint3 const & a, giPoint3 const & b, giPoint3 const & c) {
    exact_vector const ab(a, b), bc(b, c), ca(c, a);
    double const squares[] = {ab.square(), bc.square(), ca.square()};
    int const longest = squares[0] >= squares[1] ? squares[0] >= squares[2] ? 0 : 2 : squares[1] >= squares[2] ? 1 : 2;
    giVector3 const product = longest == 0 ? bc.cross(ca) : longest == 1 ? ca.cross(ab) : ab.cross(bc);
    double const square = squares[longest];
    bool const has_area = square > least_square && product.length() > least_area * square;
    return has_area ? giUnitVec3(product) : giUnitVec3();
}

void set_corners(triangle_mesh & mesh) {
    std::vector<int> const first = first_equal_points(mesh.vertices);
    mesh.corners.reserve(mesh.given.size());
    for (sknTriangle const & t : mesh.given)
        mesh.corners.push_back({first.data()[t.a], first.data()[t.b], first.data()[t.c]});
}

void set_normals(triangle_mesh & mesh) {
    mesh.normals.reserve(mesh.corners.size());
    for (triangle_corners & t : mesh.corners) {
        mesh.normals.push_back(
            normal_of(mesh.vertices.data()[t[0]], mesh.vertices.data()[t[1]], mesh.vertices.data()[t[2]]));
        if (mesh.normals.back().invalid()) t = no_corners;
    }
}

void set_links(triangle_mesh & mesh) {
    int const n = static_cast<int>(mesh.vertices.size());
    mesh.links = mesh_links(mesh.corners, n);
    if (mesh.links.repeated().empty()) return;
    for (int const t : mesh.links.repeated()) mesh.corners.data()[t] = no_corners;
    mesh.links = mesh_links(mesh.corners, n);
}

std::vector<double> cosines_at_edges(triangle_mesh const & mesh) {
    std::vector<double> cosines(3 * mesh.corners.size(), -1.0);
    for (int side = 0; side < static_cast<int>(cosines.size()); ++side) {
        bool reversed = false;
        if (mesh.from(side) >= 0) cosines.data()[side] = cosine_across(mesh, side, reversed);
    }
    return cosines;
}

// Where two triangles meet at each edge and go round the same way, the lines along which a vertex is seen as a nearest
// place lie within the hull of the normals around it: such a line is a generalised gradient (Clarke 1983) of the height
// of the surface over a plane. Elsewhere it may be any line.
std::vector<range3> directions_around_vertices(triangle_mesh const & mesh) {
    std::vector<range3> around(mesh.vertices.size());
    for (int side = 0; side < 3 * static_cast<int>(mesh.corners.size()); ++side) {
        if (mesh.from(side) < 0) continue;
        giVector3 const & n = mesh.normal_beside(side);
        around.data()[mesh.from(side)].merge(n.x(), n.y(), n.z());
        if (mesh.is_between_two(side) && mesh.from(side) == mesh.to(mesh.links.around(side))) continue;
        for (int const v : {mesh.from(side), mesh.to(side)}) {
            around.data()[v].merge(1.0, 1.0, 1.0);
            around.data()[v].merge(-1.0, -1.0, -1.0);
        }
    }
    return around;
}

void set_tree(triangle_mesh & mesh) {
    std::vector<range3> const directions = directions_around_vertices(mesh);
    std::vector<double> const cosines = cosines_at_edges(mesh);
    mesh.tree = make_box_tree({mesh.vertices, mesh.corners, mesh.normals, directions, cosines});
}

}  // namespace

bool make_triangle_mesh(std::vector<giPoint3> vertices, std::vector<sknTriangle> triangles, triangle_mesh & mesh) {
    mesh = triangle_mesh();
    mesh.vertices = std::move(vertices);
    mesh.given = std::move(triangles);
    set_corners(mesh);
    set_normals(mesh);
    set_links(mesh);
    set_tree(mesh);
    return !mesh.tree.nodes.empty();
}

double cosine_across(triangle_mesh const & mesh, int side, bool & reversed) {
    if (!mesh.is_between_two(side)) return -2.0;
    int const other = mesh.links.around(side);
    reversed = mesh.from(side) == mesh.from(other);
    double const cosine = mesh.normal_beside(side).dot(mesh.normal_beside(other));
    return reversed ? -cosine : cosine;
}

}  // namespace internal
}  // namespace datumfit
