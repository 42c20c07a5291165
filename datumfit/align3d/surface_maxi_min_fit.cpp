#include <datumfit/align3d/cloud_extremes.h>
#include <datumfit/align3d/points_to_planes/points_to_planes.h>
#include <datumfit/align3d/surface_maxi_min_fit.h>
#include <datumfit/extremal/containment_cone.h>

#include <algorithm>
#include <limits>

namespace {

using datumfit::internal::cloud_extremes;
using datumfit::internal::surface_alignment;

constexpr int most_iterations = 50;
constexpr int most_halvings = 15;
constexpr double unbounded = std::numeric_limits<double>::max();

// How far the search looks beyond the present range, in the unit of the coordinates, so that rounding does not make the
// present state a failure.
constexpr double margin = 1e-5;

// The share of the tolerance that a step has to gain, and to which the best value is narrowed down.
constexpr double least_gain = 0.1;

// Normals within a cone of this half angle, in degrees, have a common side.
constexpr double greatest_half_angle = 89.0;

// The range of deviation(record) - offset over the valid records of a cloud.
template <class Deviation, class Offset>
void find_range(sqProjectedPoint3coDynArr const & cloud, Deviation deviation, Offset offset, double & smallest,
                double & largest) {
    smallest = unbounded;
    largest = -unbounded;
    for (int i = 0; i < cloud.size(); ++i) {
        sqProjectedPoint3 const & p = cloud.read(i);
        if (p.invalid()) continue;
        double const delta = deviation(p) - offset(i);
        smallest = std::min(smallest, delta);
        largest = std::max(largest, delta);
    }
}

}  // namespace

sqSurfaceMaxiMinFit::sqSurfaceMaxiMinFit(sqFitPointProjector3 const * projector)
    : alignment_(projector, surface_alignment::one_by_one) {}

void sqSurfaceMaxiMinFit::reserve_points(int n) {
    alignment_.reserve(n);
    offsets_.reserve(n);
}

void sqSurfaceMaxiMinFit::add_point(sqFitPoint3coPrf const & point, double offset) {
    int const n = nb_points() + 1;
    if (!point.pointer() || !alignment_.reserve(n) || !offsets_.reserve(n)) return;
    alignment_.add(point);
    offsets_.append(offset);
}

void sqSurfaceMaxiMinFit::fit(double tolerance, giXform3 & transform, double & largest_distance,
                              double & smallest_signed, double & largest_signed, int & invalid_points) {
    alignment_.restart();
    if (nb_points() == 0) return;
    for (int i = 0; i < most_iterations; ++i) {
        giXform3 step;
        if (!do_iteration(tolerance, step) || get_maximum_movement(get_pointcloud(), step) < tolerance) break;
    }
    int valid_points = 0;
    get_pointcloud_parameters(get_pointcloud(), largest_distance, smallest_signed, largest_signed, invalid_points,
                              valid_points);
    transform = get_transformation();
}

int sqSurfaceMaxiMinFit::do_iteration(double tolerance, giXform3 & step) {
    alignment_.prepare();
    double start = 0.0, largest = 0.0;
    get_delta_range(start, largest);
    bool const has_records = start <= largest;
    double const upper = has_records && exists_solution(get_pointcloud()) ? unbounded : largest;
    trial best;
    if (!has_records || !try_delta(start - margin, upper, best)) {
        step = giXformIdentity;
        alignment_.restart();
        return 0;
    }
    raise(start - margin, largest + margin, upper, least_gain * tolerance, best);

    step = best.step;
    if (best.smallest - start < least_gain * tolerance) {
        if (start > best.smallest) step = giXformIdentity;
        return 0;
    }
    alignment_.apply(step);
    return 1;
}

