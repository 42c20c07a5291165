#include <datumfit/primitives/evaluator/least_square_evaluator.h>

#include <datumfit/curved/cylinder/cylinder_solver.h>

namespace {

constexpr int fewest_points = 4;

// The free fits mark a failed search in the direction.
int marked(int fitted, giUnitVec3 & axis_dir) {
    if (fitted == 0) axis_dir.set_invalid();
    return fitted;
}

}  // namespace

int sqLeastSquareEvaluator::evaluate_cylinder(giPoint3coDynArr const & points, giPoint3 & axis_point,
                                              giUnitVec3 & axis_dir, double & radius, double & deviation,
                                              giUnitVec3 const & preferred_dir, giAngle const & dir_limit,
                                              int new_points) {
    if (points.size() < fewest_points) return 0;
    return marked(sqCalculateLeastSquareCylinder(points, axis_point, axis_dir, radius, deviation, preferred_dir,
                                                 dir_limit, giUnitVec3coDynArr(), new_points),
                  axis_dir);
}

int sqLeastSquareEvaluator::evaluate_cylinder(giPoint3coDynArr const & points, giUnitVec3coDynArr const & normals,
                                              giAngle const & dir_limit, giPoint3 & axis_point, giUnitVec3 & axis_dir,
                                              double & radius, double & deviation, int new_points) {
    if (points.size() < fewest_points) return 0;
    return marked(sqCalculateLeastSquareCylinder(points, axis_point, axis_dir, radius, deviation, giUnitVec3(),
                                                 dir_limit, normals, new_points),
                  axis_dir);
}

int sqLeastSquareEvaluator::evaluate_probed_cylinder(giPoint3coDynArr const & points, doublecoDynArr const & radii,
                                                     int inside, giPoint3 & axis_point, giUnitVec3 & axis_dir,
                                                     double & radius, double & deviation,
                                                     giUnitVec3 const & preferred_dir, giAngle const & dir_limit,
                                                     int new_points) {
    if (points.size() < fewest_points) return 0;
    return sqCalculateLeastSquareProbedCylinder(points, radii, inside, axis_point, axis_dir, radius, deviation,
                                                preferred_dir, dir_limit, giUnitVec3coDynArr(), new_points);
}

int sqLeastSquareEvaluator::evaluate_probed_cylinder(giPoint3coDynArr const & points, doublecoDynArr const & radii,
                                                     int inside, giUnitVec3coDynArr const & normals,
                                                     giAngle const & dir_limit, giPoint3 & axis_point,
                                                     giUnitVec3 & axis_dir, double & radius, double & deviation,
                                                     int new_points) {
    if (points.size() < fewest_points) return 0;
    return sqCalculateLeastSquareProbedCylinder(points, radii, inside, axis_point, axis_dir, radius, deviation,
                                                giUnitVec3(), dir_limit, normals, new_points);
}

int sqLeastSquareEvaluator::evaluate_multiple_cylinders(giPoint3coDynArr const & points,
                                                        giUnitVec3coDynArr const & guess_dirs, double tolerance,
                                                        giAngle const & angle_tolerance, int n_wanted,
                                                        sqFittedCylindercoDynArr & results) {
    return sqCalculateMultipleLeastSquareCylinders(points, guess_dirs, tolerance, angle_tolerance, n_wanted, results);
}
