#include <datumfit/curved/cylinder/cylinder_solver.h>

#include <datumfit/curved/continuation.h>
#include <datumfit/curved/cylinder/cylinder_search.h>
#include <datumfit/curved/cylinder/least_square_probed_cylinder.h>
#include <datumfit/foundation/maths/levenberg_marquardt.h>
#include <datumfit/foundation/utilities/math.h>
#include <datumfit/primitives/evaluator/least_square_evaluator.h>
#include <datumfit/sampling/rand_dir_gen_multi.h>

#include <cmath>

using namespace datumfit::internal;

namespace {

constexpr int fewest_points = 5;

// Fits plain and probed cylinders alike: the problem knows the difference.
int fit_cylinder(sqLeastSquareCylinder & problem, probe_set const & set, giPoint3 & axis_point, giUnitVec3 & axis_dir,
                 double & radius, double & deviation, giUnitVec3 const & preferred_dir, giAngle const & dir_limit,
                 giUnitVec3coDynArr const & normals, int new_points) {
    cylinder_solution found;
    bool const continued = new_points != 0 && continue_fit(problem, set.points.size(), new_points, fewest_points,
                                                           cylinder_parameters(axis_point, axis_dir, radius),
                                                           found.square, found.parameters);
    if (!continued) found = cylinder_search(problem, set, preferred_dir, dir_limit, normals).run();
    if (found.square == utMath::max_double()) return 0;
    mlVector const & p = found.parameters;
    axis_dir = giUnitVec3(p[3], p[4], p[5]);
    radius = p[6];
    axis_point = giPoint3(p[0], p[1], p[2]);
    deviation = std::sqrt(found.square);
    return 1;
}

}  // namespace

int sqCalculateLeastSquareCylinder(giPoint3coDynArr const & points, giPoint3 & axis_point, giUnitVec3 & axis_dir,
                                   double & radius, double & deviation, giUnitVec3 const & preferred_dir,
                                   giAngle const & dir_limit, giUnitVec3coDynArr const & normals, int new_points) {
    if (points.size() < fewest_points) return 0;
    sqLeastSquareCylinder problem(points);
    return fit_cylinder(problem, {points}, axis_point, axis_dir, radius, deviation, preferred_dir, dir_limit, normals,
                        new_points);
}

int sqCalculateLeastSquareProbedCylinder(giPoint3coDynArr const & points, doublecoDynArr const & radii, int inside,
                                         giPoint3 & axis_point, giUnitVec3 & axis_dir, double & radius,
                                         double & deviation, giUnitVec3 const & preferred_dir,
                                         giAngle const & dir_limit, giUnitVec3coDynArr const & normals,
                                         int new_points) {
    if (points.size() < fewest_points) return 0;
    sqLeastSquareProbedCylinder problem(points, radii, inside);
    return fit_cylinder(problem, {points, &radii, inside}, axis_point, axis_dir, radius, deviation, preferred_dir,
                        dir_limit, normals, new_points);
}

int sqCalculateMultipleLeastSquareCylinders(giPoint3coDynArr const & points, giUnitVec3coDynArr const & guess_dirs,
                                            double tolerance, giAngle const & angle_tolerance, int n_wanted,
                                            sqFittedCylindercoDynArr & results) {
    if (points.size() < fewest_points) return 0;
    giAngle const spread(giAngleDegrees, 30.0);
    sqRandDirGenMulti generator(1000.0, guess_dirs, spread, 0.9);
    sqLeastSquareCylinder problem(points);
    mlLevenbergMarquardt solver(problem);
    mlVector found;
    giPoint3 const origin(0.0, 0.0, 0.0);
    long long const attempts = 150LL * n_wanted;
    for (long long i = 0; i < attempts && results.size() != n_wanted; ++i) {
        giUnitVec3 dir = generator.direction();
        giPoint3 centre, centre2;
        double radius, radius2, e1, e2;
        if (sqLeastSquareEvaluator::evaluate_circle2(origin, dir, points, centre, radius, e1) == 0) continue;
        giUnitVec3 const dir2 = sqRandDirGenerator(1.1, dir, spread, 0.1).rand_vec_bias_region();
        if (sqLeastSquareEvaluator::evaluate_circle2(origin, dir2, points, centre2, radius2, e2) != 0 && e1 > e2) {
            dir = dir2;
            centre = centre2;
            radius = radius2;
        }
        double const e = std::sqrt(solver.fit(cylinder_parameters(centre, dir, radius), found));
        if (!(tolerance > e)) continue;
        sqFittedCylinder const fit(giPoint3(found[0], found[1], found[2]), giUnitVec3(found[3], found[4], found[5]),
                                   found[6], e);
        sqLeastSquareCylinder::add_distinct_result(fit, tolerance, angle_tolerance, results);
    }
    return results.size();
}