// Bisects between a value that a step holds and one above all that there are. `best` is a step that holds the former,
// and becomes the last one found.
void sqSurfaceMaxiMinFit::raise(double low, double high, double upper, double resolution, trial & best) const {
    for (int i = 0; i < most_halvings; ++i) {
        double const mid = (low + high) * 0.5;
        if (resolution > high - mid) break;
        if (try_delta(mid, upper, best)) {
            low = mid;
        } else {
            high = mid;
        }
    }
}

// Looks for a step that holds all deltas at a value. An engine of its own sees the locked direction unturned, so that
// every step brings it to its place.
bool sqSurfaceMaxiMinFit::try_delta(double delta, double upper, trial & result) const {
    sqPointsToPlanes engine;
    engine.disable_overdetermined_resolution();
    alignment_.locks().put_into(engine, alignment_.base());
    add_records(engine, delta, upper, alignment_.base());
    if (!engine.single_linear_step(result.step)) return false;
    result.step = alignment_.from_base(result.step);
    double ignored = 0.0;
    estimate_xformed_deviations(result.step, result.smallest, ignored);
    return true;
}

int sqSurfaceMaxiMinFit::fit_the_points(sqPointsToPlanes & engine, double delta, double upper, giXform3 & step) const {
    engine.clear_bestfit_data();
    add_records(engine, delta, upper, giVector3(0.0, 0.0, 0.0));
    return engine.single_linear_step(step) ? 1 : 0;
}

void sqSurfaceMaxiMinFit::add_records(sqPointsToPlanes & engine, double delta, double upper,
                                      giVector3 const & base) const {
    engine.reserve_bestfit(get_pointcloud().size());
    sqProjectedPoint3coDynArr const & cloud = get_pointcloud();
    for (int i = 0; i < cloud.size(); ++i) {
        sqProjectedPoint3 const & p = cloud.read(i);
        if (p.invalid()) continue;
        engine.add_bestfit(p.measured_point() - base, p.nominal_point() - base, p.nominal_normal(), delta + offset(i),
                           upper, 1.0);
    }
}

void sqSurfaceMaxiMinFit::get_delta_range(double & smallest, double & largest) const {
    find_range(
        get_pointcloud(), [](sqProjectedPoint3 const & p) { return p.signed_distance(); },
        [this](int i) { return offset(i); }, smallest, largest);
}

void sqSurfaceMaxiMinFit::estimate_xformed_deviations(giXform3 const & x, double & smallest, double & largest) const {
    find_range(
        get_pointcloud(), [&x](sqProjectedPoint3 const & p) { return signed_norm_dev(p, x); },
        [this](int i) { return offset(i); }, smallest, largest);
}

double sqSurfaceMaxiMinFit::achieved_deviation() const {
    double smallest = 0.0, largest = 0.0;
    get_delta_range(smallest, largest);
    return smallest;
}

void sqSurfaceMaxiMinFit::reproject_all_points(giXform3 & x, sqProjectedPoint3coDynArr & cloud) const {
    alignment_.reproject(x, cloud);
}

void sqSurfaceMaxiMinFit::get_pointcloud_parameters(sqProjectedPoint3coDynArr const & cloud, double & largest_distance,
                                                    double & smallest_signed, double & largest_signed,
                                                    int & invalid_points, int & valid_points) {
    cloud_extremes const extremes(cloud);
    largest_distance = extremes.largest_distance;
    smallest_signed = extremes.smallest_signed;
    largest_signed = extremes.largest_signed;
    invalid_points = extremes.invalid_points;
    valid_points = extremes.valid_points;
}

int exists_solution(sqProjectedPoint3coDynArr const & cloud) {
    giUnitVec3coDynArr normals;
    normals.reserve(cloud.size());
    for (int i = 0; i < cloud.size(); ++i) {
        if (!cloud.read(i).invalid()) normals.append(cloud.read(i).nominal_normal());
    }
    giUnitVec3 axis;
    giAngle half_angle;
    bool const have_common_side =
        sqContainmentCone(normals).solve(axis, half_angle) && half_angle.angle(giAngleDegrees) <= greatest_half_angle;
    return have_common_side ? 0 : 1;
}
