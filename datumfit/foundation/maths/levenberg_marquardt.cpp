#include <datumfit/foundation/maths/levenberg_marquardt.h>

#include <datumfit/foundation/maths/descent.h>
#include <datumfit/foundation/maths/slot_model.h>

using namespace datumfit::internal;

namespace {
constexpr int default_max_iterations = 200;
}  // namespace

struct mlLevenbergMarquardt::workspace {
    workspace(mlDistanceLeastSquares & problem, all_points_model * fast, int points)
        : slots(problem), search(problem, fast != nullptr ? *fast : slots, points) {}

    slot_model slots;
    descent search;
};

mlLevenbergMarquardt::mlLevenbergMarquardt(mlDistanceLeastSquares & problem)
    : problem_(problem), max_iterations_(default_max_iterations), strict_(false) {}

mlLevenbergMarquardt::~mlLevenbergMarquardt() = default;

double mlLevenbergMarquardt::fit(mlVector const & start, mlVector & result) {
    if (!workspace_) workspace_ = std::make_unique<workspace>(problem_, problem_.all_points(), problem_.n_points_);
    result.become(utCopy, start);
    problem_.normalize_parameters(result);
    problem_.set_parameters(result);
    return workspace_->search.run(result, max_iterations_, strict_, result);
}
