#include <datumfit/primitives/evaluator/least_square_evaluator.h>

#include <datumfit/curved/cone/cone_solver.h>
#include <datumfit/curved/cone/cone_tolerance.h>

namespace {
constexpr int fewest_probe_centres = 4;
}  // namespace

int sqLeastSquareEvaluator::evaluate_cone(giPoint3coDynArr const & points, giPoint3 & apex, giUnitVec3 & axis_dir,
                                          double & half_angle, double & deviation, giUnitVec3 const & preferred_dir,
                                          giAngle const & dir_limit, int new_points) {
    return sqCalculateLeastSquareCone(points, apex, axis_dir, half_angle, deviation, preferred_dir, dir_limit,
                                      giUnitVec3coDynArr(), new_points);
}

int sqLeastSquareEvaluator::evaluate_cone(giPoint3coDynArr const & points, giUnitVec3coDynArr const & normals,
                                          giAngle const & dir_limit, giPoint3 & apex, giUnitVec3 & axis_dir,
                                          double & half_angle, double & deviation, int new_points) {
    return sqCalculateLeastSquareCone(points, apex, axis_dir, half_angle, deviation, giUnitVec3(), dir_limit, normals,
                                      new_points);
}

int sqLeastSquareEvaluator::evaluate_probed_cone(giPoint3coDynArr const & points, doublecoDynArr const & radii,
                                                 int inside, giPoint3coDynArr const & guess_points, giPoint3 & apex,
                                                 giUnitVec3 & axis_dir, double & half_angle, double & deviation,
                                                 giUnitVec3 const & preferred_dir, giAngle const & dir_limit,
                                                 int new_points) {
    if (points.size() < fewest_probe_centres) return 0;
    return sqCalculateLeastSquareProbedCone(points, radii, inside, guess_points, apex, axis_dir, half_angle, deviation,
                                            preferred_dir, dir_limit, giUnitVec3coDynArr(), new_points);
}

int sqLeastSquareEvaluator::evaluate_probed_cone(giPoint3coDynArr const & points, doublecoDynArr const & radii,
                                                 int inside, giPoint3coDynArr const & guess_points,
                                                 giUnitVec3coDynArr const & normals, giAngle const & dir_limit,
                                                 giPoint3 & apex, giUnitVec3 & axis_dir, double & half_angle,
                                                 double & deviation, int new_points) {
    if (points.size() < fewest_probe_centres) return 0;
    return sqCalculateLeastSquareProbedCone(points, radii, inside, guess_points, apex, axis_dir, half_angle, deviation,
                                            giUnitVec3(), dir_limit, normals, new_points);
}

int sqLeastSquareEvaluator::evaluate_multiple_cones(giPoint3coDynArr const & points,
                                                    giUnitVec3coDynArr const & guess_dirs, double tolerance,
                                                    giAngle const & angle_tolerance, int n_wanted,
                                                    sqFittedConecoDynArr & results) {
    return sqCalculateMultipleLeastSquareCones(points, guess_dirs, tolerance, angle_tolerance, n_wanted, results,
                                               giAngle(giAngle0), giAngle(giAngle90));
}

double sqLeastSquareEvaluator::set_cone_non_physical_tolerance(double radians) {
    return sqSetLeastSquareConeNonPhysicalTolerance(radians);
}
