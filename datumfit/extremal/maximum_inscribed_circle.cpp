#include <datumfit/extremal/maximum_inscribed_circle.h>

#include <datumfit/extremal/circle_fit_utils.h>
#include <datumfit/extremal/finite_circle.h>
#include <datumfit/extremal/mean_point.h>
#include <datumfit/extremal/signed_radii.h>
#include <datumfit/foundation/circles/circle2_constructor.h>
#include <datumfit/primitives/utils.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

using datumfit::internal::finite_circle;
using datumfit::internal::length_of;
using points2 = std::vector<giPoint2>;
using numbers = std::vector<double>;
using records = std::vector<std::pair<double, std::size_t>>;

// 2^-23: directions nearer to each other than this count as one, and shorter steps as none, in the caller's unit.
constexpr double tolerance = 1.1920928955078125e-7;

constexpr double greatest = std::numeric_limits<double>::max();

constexpr std::size_t no_point = std::numeric_limits<std::size_t>::max();

// The value of sqUtils::quick_angle() for no turn.
constexpr double no_turn = -2.0;

// False where the two are one point.
bool direction_between(giPoint2 const & from, giPoint2 const & to, giUnitVec2 & direction) {
    giVector2 const v = to - from;
    if (v.length() == 0.0) return false;
    direction = giUnitVec2(v);
    return true;
}

// Leaves the points at both sides of the gap.
void reduce_to(std::size_t first, std::size_t second, records & near) {
    near.clear();
    near.emplace_back(0.0, first);
    if (second != first) near.emplace_back(0.0, second);
}

// How far to go along the ray from point p through the centre until another point is as near as p, by the distances
// less the radii. From p the way to that place is L = (|b|^2 - (r - q)^2) / (2 (q - r - b.direction)) with b = p - q.
bool step_away_from(std::size_t p, giPoint2 const & centre, giVector2 const & direction, points2 const & points,
                    numbers const & radii, double & step) {
    step = greatest;
    double const r = radii[p], d = distance(centre, points[p]);
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (i == p) continue;
        giVector2 const b = points[p] - points[i];
        double const q = radii[i], v = b.dot(direction), h = v + r - q;
        if (std::abs(2.0 * h) < tolerance) continue;  // never as near
        double const t = r - (b.dot(b) + r * r - q * q + 2.0 * r * v) / (2.0 * h) - d;
        if (t > tolerance) step = std::min(t, step);
    }
    return step != greatest;
}

// Goes along the curve on which two points are equally near, until another one is as near. The centre there is that of
// the circle which touches all three.
bool step_between(std::size_t first, std::size_t second, giPoint2 const & centre, giVector2 const & direction,
                  points2 const & points, numbers const & radii, bool inside, giPoint2 & new_centre) {
    auto const disc = [&](std::size_t i) { return tncCircle2(points[i], std::abs(radii[i])); };
    tncCircle2 const c1 = disc(first), c2 = disc(second);
    double best = greatest;
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (i == first || i == second) continue;
        tncCircle2 touching;
        tncCircle2Constructor::construct(touching, tncTangentAny, c1, tncTangentAny, c2, tncTangentAny, disc(i),
                                         inside ? 14 : 0);
        if (touching.centre().invalid()) continue;
        double const s = (touching.centre() - centre).dot(direction);
        if (s > tolerance && best > s) {
            best = s;
            new_centre = touching.centre();
        }
    }
    return best != greatest;
}

}  // namespace

