#include <datumfit/align2d/chain_projector2.h>
#include <datumfit/align2d/line_locks.h>
#include <datumfit/align2d/probed_point2.h>

#include <cmath>
#include <limits>

namespace {

using namespace datumfit::internal;

// Nearer to its foot than this, in the unit of the coordinates, a probe centre gives no direction to be trusted.
constexpr double on_curve = 1e-4;

std::vector<sqChainElement2> segments_of(giPoint2coDynArr const & vertices, int closed) {
    std::vector<sqChainElement2> elements;
    int const n = vertices.size();
    for (int i = 1; i < n; ++i) elements.push_back(sqChainElement2::segment(vertices.read(i - 1), vertices.read(i)));
    if (closed && n > 0) elements.push_back(sqChainElement2::segment(vertices.read(n - 1), vertices.read(0)));
    return elements;
}

// The direction `normal` after the rotation of x; not set where `normal` is not.
giUnitVec2 turned(giXform2 const & x, giUnitVec2 const & normal) {
    return normal.invalid() ? normal : giUnitVec2(x * normal.anchor() - x * giPoint2(giOrigin));
}

// How a probe centre lies off a foot: the normal to measure along, and n . v.
struct probe_offset {
    giUnitVec2 normal;
    double n_v;
};

probe_offset offset_of(giPoint2 const & centre, giUnitVec2 const & approximate_normal, sqChainFoot2 const & foot) {
    giUnitVec2 const & side = approximate_normal.invalid() ? foot.normal : approximate_normal;
    giVector2 const v = centre - foot.place;
    giUnitVec2 const & n = foot.normal;
    if (v.length() < on_curve) {
        giUnitVec2 const normal = side.dot(n) < 0.0 ? -n : n;
        return {normal, normal.dot(v)};
    }
    giUnitVec2 const direction = n.dot(v) < 0.0 ? -n : n;  // that of v, with all its digits
    bool const same_side = side.dot(direction) > 0.0;
    return {same_side ? direction : -direction, same_side ? 1.0 : -1.0};
}

}  // namespace

sqChainProjector2::sqChainProjector2(giPoint2coDynArr const & vertices, int closed, giAngle const & smooth_turn)
    : chain_(segments_of(vertices, closed), smooth_turn.angle(giAngleRadians)) {}

sqChainProjector2::sqChainProjector2(sqChainElement2coDynArr const & elements, giAngle const & smooth_turn)
    : chain_(std::vector<sqChainElement2>(elements.data(), elements.data() + elements.size()),
             smooth_turn.angle(giAngleRadians)) {}

sqChainProjector2::~sqChainProjector2() = default;

void sqChainProjector2::find_feet(giPoint2 const & p, sqChainFoot2coDynArr & feet) const {
    feet.clear(0);
    if (!is_set_and_finite(p)) return;
    nearest_feet2 nearest(chain_, p);
    for (sqChainFoot2 foot; nearest.next(foot, HUGE_VAL);) {
        if (feet.size() == feet.capacity()) feet.reserve(2 * feet.size());
        feet.append(foot);
    }
}

void sqChainProjector2::rotate_and_project(giXform2 const & x, sqProbedPoint2 const * point,
                                           sqProjectedPoint2 & result) const {
    result = sqProjectedPoint2();
    giPoint2 const centre = x * point->measured_point();
    giUnitVec2 const side = turned(x, point->approximate_normal());
    double const radius = point->radius();
    if (!is_set_and_finite(centre) || !std::isfinite(radius)) return;

    // No foot off the curve is better than this. Once it is reached, only feet on the curve are worth looking for.
    double const least_off_curve = std::abs(std::abs(radius) - 1.0);
    double least = std::numeric_limits<double>::max();
    nearest_feet2 feet(chain_, centre);
    for (sqChainFoot2 foot; feet.next(foot, least <= least_off_curve ? on_curve : HUGE_VAL);) {
        probe_offset const offset = offset_of(centre, side, foot);
        double const misfit = std::abs(offset.n_v - radius);
        if (misfit < least) {
            least = misfit;
            result = sqProjectedPoint2(centre, foot.place + radius * giVector2(offset.normal), offset.normal);
        }
    }
}
