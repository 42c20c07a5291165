#include <datumfit/foundation/surfaces/mesh_feet.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace datumfit {
namespace internal {

namespace {

constexpr double epsilon = std::numeric_limits<double>::epsilon();

// Rounding of a product of two differences of points, in the sums of their coordinates' sizes: 3 epsilon at most, and
// then some.
constexpr double margin = 8.0 * epsilon;

// Nearer than this to its foot, in distances from the vertices, a point has no line of sight that rounding leaves
// alone.
constexpr double lost_direction = 0x1p+14 * epsilon;

// Within this share of x lies what u tells beside the triangle's number.
constexpr double code_middle = 0.5, code_scale = 0.49;

double sum_of_sizes(giVector3 const & v) {
    return std::abs(v.x()) + std::abs(v.y()) + std::abs(v.z());
}

// A side's direction, and the vector to a point from where it begins.
struct seen_side {
    giVector3 along, to_point;
    double least;  // a product of the two that is no greater may be rounding

    seen_side(giPoint3 const & from, giPoint3 const & to, giPoint3 const & p)
        : along(to - from), to_point(p - from), least(margin * sum_of_sizes(to_point) * sum_of_sizes(along)) {}

    // Whether the point lies ahead of the beginning.
    bool is_ahead() const { return along.dot(to_point) > least; }

    // Whether the point lies on the inner side of a side of a triangle with this normal.
    bool is_inside(giUnitVec3 const & n) const { return n.dot(along.cross(to_point)) > least; }
};

bool is_inside(triangle_mesh const & mesh, int side, giPoint3 const & p) {
    return seen_side(mesh.start(side), mesh.start(next_side(side)), p).is_inside(mesh.normal_beside(side));
}

bool is_ahead(triangle_mesh const & mesh, int from, int to, giPoint3 const & p) {
    return seen_side(mesh.vertices.data()[from], mesh.vertices.data()[to], p).is_ahead();
}

// How a point is seen from the nearest place of an edge or of a vertex.
struct line_of_sight {
    giPoint3 foot;
    giVector3 across;  // from the foot to the point
    double size;       // of what it was computed from
};

line_of_sight from_start(giPoint3 const & a, giVector3 const & d, giVector3 const & ab) {
    double const t = std::min(std::max(d.dot(ab) / ab.dot(ab), 0.0), 1.0);
    return {a + t * ab, d - t * ab, sum_of_sizes(d)};
}

// The same for all sides of an edge. Counts from the nearer end, so that a foot near an end is as exact as that.
line_of_sight from_edge(triangle_mesh const & mesh, int side, giPoint3 const & p) {
    giPoint3 const & a = mesh.vertices.data()[std::min(mesh.from(side), mesh.to(side))];
    giPoint3 const & b = mesh.vertices.data()[std::max(mesh.from(side), mesh.to(side))];
    giVector3 const ab = b - a, from_a = p - a, from_b = p - b;
    bool const nearer_a = from_a.dot(ab) <= -from_b.dot(ab);
    return nearer_a ? from_start(a, from_a, ab) : from_start(b, from_b, -ab);
}

line_of_sight from_vertex(giPoint3 const & v, giPoint3 const & p) {
    giVector3 const d = p - v;
    return {v, d, sum_of_sizes(d)};
}

// The second projection takes the rounding away that a distant point leaves across the plane.
giPoint3 foot_on_plane(giPoint3 const & a, giUnitVec3 const & n, giPoint3 const & p) {
    return a + n.project_normal(n.project_normal(p - a));
}

template <class Action>
void for_sides_around(triangle_mesh const & mesh, int side, Action const & action) {
    int at = side;
    do {
        action(at);
        at = mesh.links.around(at);
    } while (at != side);
}

bool is_nearest_around_edge(triangle_mesh const & mesh, int side, giPoint3 const & p) {
    bool outside = true;
    for_sides_around(mesh, side, [&](int at) { outside = outside && !is_inside(mesh, at, p); });
    return outside;
}

// All points of a triangle with a corner at the vertex lie between the directions of its two sides there.
bool is_nearest_around_vertex(triangle_mesh const & mesh, int v, giPoint3 const & p) {
    for (int const * side = mesh.links.begin(v); side != mesh.links.end(v); ++side) {
        int const before = previous_side(*side);
        if (is_ahead(mesh, v, mesh.to(*side), p) || is_ahead(mesh, v, mesh.from(before), p)) return false;
        if (is_inside(mesh, *side, p) && is_inside(mesh, before, p)) return false;
    }
    return true;
}

// What meets at an edge or vertex: whether it is all smooth, the sum of the normals, and the triangle whose plane is
// seen most nearly at a right angle.
struct surroundings {
    triangle_mesh const & mesh;
    double crease_cosine;
    giVector3 sight;
    bool smooth = true;
    giVector3 sum{0.0, 0.0, 0.0};
    double greatest_cosine = -1.0;
    int triangle = -1;

    void add_triangle(int t) {
        giUnitVec3 const & n = mesh.normals.data()[t];
        double const cosine = std::abs(n.dot(sight));
        if (cosine > greatest_cosine || (cosine == greatest_cosine && t < triangle)) {
            greatest_cosine = cosine;
            triangle = t;
        }
        sum += sum.dot(n) < 0.0 ? -n : n;
    }
    void add_edge(int side) { smooth = smooth && is_smooth(mesh, side, crease_cosine); }

