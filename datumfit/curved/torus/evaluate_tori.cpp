#include <datumfit/primitives/evaluator/least_square_evaluator.h>

#include <datumfit/curved/torus/torus_solver.h>

namespace {

constexpr int fewest_points = 4;

int fit_torus(giPoint3coDynArr const & points, doublecoDynArr const & radii, int inside, giPoint3 & centre,
              giUnitVec3 & axis_dir, double & major, double & minor, double & deviation) {
    if (points.size() < fewest_points) return 0;
    giVector3 axis;
    int const fitted =
        sqCalculateTorusDownhillSimplex(points, radii, inside, centre, axis, major, minor, deviation, 0.0);
    axis_dir = giUnitVec3(axis);
    return fitted;
}

}  // namespace

int sqLeastSquareEvaluator::evaluate_torus(giPoint3coDynArr const & points, giPoint3 & centre, giUnitVec3 & axis_dir,
                                           double & major, double & minor, double & deviation) {
    return fit_torus(points, doublecoDynArr(), 1, centre, axis_dir, major, minor, deviation);
}

int sqLeastSquareEvaluator::evaluate_probed_torus(giPoint3coDynArr const & points, doublecoDynArr const & radii,
                                                  int inside, giPoint3 & centre, giUnitVec3 & axis_dir, double & major,
                                                  double & minor, double & deviation) {
    return fit_torus(points, radii, inside, centre, axis_dir, major, minor, deviation);
}

int sqLeastSquareEvaluator::evaluate_torus_with_guess(giPoint3coDynArr const & points, giPoint3 & centre,
                                                      giUnitVec3 & axis_dir, double & major, double & minor,
                                                      double & deviation) {
    giPoint3 const start_point = centre;
    giVector3 const start_axis = axis_dir;
    giVector3 axis = start_axis;
    deviation = 0.0;
    int const fitted = sqCalculateTorusDownhillSimplexWithGuess(points, doublecoDynArr(), 1, start_point, start_axis,
                                                                centre, axis, major, minor, deviation, sqTORUS_NORMAL);
    axis_dir = giUnitVec3(axis);
    return fitted;
}
