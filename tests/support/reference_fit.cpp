#include "support/reference_fit.h"

#include <datumfit/datumfit.h>

#include <algorithm>
#include <limits>
#include <sstream>

namespace reference {
namespace {

using Fit = sqLeastSquareEvaluator;

// What an entry writes to, in space or in the plane.
template <typename Point, typename Direction>
struct Results {
    Point place;
    Direction direction;
    double size = 0.0, deviation = 0.0;
};

Exact3 exact(giPoint3 const & p) {
    return {p.x(), p.y(), p.z()};
}
Exact3 exact(giPoint2 const & p) {
    return {p.x(), p.y(), 0};
}
Exact3 exact(giUnitVec3 const & v) {
    return v.invalid() ? Exact3{} : Exact3{v.x(), v.y(), v.z()};
}
Exact3 exact(giUnitVec2 const & v) {
    return v.invalid() ? Exact3{} : Exact3{v.x(), v.y(), 0};
}

giPoint3coDynArr points_of(PointSet const & data) {
    giPoint3coDynArr points(static_cast<int>(data.points.size()), 1);
    for (auto const & p : data.points) points.append(giPoint3(p[0], p[1], p[2]));
    return points;
}

doublecoDynArr radii_of(PointSet const & data) {
    doublecoDynArr radii(static_cast<int>(data.radii.size()), 1);
    for (double const r : data.radii) radii.append(r);
    return radii;
}

std::optional<Solution> fit_in_plane(PointSet const & data) {
    giPoint2coDynArr points(static_cast<int>(data.points.size()), 1);
    for (auto const & p : data.points) points.append(giPoint2(p[0], p[1]));
    doublecoDynArr const radii = radii_of(data);
    Results<giPoint2, giUnitVec2> r;
    int found = 0;
    if (data.primitive == Primitive::circle) {
        found = data.is_probed() ? Fit::evaluate_probed_circle(points, radii, data.inside, r.place, r.size, r.deviation)
                                 : Fit::evaluate_circle(points, r.place, r.size, r.deviation);
    } else if (data.is_probed()) {
        giUnitVec2coDynArr const normals = {giUnitVec2(data.approximate_normal[0], data.approximate_normal[1])};
        giUnitVec2 normal;
        found = Fit::evaluate_probed_line2(points, radii, normals, r.place, normal, r.deviation);
        r.direction = giUnitVec2(-normal.y(), normal.x());
    } else {
        found = Fit::evaluate_line(points, r.place, r.direction, r.deviation);
    }
    if (!found) return std::nullopt;
    return Solution{exact(r.place), exact(r.direction), r.size, r.deviation};
}

std::optional<Solution> fit_in_space(PointSet const & data) {
    giPoint3coDynArr const points = points_of(data);
    doublecoDynArr const radii = radii_of(data);
    Results<giPoint3, giUnitVec3> r;
    int found = 0;
    if (data.primitive == Primitive::line3) {
        found = Fit::evaluate_line3(points, r.place, r.direction, r.deviation);
    } else if (data.primitive == Primitive::sphere) {
        found = data.is_probed() ? Fit::evaluate_probed_sphere(points, radii, data.inside, r.place, r.size, r.deviation)
                                 : Fit::evaluate_sphere(points, r.place, r.size, r.deviation);
    } else if (data.primitive == Primitive::circle3) {
        found = Fit::evaluate_circle3(points, r.place, r.direction, r.size, r.deviation);
    } else if (data.is_probed()) {
        auto const & n = data.approximate_normal;
        giUnitVec3coDynArr const normals = {giUnitVec3(n[0], n[1], n[2])};
        found = Fit::evaluate_probed_plane(points, radii, normals, r.place, r.direction, r.deviation);
    } else {
        found = Fit::evaluate_plane(points, r.place, r.direction, r.deviation);
        if (found && data.primitive == Primitive::circle_in_plane) {
            giPoint3 const origin = r.place;
            found = Fit::evaluate_circle2(origin, r.direction, points, r.place, r.size, r.deviation);
        }
    }
    if (!found) return std::nullopt;
    return Solution{exact(r.place), exact(r.direction), r.size, r.deviation};
}

// Sets the tolerance of cones, until its end.
class ConeTolerance {
public:
    explicit ConeTolerance(double tolerance) : before_(Fit::set_cone_non_physical_tolerance(tolerance)) {}
    ConeTolerance(ConeTolerance const &) = delete;
    ConeTolerance & operator=(ConeTolerance const &) = delete;
    ~ConeTolerance() { Fit::set_cone_non_physical_tolerance(before_); }

private:
    double before_;
};

// Searched without a start or a direction to prefer. The result of a cone is told at its apex, where the distance is 0.
std::optional<Solution> fit_mantle(PointSet const & data) {
    giPoint3coDynArr const points = points_of(data);
    doublecoDynArr const radii = radii_of(data);
    giUnitVec3 const any;
    giAngle const limit;
    Results<giPoint3, giUnitVec3> r;
    double half_angle = 0.0;
    int found = 0;
    if (data.primitive == Primitive::cone) {
        ConeTolerance const tolerance(data.cone_tolerance);
        found = data.is_probed()
                    ? Fit::evaluate_probed_cone(points, radii, data.inside, points, r.place, r.direction, half_angle,
                                                r.deviation, any, limit, 0)
                    : Fit::evaluate_cone(points, r.place, r.direction, half_angle, r.deviation, any, limit, 0);
        r.direction = giUnitVec3(-r.direction.x(), -r.direction.y(), -r.direction.z());
    } else {
        found = data.is_probed()
                    ? Fit::evaluate_probed_cylinder(points, radii, data.inside, r.place, r.direction, r.size,
                                                    r.deviation, any, limit, 0)
                    : Fit::evaluate_cylinder(points, r.place, r.direction, r.size, r.deviation, any, limit, 0);
    }
    if (!found) return std::nullopt;
    return Solution{exact(r.place), exact(r.direction), r.size, r.deviation, half_angle};
}

// The unit in the last place of x.
long double ulp(long double x) {
    double const a = std::abs(static_cast<double>(x));
    return std::nextafter(a, std::numeric_limits<double>::infinity()) - a;
}

long double ulps(Exact3 const & v) {
    return length(v) > 0 ? length({ulp(v[0]), ulp(v[1]), ulp(v[2])}) : 0;
}

}  // namespace

std::optional<Solution> fit(PointSet const & data) {
    if (is_in_plane(data.primitive)) return fit_in_plane(data);
    return is_mantle(data.primitive) ? fit_mantle(data) : fit_in_space(data);
}

Differences differences(PointSet const & data, Solution const & truth, Solution const & found) {
    Exact3 const apart = along(truth.place, -1, found.place);
    bool const directed = length(truth.direction) > 0;
    Exact3 const axis = directed ? unit(found.direction) : Exact3{};
    long double const place = has_axis(data.primitive)             ? length(cross(axis, apart))
                              : data.primitive == Primitive::plane ? std::abs(dot(axis, apart))
                                                                   : length(apart);
    long double const angle =
        directed ? std::atan2(length(cross(axis, truth.direction)), std::abs(dot(axis, truth.direction))) : 0;
    long double const size = found.size + dot(axis, apart) * std::sin(found.half_angle);
    return {place, angle, std::abs(size - truth.size), truth.rms < 0 ? 0 : std::abs(found.rms - truth.rms),
            std::abs(found.half_angle - truth.half_angle)};
}

Differences bounds(PointSet const & data, Solution const & truth, Solution const & found, Gain const & gain,
                   bool rounded_input) {
    constexpr long double epsilon = std::numeric_limits<double>::epsilon();
    Exact3 low{}, high{};
    long double largest = 0;
    for (std::size_t k = 0; k < 3; ++k) {
        auto const [least, most] = std::minmax_element(data.points.begin(), data.points.end(),
                                                       [k](auto const & a, auto const & b) { return a[k] < b[k]; });
        low[k] = (*least)[k];
        high[k] = (*most)[k];
        largest = std::max({largest, std::abs(low[k]), std::abs(high[k])});
    }
    long double const S = length(along(high, -1, low)) / 2 + truth.size;
    long double const rounding = 8 * epsilon * S + (rounded_input ? ulp(largest) / 2 : 0);

    // The point of an axis, line or plane may lie away from the foot of the centroid; the rounding of the direction
    // shows there, and that of a cone's half angle. An apex has the rounding of what it is added up from: the foot of
    // the origin on the axis, and the height above it.
    long double const turned = ulps(found.direction), opened = ulp(found.half_angle);
    long double const lever = length(along(truth.place, -1, found.place));
    bool const endless = has_axis(data.primitive) || data.primitive == Primitive::plane;
    long double const summed = data.primitive == Primitive::cone ? 2 * ulp(length(found.place)) : 0;
    long double const placed = ulps(found.place) + summed;
    long double const returned = placed + (endless ? lever * turned : 0);
    long double const moved = std::sin(found.half_angle) * placed + lever * opened;
    return {rounding * gain.place + returned, rounding * gain.angle + turned,
            rounding * gain.size + ulp(found.size) + moved, rounding + returned, rounding * gain.half_angle + opened};
}

long double worst_ratio(Differences const & d, Differences const & bound) {
    auto const ratio = [](long double a, long double b) { return a > 0 ? a / b : 0; };
    return std::max({ratio(d.place, bound.place), ratio(d.angle, bound.angle), ratio(d.size, bound.size),
                     ratio(d.rms, bound.rms), ratio(d.half_angle, bound.half_angle)});
}

std::string text(Differences const & d) {
    std::ostringstream out;
    out << "place " << d.place << ", angle " << d.angle << ", size " << d.size << ", deviation " << d.rms
        << ", half angle " << d.half_angle;
    return out.str();
}

}  // namespace reference
