#pragma once

#include <datumfit/foundation/maths/distance_least_squares.h>

#include <initializer_list>

namespace datumfit {
namespace internal {

/// The quality of a model's points at parameters, of which `whole` is that of a part measured all over.
inline double quality_of(mlDistanceLeastSquares && problem, std::initializer_list<double> parameters, double whole) {
    mlVector const p(utConvert, parameters.begin(), static_cast<int>(parameters.size()));
    return problem.point_distribution_quality(p) / whole;
}

/// With fewer points nothing is graded.
constexpr int fewest_graded_points = 3;

}  // namespace internal
}  // namespace datumfit
