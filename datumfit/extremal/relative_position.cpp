#include <datumfit/extremal/relative_position.h>

#include <datumfit/extremal/turn_test.h>

#include <algorithm>

using datumfit::internal::turn_test;

namespace {

constexpr double far_right = 1e12;        // where the ray ends
constexpr double edge_tolerance = 1e-10;  // an area

bool segments_cross(giPoint2 const & p1, giPoint2 const & p2, giPoint2 const & q1, giPoint2 const & q2) {
    if (turn_test(p1, p2, q1, 0.0) * turn_test(p1, p2, q2, 0.0) > 0) return false;
    return turn_test(q1, q2, p1, 0.0) * turn_test(q1, q2, p2, 0.0) <= 0;
}

// What one edge tells of a point. An edge that ends on the level of the point counts as crossed when it comes from
// below, so that a ray through a vertex crosses one of its two edges, or none or both where the polygon turns back.
enum edge_result { edge_missed, edge_crossed, edge_on_vertex, edge_on_edge };

edge_result look_at_edge(giPoint2 const & a, giPoint2 const & b, giPoint2 const & p) {
    double const low = std::min(a.y(), b.y());
    if (p.y() > std::max(a.y(), b.y()) || p.y() < low || p.x() > std::max(a.x(), b.x())) return edge_missed;
    if (b.coincident(p, 0.0)) return edge_on_vertex;
    if (turn_test(a, b, p, edge_tolerance) == 0) return edge_on_edge;
    bool const crossed = a.y() != b.y() && p.y() > low && segments_cross(a, b, p, giPoint2(far_right, p.y()));
    return crossed ? edge_crossed : edge_missed;
}

}  // namespace

sqRelativePosition sq_relative_position(giPoint2 const & point, giPoint2 const * polygon, int count) {
    giPoint2 const & first = polygon[0];
    if (first.coincident(point, 0.0)) return sqRelativeOnVertex;
    bool const closed = first.coincident(polygon[count - 1], 0.0);
    bool inside = false;
    for (int i = 1; i < (closed ? count : count + 1); ++i) {
        switch (look_at_edge(polygon[i - 1], i < count ? polygon[i] : first, point)) {
            case edge_on_vertex:
                return sqRelativeOnVertex;
            case edge_on_edge:
                return sqRelativeOnEdge;
            case edge_crossed:
                inside = !inside;
                break;
            case edge_missed:
                break;
        }
    }
    return inside ? sqRelativeInside : sqRelativeOutside;
}

sqRelativePosition sq_relative_position(giPoint2 const & point, giPoint2coDynArr const & polygon) {
    return sq_relative_position(point, polygon.data(), polygon.size());
}
