#include <datumfit/foundation/maths/levenberg_marquardt.h>

#include <datumfit/foundation/maths/descent.h>
#include <datumfit/foundation/maths/slot_model.h>

#include <cmath>

using namespace datumfit::internal;

namespace {
constexpr int default_max_iterations = 200;
}  // namespace

mlLevenbergMarquardt::mlLevenbergMarquardt(mlDistanceLeastSquares & problem)
    : problem_(problem), max_iterations_(default_max_iterations), strict_(false) {}

double mlLevenbergMarquardt::fit(mlVector const & start, mlVector & result) {
    int const n = problem_.n_parameters();
    result.become(utCopy, start);
    problem_.normalize_parameters(result);
    problem_.set_parameters(result);

    mlVector scales;
    problem_.parameter_scales(scales);
    for (int k = 0; k < n; ++k) {  // a geometry of no size tells nothing about its scales
        if (!(scales[k] > 0.0 && std::isfinite(scales[k]))) scales[k] = 1.0;
    }
    slot_model slots(problem_);
    all_points_model * const fast = problem_.all_points();
    all_points_model & model = fast != nullptr ? *fast : slots;
    descent search(problem_, model, problem_.n_points_, scales, strict_);
    return search.run(result, max_iterations_, result);
}
