#include <datumfit/extremal/minimum_circumscribed_circle.h>

#include <datumfit/extremal/outside_pass.h>
#include <datumfit/extremal/signed_radii.h>
#include <datumfit/foundation/circles/circle2_constructor.h>
#include <datumfit/foundation/geometry/point_average2.h>

#include <algorithm>
#include <cmath>

namespace {

using datumfit::internal::greatest_plain_length;
using datumfit::internal::length_of;
using points2 = std::vector<giPoint2>;
using numbers = std::vector<double>;

// 2^-23, in the caller's unit: points nearer than this lay no circle.
constexpr double same_point = 1.1920928955078125e-7;

// Lengths compare in squares. One that is not set, as the radius where no circle was found, exceeds all and is
// exceeded.
bool outside(giCircle2 const & circle, giPoint2 const & p) {
    return distance(circle.centre(), p) > circle.radius();
}

// Where circles are laid: at the first point, so that one through points that lie close together far from the origin of
// the coordinates loses no digits to the distance.
giVector2 origin_of(points2 const & points) {
    double const x = points[0].x(), y = points[0].y();
    bool const is_plain = std::abs(x) < greatest_plain_length && std::abs(y) < greatest_plain_length;
    return is_plain ? giVector2(x, y) : giVector2(0.0, 0.0);
}

giPoint2 seen_from(giVector2 const & origin, giPoint2 const & p) {
    return giPoint2(p.x() - origin.x(), p.y() - origin.y());
}

// The first of the points from i on that is outside, or `end`.
std::size_t first_outside(giCircle2 const & circle, points2 const & points, giVector2 const & origin, std::size_t i,
                          std::size_t end) {
    using namespace datumfit::internal;
    giPoint2 const & centre = circle.centre();
    plain_circle const plain{origin.x(), origin.y(), centre.x(), centre.y(), circle.radius().squared()};
    // Points so near to the centre that their squares vanish are inside of any circle that isn't as small itself.
    bool const is_plain = plain.square_of_radius >= least_plain_square && plain.square_of_radius < not_set &&
                          std::abs(plain.x) + std::abs(plain.y) < not_set;
    double const * const p = reinterpret_cast<double const *>(points.data());
    for (; i < end; ++i) {
        if (is_plain) {
            i = has_wide_lanes() ? skip_held_wide(p, i, end, plain) : skip_held<vector_of_2>(p, i, end, plain);
            if (i == end || plain.square_of_distance(p + 2 * i) < not_set) return i;
        }
        if (outside(circle, seen_from(origin, points[i]))) return i;
    }
    return end;
}

double signed_radius(double radius, bool inside) {
    return inside ? radius : -radius;
}

// How far a circle about that centre has to reach for the disc: to its far side, or to its near one.
double reach(giCircle2 const & circle, giPoint2 const & p, double radius, bool inside) {
    return distance(circle.centre(), p) + signed_radius(radius, inside);
}

// A negative reach is that of a disc which holds the centre.
bool outside(giLength const & radius, double reach) {
    return radius.invalid() || (reach >= 0.0 && radius < reach);
}

// The smallest circle that two discs lie in, or that reaches the near side of both. Of discs that overlap the near
// sides are behind each other, and a point of both discs reaches them. Discs of one centre get that centre.
giCircle2 circle_about_two(tncCircle2 const & first, tncCircle2 const & second, bool inside) {
    double const d = distance(first.centre(), second.centre());
    if (d == 0.0) return giCircle2(first.centre(), 0.0);
    giVector2 const v = (second.centre() - first.centre()).unitize();
    double const r1 = signed_radius(first.radius(), inside), r2 = signed_radius(second.radius(), inside);
    double const radius = (d + (r2 + r1)) * 0.5;
    if (radius < 0.0 && d + r1 < r2) return giCircle2(second.centre(), 0.0);  // the first disc holds the second
    if (radius < 0.0 && d + r2 < r1) return giCircle2(first.centre(), 0.0);
    giPoint2 const a = first.centre() - r1 * v, b = second.centre() + r2 * v;
    giPoint2 const middle = (giPointAverage2(a) + giPointAverage2(b)).average();
    return giCircle2(middle, length_of(radius));
}

}  // namespace