    void add_around(mesh_feature const & feature) {
        if (feature.kind == mesh_feature::edge) {
            add_edge(feature.number);
            for_sides_around(mesh, feature.number, [&](int side) { add_triangle(side / 3); });
        } else {
            for (int const * s = mesh.links.begin(feature.number); s != mesh.links.end(feature.number); ++s) {
                add_edge(*s);
                add_edge(previous_side(*s));
                add_triangle(*s / 3);
            }
        }
    }
};

struct triangle_frame {
    giUnitVec3 x, y, z;

    triangle_frame(triangle_mesh const & mesh, int triangle)
        : x(mesh.along(3 * triangle)), z(mesh.normals.data()[triangle]) {
        y = giUnitVec3(z.cross(x));
    }
};

void write_normal(triangle_mesh const & mesh, int triangle, giUnitVec3 const & n, sknSurfPoint & foot) {
    triangle_frame const frame(mesh, triangle);
    double const side = n.dot(frame.z) < 0.0 ? -1.0 : 1.0;
    foot.u += code_middle + code_scale * side * n.dot(frame.x);
    foot.v = side * n.dot(frame.y);
}

}  // namespace

// A point that is not inside of all sides is nearest to the side that it is outside of and within the ends of. If there
// is none, it is nearest to the corner that it is not ahead of on either side.
mesh_feature nearest_feature(triangle_mesh const & mesh, int triangle, giPoint3 const & p) {
    int const first = 3 * triangle;
    giPoint3 const &a = mesh.start(first), &b = mesh.start(first + 1), &c = mesh.start(first + 2);
    seen_side const ab(a, b, p), bc(b, c, p), ca(c, a, p);
    giUnitVec3 const & n = mesh.normals.data()[triangle];
    bool const inside[] = {ab.is_inside(n), bc.is_inside(n), ca.is_inside(n)};
    if (inside[0] && inside[1] && inside[2]) return {mesh_feature::face, triangle};

    bool const ahead[] = {ab.is_ahead(), bc.is_ahead(), ca.is_ahead()};
    bool const behind[] = {seen_side(b, a, p).is_ahead(), seen_side(c, b, p).is_ahead(), seen_side(a, c, p).is_ahead()};
    for (int k = 0; k < 3; ++k) {
        if (!inside[k] && ahead[k] && behind[k]) return {mesh_feature::edge, first + k};
    }
    int corner = 0;
    for (int k = 1; k < 3; ++k) {
        if (!ahead[k] && !behind[k - 1]) corner = k;
    }
    return {mesh_feature::vertex, mesh.from(first + corner)};
}

bool is_nearest_around(triangle_mesh const & mesh, mesh_feature const & feature, giPoint3 const & p) {
    if (feature.kind == mesh_feature::face) return true;
    return feature.kind == mesh_feature::edge ? is_nearest_around_edge(mesh, feature.number, p)
                                              : is_nearest_around_vertex(mesh, feature.number, p);
}

sknSurfPoint foot_on(triangle_mesh const & mesh, mesh_feature const & feature, giPoint3 const & p,
                     double crease_cosine) {
    if (feature.kind == mesh_feature::face) {
        int const t = feature.number;
        return {static_cast<double>(t), 0.0, foot_on_plane(mesh.start(3 * t), mesh.normals.data()[t], p)};
    }
    line_of_sight const seen = feature.kind == mesh_feature::edge
                                   ? from_edge(mesh, feature.number, p)
                                   : from_vertex(mesh.vertices.data()[feature.number], p);
    surroundings around{mesh, crease_cosine, seen.across};
    around.add_around(feature);
    sknSurfPoint foot{static_cast<double>(around.triangle), 0.0, seen.foot};
    if (!around.smooth) return foot;
    bool const lost = sum_of_sizes(seen.across) <= lost_direction * seen.size;
    giUnitVec3 const n(lost ? around.sum : seen.across);
    if (!n.invalid()) write_normal(mesh, around.triangle, n, foot);
    return foot;
}

int triangle_of(triangle_mesh const & mesh, sknSurfPoint const & foot) {
    bool const is_number = foot.u >= 0.0 && foot.u < static_cast<double>(mesh.corners.size());
    int const t = is_number ? static_cast<int>(foot.u) : -1;
    return is_number && !mesh.is_left_out(t) ? t : -1;
}

giUnitVec3 normal_at_foot(triangle_mesh const & mesh, sknSurfPoint const & foot) {
    int const t = triangle_of(mesh, foot);
    double const code = foot.u - t;
    if (code == 0.0) return mesh.normals.data()[t];
    triangle_frame const frame(mesh, t);
    double const x = (code - code_middle) / code_scale, y = foot.v, square = x * x + y * y;
    giVector3 const in_plane = x * frame.x + y * frame.y;
    return giUnitVec3(in_plane + std::sqrt(std::max(0.0, 1.0 - square)) * frame.z);
}

bool is_smooth(triangle_mesh const & mesh, int side, double crease_cosine) {
    bool reversed = false;
    return cosine_across(mesh, side, reversed) >= crease_cosine;
}

}  // namespace internal
}  // namespace datumfit
