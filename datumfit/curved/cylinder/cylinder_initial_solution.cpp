#include <datumfit/curved/cylinder/cylinder_initial_solution.h>

#include <datumfit/curved/best_first.h>
#include <datumfit/curved/cylinder/circles_along_axes.h>
#include <datumfit/extremal/circle_touching_three_circles.h>
#include <datumfit/foundation/geometry/inf_line3.h>
#include <datumfit/foundation/utilities/math.h>
#include <datumfit/sampling/vector_gradient.h>

#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

using namespace datumfit::internal;

namespace {

constexpr double coincident = 1e-7;    // points nearer to each other than this give no direction
constexpr double least_corner = 1e-5;  // radians between the sides of three points that are not in a line
constexpr double rings_not_parallel = 0.1;
constexpr double rings_not_equal = 1.0;

constexpr int scans = 3;
constexpr int first_rings = 20;
constexpr double narrower = 1.5;     // times the step of a fan is the range of the next one
constexpr double settled = 0.99;     // cosine of the angle between two fans' best directions
constexpr double good_enough = 0.1;  // greatest distance of a point, in the unit in use

// The circle through three points. 0 when two of them coincide or all lie in a line.
int circle_through_three_points(giPoint3 const & p0, giPoint3 const & p1, giPoint3 const & p2, giPoint3 & centre,
                                giVector3 & normal, double & radius) {
    giVector3 u = p0 - p1, v = p1 - p2;
    if (u.length() < coincident || v.length() < coincident) return 0;
    u.unitize();
    v.unitize();
    normal = u.cross(v);
    radius = utMath::max_double();
    if (normal.length() < std::sin(least_corner)) return 0;
    normal.unitize();
    giInfLine3 const a(p0 + 0.5 * (p1 - p0), normal.cross(u));
    giInfLine3 const b(p1 + 0.5 * (p2 - p1), normal.cross(v));
    double s, t;
    giLineIntersectStatus status;
    closest_points(a, b, giAngle(giAngleRadians, least_corner), s, t, status);
    if (status != giLineIntersectFound) return 0;
    giPoint3 const on_a = a.interpolate(s);
    centre = on_a + 0.5 * (b.interpolate(t) - on_a);
    radius = centre.distance(p0);
    return 1;
}

int circle_of_three(probe_set const & set, int first, giVector3 & normal, double & radius) {
    giPoint3coDynArr const & p = set.points;
    giPoint3 centre;
    if (!set.probed()) return circle_through_three_points(p[first], p[first + 1], p[first + 2], centre, normal, radius);
    doublecoDynArr const & r = *set.radii;
    return CircleTouchingThreeCircles3D(p[first], r[first], p[first + 1], r[first + 1], p[first + 2], r[first + 2],
                                        set.inside, normal, centre, radius);
}

// Whether six points are two rings of a cylinder, whose axis is then the first ring's normal.
bool axis_of_two_rings(probe_set const & set, giVector3 & axis) {
    if (set.points.size() != 6) return false;
    giVector3 n1, n2;
    double r1, r2;
    if (circle_of_three(set, 0, n1, r1) == 0 || circle_of_three(set, 3, n2, r2) == 0) return false;
    bool const parallel = std::abs(std::abs(n1.dot(n2)) - 1.0) <= rings_not_parallel;
    if (!parallel || !(std::abs(r1 - r2) <= rings_not_equal)) return false;
    axis = n1;
    return true;
}

giVector3 first_direction(giPoint3coDynArr const & points) {
    giVector3 const x_axis(giAxisX);
    if (points.size() < 2) return x_axis;
    giVector3 const direction = points[0] - points[1];
    return direction.length() < coincident ? x_axis : direction;
}

// The directions of a fan, each with the greatest distance of a point from the circle along it.
class scanned_fan {
public:
    scanned_fan(circles_along_axes & circles, sqVectorGradient const & fan, int n) : circles_(circles), n_(n) {
        seen_.reserve(static_cast<std::size_t>(fan.total_steps()));
        for (sqVectorGradientIterator at = fan.iterator(); at++;) seen_.push_back({at.vector(), unseen, unseen});
    }

    // Writes the direction that a walk in order, from the best figure so far on, ends with. False when it finds no
    // better one.
    bool walk(double & best, giVector3 & direction) {
        int const winner = best < good_enough ? first_seen(best) : best_seen(best);
        if (winner >= 0) direction = seen_[static_cast<std::size_t>(winner)].direction;
        return winner >= 0;
    }

private:
    static constexpr double unseen = -1.0;

    struct seen {
        giVector3 direction;
        double bound;
        double figure;
    };

    // The greatest distance is at least the root mean square of all.
    double bound(int i) {
        seen & s = seen_[static_cast<std::size_t>(i)];
        if (s.bound == unseen) s.bound = std::sqrt(circles_.bound(giUnitVec3(s.direction)) / n_);
        return s.bound;
    }
    double figure(int i) {
        seen & s = seen_[static_cast<std::size_t>(i)];
        if (s.figure == unseen) {
            bool const fitted = circles_.fit(giUnitVec3(s.direction));
            s.figure = fitted ? circles_.greatest_distance() : std::numeric_limits<double>::infinity();
        }
        return s.figure;
    }

    // When the best figure is good enough already, the walk ends with the first direction that has a circle.
    int first_seen(double & best) {
        for (int i = 0; i < size(); ++i) {
            if (!std::isfinite(figure(i))) continue;
            if (!(figure(i) < best)) return -1;
            best = figure(i);
            return i;
        }
        return -1;
    }

    // The first direction that is good enough ends the walk; if there is none, the best of all wins.
    int best_seen(double & best) {
        for (int i = 0; i < size(); ++i) {
            if (bound(i) < good_enough && figure(i) < good_enough) {
                best = figure(i);
                return i;
            }
        }
        std::vector<int> order(seen_.size());
        std::iota(order.begin(), order.end(), 0);
        return least_scored(
            order, [&](int i) { return bound(i); }, [&](int i) { return figure(i); }, best);
    }

    int size() const { return static_cast<int>(seen_.size()); }

    circles_along_axes & circles_;
    double n_;
    std::vector<seen> seen_;
};

// The best direction of fans that get finer.
giVector3 scan_directions(probe_set const & set) {
    circles_along_axes circles(set);
    giVector3 present = first_direction(set.points);
    double best = utMath::max_double();
    double range = utMath::pi();
    int rings = first_rings;
    for (int scan = 0; scan < scans; ++scan) {
        sqVectorGradient const fan(present, range, rings);
        giVector3 previous = present;
        bool const better = scanned_fan(circles, fan, set.points.size()).walk(best, present);
        range = better ? narrower * fan.step_angle() : utMath::pi();
        previous.unitize();
        present.unitize();
        if (previous.dot(present) > settled) break;
        rings = static_cast<int>(utMath::max(std::sqrt(static_cast<double>(rings)), 2.0));
    }
    return present;
}

}  // namespace

giVector3 datumfit::internal::initial_axis(probe_set const & set) {
    giVector3 axis;
    return axis_of_two_rings(set, axis) ? axis : scan_directions(set);
}

int sqCylinder_InitialSolution(giPoint3coDynArr const & points, giVector3 & axis) {
    axis = initial_axis({points});
    return 1;
}

int sqCylinder_InitialSolutionProbed(giPoint3coDynArr const & points, doublecoDynArr const & radii, int inside,
                                     giVector3 & axis) {
    axis = initial_axis({points, &radii, inside});
    return 1;
}
