#include <datumfit/extremal/min_max_circle_fit.h>

#include <datumfit/extremal/finite_circle.h>
#include <datumfit/extremal/mean_point.h>
#include <datumfit/extremal/probed_min_max_circle_function_n1.h>
#include <datumfit/extremal/signed_radii.h>
#include <datumfit/foundation/geometry/unit_vec2.h>
#include <datumfit/foundation/maths/down_hill_simplex.h>
#include <datumfit/primitives/utils.h>

#include <algorithm>
#include <limits>

namespace {

using points2 = std::vector<giPoint2>;
using numbers = std::vector<double>;
using records = std::vector<std::pair<double, std::size_t>>;

// In the caller's unit: a ring narrower than this has closed, and a point nearer than this to the centre has no
// direction from it.
constexpr double least_zone = 1.1920928955078125e-6;

constexpr double greatest = std::numeric_limits<double>::max();

// Few points are extreme at a time.
constexpr std::size_t usual_records = 4;

constexpr std::size_t most_steps_a_point = 10;

// The values of sqUtils::quick_angle() for no turn and for a whole one.
constexpr double no_turn = -2.0, whole_turn = 2.0;

// False where the point is too near to have a direction from the centre.
bool direction_to(giPoint2 const & p, giPoint2 const & centre, giUnitVec2 & direction) {
    giVector2 const v = p - centre;
    if (v.length() <= least_zone) return false;
    direction = giUnitVec2(v);
    return true;
}

// The arc from the first to the last of the far points, counted counterclockwise from the first near point. A far point
// in the direction of that one lies at either end of the turn, and is kept apart until it is clear at which.
struct far_arc {
    double low = greatest, high = -greatest;
    std::size_t low_index = 0, high_index = 0, same_index = 0;
    bool has_same = false;

    void take(double angle, std::size_t index) {
        if (angle == no_turn) {
            same_index = index;
            has_same = true;
            return;
        }
        if (angle < low) {
            low = angle;
            low_index = index;
        }
        if (angle > high) {
            high = angle;
            high_index = index;
        }
    }
    bool is_empty() const { return low == greatest; }

    // Puts the point kept apart to the end that keeps the arc clear of a near point.
    void place_same(double near_angle) {
        if (!has_same) return;
        if (high > near_angle) {
            high = whole_turn;
            high_index = same_index;
        } else {
            low = no_turn;
            low_index = same_index;
        }
        has_same = false;
    }
    bool has_inside(double angle) const { return angle > low && high > angle; }
};

// Where distances leave the range of doubles.
giCircle2 no_ring(double & zone) {
    zone = 0.0;
    return giCircle2();
}

giLength half_way(double nearest, double farthest) {
    return datumfit::internal::length_of((nearest + farthest) * 0.5);
}

}  // namespace

giPoint2 sqMinMaxCircleFit::get_centre_point(points2 const & points) {
    return datumfit::internal::mean_point(points);
}

bool sqMinMaxCircleFit::step_direction(points2 const & points, records const & near, records const & far,
                                       giPoint2 const & centre, giVector2 & direction) {
    if (far.size() == 1) {
        direction = points[far[0].second] - centre;
        return true;
    }
    if (far[0].first - near[0].first < least_zone) return false;

    giUnitVec2 first, u;
    if (!direction_to(points[near[0].second], centre, first)) return false;
    far_arc arc;
    for (auto const & record : far) {
        if (!direction_to(points[record.second], centre, u)) return false;
        arc.take(sqUtils::quick_angle(first, u), record.second);
    }
    if (arc.is_empty()) return false;
    for (std::size_t k = 1; k < near.size(); ++k) {
        if (!direction_to(points[near[k].second], centre, u)) return false;
        double const angle = sqUtils::quick_angle(first, u);
        arc.place_same(angle);
        if (arc.has_inside(angle)) return false;
    }

    giUnitVec2 low, high;
    if (!direction_to(points[arc.low_index], centre, low)) return false;
    if (!direction_to(points[arc.high_index], centre, high)) return false;
    direction = sqUtils::bisector(low, high);
    return true;
}

giCircle2 sqMinMaxCircleFit::fit(points2 const & points, double & zone) {
    zone = 0.0;
    if (points.empty()) return giCircle2();
    if (points.size() == 1) return giCircle2(points[0], 0.0);

    records far, near;
    far.reserve(usual_records);
    near.reserve(usual_records);
    zone = greatest;
    giPoint2 centre = get_centre_point(points), best = centre;
    double radius = 0.0;
    for (std::size_t left = most_steps_a_point * points.size(); left > 0; --left) {
        sqCircleFitUtils::calculate_distances(points, centre, far, near, {});
        if (near.empty()) break;  // distances beyond all doubles
        double const width = far[0].first - near[0].first;
        if (zone < width) break;
        zone = width;
        radius = (far[0].first + near[0].first) * 0.5;
        best = centre;
        giVector2 direction;
        double step = 0.0;
        if (!step_direction(points, near, far, best, direction)) break;
        if (!sqCircleFitUtils::step_distance(best, direction, points, near, step)) break;
        centre = best + step * direction;
    }
    giCircle2 const circle = datumfit::internal::finite_circle(best, radius);
    if (zone == greatest || circle.centre().invalid()) return no_ring(zone);
    return circle;
}

giCircle2 sqMinMaxCircleFit::fit_probed(points2 const & points, numbers const & radii, bool inside, double & zone) {
    zone = 0.0;
    if (points.empty()) return giCircle2();
    numbers const signed_radii = datumfit::internal::signed_radii(radii, inside);
    giPoint2 const mean = get_centre_point(points);
    mlVector place(mlVectorZero, 2);
    place[0] = mean.x();
    place[1] = mean.y();
    mlDownHillSimplex simplex(2);
    sqProbedMinMaxCircleFunctionN1 width(points, signed_radii);
    simplex.solve(width, place, mlDownHillSimplexThorough);
    simplex.result(place);
    giPoint2 const centre(place[0], place[1]);

    records far, near;
    far.reserve(usual_records);
    near.reserve(usual_records);
    sqCircleFitUtils::calculate_distances(points, centre, far, near, signed_radii);
    if (near.empty()) return no_ring(zone);
    double const nearest = near[0].first;
    // Distances all below -1 have no far record.
    double const farthest = far.empty() ? nearest + width.function(place) : far[0].first;
    giCircle2 const circle = datumfit::internal::finite_circle(centre, half_way(nearest, farthest));
    if (circle.centre().invalid()) return no_ring(zone);
    zone = farthest - nearest;
    return circle;
}