giCircle2 sqMinimumCircumscribedCircle::fit_two_point_circle(giPoint2 const & a, giPoint2 const & b) {
    giPoint2 const centre = a.interpolate(b, 0.5);
    return giCircle2(centre, distance(a, centre));
}

giCircle2 sqMinimumCircumscribedCircle::fit_smallest_enclosing_circle(points2 const & points) {
    std::size_t const n = points.size();
    if (n == 0) return giCircle2();
    if (n == 1) return giCircle2(points[0], 0.0);
    giVector2 const origin = origin_of(points);
    giCircle2 circle = fit_two_point_circle(seen_from(origin, points[0]), seen_from(origin, points[1]));
    for (std::size_t i = 2; (i = first_outside(circle, points, origin, i, n)) < n; ++i) {
        circle = smallest_circle_with_one_point(points, origin, i);
    }
    return giCircle2(circle.centre() + origin, circle.radius());
}

giCircle2 sqMinimumCircumscribedCircle::smallest_circle_with_one_point(points2 const & points, giVector2 const & origin,
                                                                       std::size_t q) {
    giPoint2 const a = seen_from(origin, points[q]);
    giCircle2 circle = fit_two_point_circle(seen_from(origin, points[0]), a);
    for (std::size_t j = 1; (j = first_outside(circle, points, origin, j, q)) < q; ++j) {
        giPoint2 const b = seen_from(origin, points[j]);
        if (!coincident(b, a, same_point)) circle = smallest_circle_with_two_points(points, origin, j, q);
    }
    return circle;
}

giCircle2 sqMinimumCircumscribedCircle::smallest_circle_with_two_points(points2 const & points,
                                                                        giVector2 const & origin, std::size_t j,
                                                                        std::size_t q) {
    giPoint2 const a = seen_from(origin, points[j]), b = seen_from(origin, points[q]);
    giCircle2 circle = fit_two_point_circle(a, b);
    for (std::size_t k = 0; (k = first_outside(circle, points, origin, k, j)) < j; ++k) {
        giPoint2 const p = seen_from(origin, points[k]);
        if (!coincident(p, a, same_point) && !coincident(p, b, same_point)) circle.become(p, a, b);
    }
    return circle;
}

giCircle2 sqMinimumCircumscribedCircle::fit_smallest_enclosing_circle_probed(points2 const & points,
                                                                             numbers const & radii, bool inside) {
    std::size_t const n = points.size();
    if (n == 0) return giCircle2();
    giCircle2 circle(points[0], 0.0);
    auto const is_first = [&](giPoint2 const & p) { return coincident(p, points[0], same_point); };
    if (std::all_of(points.begin() + 1, points.end(), is_first)) return circle;
    for (std::size_t i = 1; i < n; ++i) {
        if (outside(circle.radius(), reach(circle, points[i], radii[i], inside))) {
            circle = smallest_circle_with_one_point_probed(points, radii, inside, i);
        }
    }
    return circle;
}

giCircle2 sqMinimumCircumscribedCircle::smallest_circle_with_one_point_probed(points2 const & points,
                                                                              numbers const & radii, bool inside,
                                                                              std::size_t q) {
    giCircle2 circle(points[q], 0.0);
    for (std::size_t j = 0; j < q; ++j) {
        if (outside(circle.radius(), reach(circle, points[j], radii[j], inside))) {
            circle = smallest_circle_with_two_points_probed(points, radii, inside, j, q);
        }
    }
    return circle;
}

giCircle2 sqMinimumCircumscribedCircle::smallest_circle_with_two_points_probed(points2 const & points,
                                                                               numbers const & radii, bool inside,
                                                                               std::size_t j, std::size_t q) {
    tncCircle2 const first(points[j], radii[j]), second(points[q], radii[q]);
    giCircle2 circle = circle_about_two(first, second, inside);
    for (std::size_t k = 0; k < j; ++k) {
        double const r = reach(circle, points[k], radii[k], inside);
        if (!outside(circle.radius(), r)) continue;
        tncCircle2 touching;
        tncCircle2Constructor::construct(touching, tncTangentAny, first, tncTangentAny, second, tncTangentAny,
                                         tncCircle2(points[k], radii[k]), inside ? 14 : 0);
        if (touching.centre().invalid()) {
            circle.become(circle.centre(), r);
        } else {
            circle.become(touching.centre(), length_of(touching.radius()));
        }
    }
    return circle;
}