bool sqMaximumInscribedCircle::step_direction_inscribed(points2 const & points, records const & near,
                                                        giPoint2 const & centre, giUnitVec2 & direction,
                                                        std::size_t & first, std::size_t & second) {
    giUnitVec2 w, a, b;
    if (near.empty()) return false;  // distances beyond all doubles
    if (!direction_between(centre, points[near[0].second], w)) return false;
    records around = {{no_turn, near[0].second}};  // by angles counterclockwise from the first near point
    for (std::size_t k = 1; k < near.size(); ++k) {
        if (!direction_between(centre, points[near[k].second], a)) return false;
        double const angle = sqUtils::quick_angle(w, a);
        if (std::abs(angle - no_turn) > tolerance) around.emplace_back(angle, near[k].second);
    }
    if (around.size() == 1) {
        direction = -w;
        first = second = around[0].second;
        return true;
    }

    std::sort(around.begin(), around.end());
    double widest = -greatest;
    giUnitVec2 from, to;
    for (std::size_t k = 0; k < around.size(); ++k) {
        std::size_t const here = around[k].second, next = around[(k + 1) % around.size()].second;
        if (!direction_between(centre, points[here], a) || !direction_between(centre, points[next], b)) return false;
        double const gap = sqUtils::quick_angle(a, b);
        if (!(gap > widest)) continue;
        widest = gap;
        first = here;
        second = next;
        from = a;
        to = b;
    }
    if (widest < 0.0) return false;
    direction = sqUtils::bisector(from, to);
    return true;
}

giCircle2 sqMaximumInscribedCircle::calculate_maximum_inscribed_circle(points2 const & points,
                                                                       utOptionalArg<giCircle2 &> start) {
    if (!start && points.empty()) return giCircle2();
    giPoint2 centre = start ? start.value().centre() : datumfit::internal::mean_point(points);
    giLength radius = start ? start.value().radius() : distance(centre, points[0]);
    if (centre.invalid()) return giCircle2(centre, radius);

    records far, near;
    std::size_t first = no_point, second = no_point;
    for (std::size_t pass = 0; pass < points.size(); ++pass) {
        sqCircleFitUtils::calculate_distances(points, centre, far, near, {});
        giUnitVec2 direction;
        double step = 0.0;
        bool const goes_on = step_direction_inscribed(points, near, centre, direction, first, second);
        if (pass == 0 && first != no_point) radius = distance(centre, points[first]);
        if (!goes_on) break;
        if (near.size() > 2) reduce_to(first, second, near);
        if (!sqCircleFitUtils::step_distance(centre, direction, points, near, step)) break;
        centre += step * direction;
        radius = distance(centre, points[first]);
    }
    return finite_circle(centre, radius);
}

bool sqMaximumInscribedCircle::inscribed_probe_step(giPoint2 const & centre, giVector2 const & direction,
                                                    points2 const & points, numbers const & radii, records const & near,
                                                    bool inside, giPoint2 & new_centre) {
    if (near.size() > 1) {
        return step_between(near[0].second, near[1].second, centre, direction, points, radii, inside, new_centre);
    }
    double step = 0.0;
    if (!step_away_from(near[0].second, centre, direction, points, radii, step)) return false;
    new_centre = centre + step * direction;
    return true;
}

giCircle2 sqMaximumInscribedCircle::calculate_maximum_inscribed_circle_probed(points2 const & points,
                                                                              numbers const & radii, bool inside,
                                                                              utOptionalArg<giCircle2 &> start) {
    if (!start && points.empty()) return giCircle2();
    numbers const signed_radii = datumfit::internal::signed_radii(radii, inside);
    giPoint2 centre = start ? start.value().centre() : datumfit::internal::mean_point(points);
    giLength radius = start ? start.value().radius() : length_of(distance(centre, points[0]) - signed_radii[0]);
    if (centre.invalid()) return giCircle2(centre, radius);

    records far, near;
    for (std::size_t pass = 0; pass < points.size(); ++pass) {
        sqCircleFitUtils::calculate_distances(points, centre, far, near, signed_radii);
        giUnitVec2 direction;
        giPoint2 moved;
        std::size_t first = no_point, second = no_point;
        if (!step_direction_inscribed(points, near, centre, direction, first, second)) break;
        if (near.size() > 1) reduce_to(first, second, near);
        if (!inscribed_probe_step(centre, direction, points, signed_radii, near, inside, moved)) break;
        centre = moved;
        radius = length_of(distance(centre, points[first]) - signed_radii[first]);
    }
    return finite_circle(centre, radius);
}
