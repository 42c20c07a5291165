// Aligns a part by its reference points alone, wherever it lies: three on its base, two on a side and one on an end.
//
// The part is a block, measured in a pose that nothing is known of. Its reference points bring it home; 1,000 further
// points then follow, each within its band. A seventh reference point that contradicts the others is found out.

#include <datumfit/datumfit.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <random>
#include <vector>

namespace {

constexpr double probe_radius = 1.5, form_error = 0.01, half_band = 0.02;
constexpr std::array<double, 3> half_sizes = {60.0, 50.0, 20.0};
constexpr int lot = 20, surface_points = 1000;

struct ReferencePoint {
    char const * name;
    giPoint3 place;
    giVector3 normal;
};

std::array<ReferencePoint, 6> const reference_points = {{{"A1", {-45, -35, -20}, giAxisZ},
                                                         {"A2", {48, -38, -20}, giAxisZ},
                                                         {"A3", {2, 40, -20}, giAxisZ},
                                                         {"B1", {-50, -50, 3}, giAxisY},
                                                         {"B2", {45, -50, -6}, giAxisY},
                                                         {"C1", {-60, 5, -2}, giAxisX}}};

// Uniform numbers, the same on every machine.
class Random {
public:
    double operator()(double limit) { return limit * (2.0 * (static_cast<double>(engine_()) * 0x1p-32) - 1.0); }
    giVector3 vector(double limit) {
        double const x = (*this)(limit), y = (*this)(limit);
        return giVector3(x, y, (*this)(limit));
    }
    giXform3 pose() {
        giXform3 const turn(giXformRotate, giPoint3(giOrigin), giUnitVec3(vector(1.0)),
                            giAngle(giAngleDegrees, (*this)(180.0)));
        return giXform3(giXformProduct, giXform3(giXformTranslate, vector(500.0)), turn);
    }

private:
    std::mt19937 engine_{1};
};

giPoint3coDynArr corners() {
    giPoint3coDynArr result(8, 1);
    for (int i = 0; i < 8; ++i) {
        result.append(giPoint3(i & 1 ? half_sizes[0] : -half_sizes[0], i & 2 ? half_sizes[1] : -half_sizes[1],
                               i & 4 ? half_sizes[2] : -half_sizes[2]));
    }
    return result;
}

sknMeshSurf block() {
    return sknMeshSurf(corners(), {{0, 2, 3},
                                   {0, 3, 1},
                                   {4, 5, 7},
                                   {4, 7, 6},
                                   {0, 1, 5},
                                   {0, 5, 4},
                                   {2, 6, 7},
                                   {2, 7, 3},
                                   {0, 4, 6},
                                   {0, 6, 2},
                                   {1, 3, 7},
                                   {1, 7, 5}});
}

struct Reading {
    giPoint3 centre;
    giUnitVec3 side;
};

// Probe centres all around the nominal block, as they are measured in a pose.
std::vector<Reading> measure(giXform3 const & pose, Random & random) {
    std::vector<Reading> readings;
    for (int i = 0; i < surface_points; ++i) {
        gi_Axis const across = static_cast<gi_Axis>(i % 3);
        double const side = i % 2 ? 1.0 : -1.0;
        giVector3 place(random(half_sizes[0]), random(half_sizes[1]), random(half_sizes[2]));
        place.set_coordinate(
            across, side * (half_sizes.at(static_cast<std::size_t>(across)) + probe_radius + random(form_error)));
        giVector3 const normal = side * giVector3(across);
        readings.push_back({pose * place.anchor(), giUnitVec3(pose * normal)});
    }
    return readings;
}

/// The planes of a reference point: that across its normal is the one that it must lie on.
void add(sqRPSFitting & fit, ReferencePoint const & point, giXform3 const & pose) {
    using engine = sqPointsToPlanes;
    giUnitVec3 const normal(point.normal);
    giWorkplane3 const plane(point.place, normal.any_normal(), normal);
    fit.add_positioning(pose * point.place, plane, point.place, engine::PLANE_IGNORED, engine::PLANE_IGNORED,
                        engine::PLANE_LOCKED);
}

/// The largest distance of a corner of the part from where it belongs.
double off_by(giXform3 const & x, giXform3 const & pose) {
    double largest = 0.0;
    giPoint3coDynArr const nominal = corners();
    for (int i = 0; i < nominal.size(); ++i) {
        largest = std::max(largest, nominal[i].distance(x * (pose * nominal[i])).value());
    }
    return largest;
}

struct Result {
    double by_reference_points, with_surface_points, largest_deviation;
    int bands_exceeded;
};

Result align(sqFitPointProjector3 const & projector, giXform3 const & pose, std::vector<Reading> const & readings) {
    sqRPSFitting by_points(50, 1e-7);
    by_points.set_projector(&projector);
    for (ReferencePoint const & point : reference_points) add(by_points, point, pose);
    by_points.fit();
    giXform3 const first = by_points.transform();
    Result result = {off_by(first, pose), 0.0, 0.0, 0};

    // What is measured lies near its place now, so that each point finds its own foot.
    giXform3 const found(giXformProduct, first, pose);
    sqRPSFitting fit(50, 1e-7);
    fit.set_projector(&projector);
    fit.reserve_points(surface_points);
    for (ReferencePoint const & point : reference_points) add(fit, point, found);
    for (Reading const & r : readings) {
        giVector3 const & side = r.side;
        fit.add_point(new sqProbedPoint3(first * r.centre, giUnitVec3(first * side), probe_radius), -half_band,
                      half_band);
    }
    fit.fit();
    result.with_surface_points = off_by(fit.transform(), found);
    giXform3 x = fit.transform();
    for (Reading const & r : readings) {
        giVector3 const & side = r.side;
        sqProbedPoint3 const probe(first * r.centre, giUnitVec3(first * side), probe_radius);
        sqProjectedPoint3 projected;
        probe.project_from_position(x, projected, &projector);
        double const deviation = std::abs(projected.signed_distance());
        result.largest_deviation = std::max(result.largest_deviation, deviation);
        result.bands_exceeded += deviation > half_band;
    }
    return result;
}

/// Adds a point of the base that lies too high, finds the contradiction and drops what causes it.
void repair(giXform3 const & pose) {
    double const too_high = 0.3;
    std::vector<ReferencePoint> points(reference_points.begin(), reference_points.end());
    points.insert(points.begin() + 4, {"A4", {40.0, 35.0, -20.0}, giAxisZ});
    sqPointsToPlanes engine;
    for (std::size_t i = 0; i < points.size(); ++i) {
        ReferencePoint const & r = points[i];
        giPoint3 const measured = r.place + (i == 4 ? too_high : 0.0) * r.normal;
        engine.add_positioning(pose * measured, r.place, r.normal, 1);
    }
    char const * const states[] = {"under-determined", "determined", "over-determined"};
    giXform3 x;
    std::printf("\nWith a point A4 on the base, %.1f mm too high, the system is %s", too_high,
                states[engine.test_positioning(1, x)]);
    engine.fix_overdetermined_positioning(x);
    std::printf(", and without");
    sqPlaneAndPointcoDynArr const & left = engine.positioning();
    for (ReferencePoint const & r : points) {
        bool const stayed = std::any_of(left.data(), left.data() + left.size(), [&](sqPlaneAndPoint const & record) {
            return record.plane_point.distance(r.place) == 0.0;
        });
        if (!stayed) std::printf(" %s", r.name);
    }
    std::printf(", which stays out, %s:\n  the part is then %.1e mm from its place\n",
                states[engine.test_positioning(1, x)], off_by(x, pose));
}

}  // namespace

int main() {
    Random random;
    sknMeshSurf const nominal = block();
    sqSurfProjectorForFitting3 const projector(nominal);
    std::printf(
        "A block of 120 x 100 x 40 mm with six reference points, three on its base, two on a side, one on an end,\n"
        "and %d probed points with errors of +-%.2f mm and bands of +-%.2f mm, in random poses. Its largest\n"
        "distance from its place, in mm:\n\n"
        "  pose   by the reference points   with the other points   largest deviation   bands exceeded\n",
        surface_points, form_error, half_band);
    int home = 0;
    for (int i = 0; i < lot; ++i) {
        giXform3 const pose = random.pose();
        Result const r = align(projector, pose, measure(pose, random));
        std::printf("  %4d %25.1e %23.1e %19.4f %16d\n", i + 1, r.by_reference_points, r.with_surface_points,
                    r.largest_deviation, r.bands_exceeded);
        home += r.by_reference_points < 1e-4 && r.with_surface_points < 1e-2 && r.bands_exceeded == 0;
    }
    std::printf("\n%d of %d parts have come home.\n", home, lot);
    repair(random.pose());
    return home == lot ? 0 : 1;
}
