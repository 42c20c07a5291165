#include <datumfit/extremal/circle_touching_three_circles.h>

#include <datumfit/foundation/geometry/vector2.h>

#include <cmath>
#include <utility>

namespace {

// In the caller's unit: centres nearer than this count as one, and a shorter product of sides spans no plane.
constexpr double least_distance = 1e-7;

// In the inverted plane, whose unit is the inverse of the caller's: nearer than this two centres count as one, and a
// line as one through the centre of inversion.
constexpr double least_inverted_distance = 1e-7;

// From this sine on, the common tangents of two circles are about to merge and vanish, as one holds the other.
constexpr double greatest_sine = 0.9999999;

struct circle {
    giPoint2 centre;
    double radius;
};

struct inverted_circle {
    giVector2 centre;  // from the centre of inversion
    double radius;
};

void bring_smallest_to_front(circle (&circles)[3]) {
    for (int i = 1; i < 3; ++i) {
        if (circles[0].radius > circles[i].radius) std::swap(circles[0], circles[i]);
    }
}

// By the complex reciprocal: the power of the origin with respect to the circle scales it. False unless the origin is
// outside. A circle that holds it holds the smallest of the three, and nothing touches both of those from one side.
bool invert(giVector2 const & centre, double radius, inverted_circle & image) {
    double const power = centre.dot(centre) - radius * radius;
    if (!(power > 0.0)) return false;
    image = {giVector2(centre.x() / power, -centre.y() / power), radius / power};
    return true;
}

// The tangent with both circles on its one side and the origin on the wanted side: on theirs for s = 1, else on the
// other one. Gives its unit direction t and its distance h from the origin, t x q for any point q of it.
bool find_common_tangent(inverted_circle const & a, inverted_circle const & b, double s, giVector2 & t, double & h) {
    giVector2 const v = b.centre - a.centre;
    double const d = v.length();
    if (!(d >= least_inverted_distance)) return false;

    // The tangents are turned against the line of centres by this angle, one to either side.
    double const sine = (b.radius - a.radius) / d;
    if (!(std::abs(sine) <= greatest_sine)) return false;
    double const cosine = std::sqrt((1.0 - sine) * (1.0 + sine));
    for (double const side : {1.0, -1.0}) {
        t = giVector2(v.x() * cosine - side * sine * v.y(), v.y() * cosine + side * sine * v.x()).unitize();
        giVector2 const n = side * t.orthogonal();
        giVector2 const q = a.centre + a.radius * n;
        h = t.cross(q);
        if (!(q.dot(n) * s > 0.0)) return std::abs(h) >= least_inverted_distance;
    }
    return false;
}

bool are_apart(giPoint2 const & p, giPoint2 const & q) {
    return !(distance(p, q) < least_distance);
}

}  // namespace

int CircleTouchingThreeCircles2D(giPoint2 p1, double r1, giPoint2 p2, double r2, giPoint2 p3, double r3, int inside,
                                 giPoint2 & centre, double & radius) {
    if (!are_apart(p1, p2) || !are_apart(p1, p3) || !are_apart(p2, p3)) return 0;
    double const s = inside ? 1.0 : -1.0;

    circle circles[] = {{p1, r1}, {p2, r2}, {p3, r3}};
    bring_smallest_to_front(circles);
    auto const [c0, r0] = circles[0];

    inverted_circle a, b;
    if (!invert(circles[1].centre - c0, circles[1].radius - r0, a)) return 0;
    if (!invert(circles[2].centre - c0, circles[2].radius - r0, b)) return 0;

    giVector2 t;
    double h = 0.0;
    if (!find_common_tangent(a, b, s, t, h)) return 0;

    // The tangent goes back to a circle through c0 of diameter 1 / |h|.
    double const e = t.x() / h, f = t.y() / h;
    centre = giPoint2(c0.x() - f / 2.0, c0.y() - e / 2.0);
    radius = std::sqrt(e * e + f * f) / 2.0 + s * r0;
    return 1;
}

int CircleTouchingThreeCircles3D(giPoint3 p1, double r1, giPoint3 p2, double r2, giPoint3 p3, double r3, int inside,
                                 giVector3 & normal, giPoint3 & centre, double & radius) {
    normal = (p2 - p1).cross(p3 - p2);
    if (normal.length() < least_distance) return 0;
    if (normal.unitize().invalid()) return 0;  // the product left the range of doubles

    giVector3 const axis(std::abs(normal.y()) > std::abs(normal.x()) ? giAxisX : giAxisY);
    giVector3 const u = (axis - axis.dot(normal) * normal).unitize();
    giVector3 const v = u.cross(normal);
    auto const in_plane = [&](giPoint3 const & p) { return giPoint2(u.dot(p.release()), v.dot(p.release())); };

    giPoint2 flat;
    int const found =
        CircleTouchingThreeCircles2D(in_plane(p1), r1, in_plane(p2), r2, in_plane(p3), r3, inside, flat, radius);
    giVector3 const to_plane = normal.dot(p1.release()) * normal;
    centre = found ? (to_plane + flat.x() * u + flat.y() * v).anchor() : giPoint3();
    return found;
}
