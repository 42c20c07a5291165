#include <datumfit/curved/cone/cone_solver.h>

#include <datumfit/curved/cone/cone_search.h>
#include <datumfit/curved/cone/cone_tolerance.h>
#include <datumfit/curved/cone/least_square_probed_cone.h>
#include <datumfit/curved/continuation.h>
#include <datumfit/primitives/evaluator/least_square_evaluator.h>

#include <cmath>

using namespace datumfit::internal;

namespace {

constexpr int fewest_points = 6;
constexpr double spread = 30.0;  // degrees about a guessed direction in which a cone of several is looked for

// The apex lies where the surface meets the axis: for a cylinder at infinity, but not to the side of the axis.
giPoint3 apex_of(mlVector const & p, giUnitVec3 const & axis) {
    double const height = p[6] == 0.0 ? 0.0 : p[6] / std::sin(p[7]);
    auto const coordinate = [&](double from, double way) { return way == 0.0 ? from : from + height * way; };
    return giPoint3(coordinate(p[0], axis.x()), coordinate(p[1], axis.y()), coordinate(p[2], axis.z()));
}

// A cone, as the host gives and gets it.
struct cone {
    giPoint3 & apex;
    giUnitVec3 & axis_dir;
    double & half_angle;
    double & deviation;

    mlVector parameters() const {
        double const p[] = {apex.x(), apex.y(), apex.z(), axis_dir.x(), axis_dir.y(), axis_dir.z(), 0.0, half_angle};
        return mlVector(utConvert, p, 8);
    }
    void take(mlVector const & p, double square) const {
        axis_dir = giUnitVec3(p[3], p[4], p[5]);
        half_angle = p[7];
        apex = apex_of(p, axis_dir);
        deviation = std::sqrt(square);
    }
};

// Fits plain and probed cones alike: the problem knows the difference, but for the ways of the search.
int fit_cone(sqLeastSquareCone & problem, giPoint3coDynArr const & points, giPoint3coDynArr const & guess_points,
             cone const & result, giUnitVec3 const & preferred_dir, giAngle const & dir_limit,
             giUnitVec3coDynArr const & normals, int new_points, cone_search::ways const & ways) {
    double square;
    mlVector found;
    bool const continued = new_points != 0 && continue_fit(problem, points.size(), new_points, fewest_points,
                                                           result.parameters(), square, found);
    if (!continued) {
        cone_search(problem, points, guess_points, preferred_dir, dir_limit, normals, ways).run(square, found);
        if (square == utMath::max_double()) return 0;
    }
    result.take(found, square);
    return 1;
}

}  // namespace

int sqCalculateLeastSquareCone(giPoint3coDynArr const & points, giPoint3 & apex, giUnitVec3 & axis_dir,
                               double & half_angle, double & deviation, giUnitVec3 const & preferred_dir,
                               giAngle const & dir_limit, giUnitVec3coDynArr const & normals, int new_points) {
    if (points.size() < fewest_points) return 0;
    sqLeastSquareCone problem(points);
    return fit_cone(problem, points, points, {apex, axis_dir, half_angle, deviation}, preferred_dir, dir_limit, normals,
                    new_points, {true, false, true, cone_non_physical_tolerance()});
}

int sqCalculateLeastSquareProbedCone(giPoint3coDynArr const & points, doublecoDynArr const & radii, int inside,
                                     giPoint3coDynArr const & guess_points, giPoint3 & apex, giUnitVec3 & axis_dir,
                                     double & half_angle, double & deviation, giUnitVec3 const & preferred_dir,
                                     giAngle const & dir_limit, giUnitVec3coDynArr const & normals, int new_points) {
    if (points.size() < fewest_points) return 0;
    sqLeastSquareProbedCone problem(points, radii, inside);
    return fit_cone(problem, points, guess_points, {apex, axis_dir, half_angle, deviation}, preferred_dir, dir_limit,
                    normals, new_points, {false, true, false, probed_cone_non_physical_tolerance()});
}

int sqCalculateMultipleLeastSquareCones(giPoint3coDynArr const & points, giUnitVec3coDynArr const & guess_dirs,
                                        double tolerance, giAngle const & angle_tolerance, int n_wanted,
                                        sqFittedConecoDynArr & results, giAngle const & min_angle,
                                        giAngle const & max_angle) {
    giAngle const limit(giAngleDegrees, spread);
    for (int i = 0; i < guess_dirs.size(); ++i) {
        giPoint3 apex;
        giUnitVec3 axis;
        double half, e;
        if (sqLeastSquareEvaluator::evaluate_cone(points, apex, axis, half, e, guess_dirs[i], limit, 0) == 0) continue;
        giAngle const half_angle(giAngleRadians, half);
        if (!(tolerance > e && half_angle > min_angle && half_angle < max_angle)) continue;
        sqLeastSquareCone::add_distinct_result(sqFittedCone(apex, -axis, half_angle, e), tolerance, angle_tolerance,
                                               results);
        if (results.size() == n_wanted) break;
    }
    return results.size();
}
