#include <datumfit/primitives/evaluator/least_square_evaluator.h>

#include <datumfit/curved/axis_rev/least_square_axis_rev.h>

#include <cmath>

namespace {
constexpr int fewest_points = 6;
}  // namespace

int sqLeastSquareEvaluator::evaluate_axis_rev(giPoint3coDynArr const & points, giUnitVec3coDynArr const & normals,
                                              giPoint3 & point, giUnitVec3 & direction, double & deviation) {
    if (points.size() < fewest_points || normals.size() != points.size()) return 0;
    sqLeastSquareAxisRev problem(points, normals);
    double square;
    if (direction.invalid()) {
        problem.evaluate(point, direction, square);
    } else {
        problem.evaluate_with_guess(point, direction, square);
    }
    deviation = std::sqrt(square);
    return 1;
}
