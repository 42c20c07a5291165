#include <datumfit/foundation/maths/distance_least_squares.h>

#include <datumfit/foundation/maths/linearisation.h>
#include <datumfit/foundation/maths/singular_value_decomposition.h>
#include <datumfit/foundation/maths/slot_model.h>

#include <cmath>
#include <utility>

mlDistanceLeastSquares::mlDistanceLeastSquares(int n_parameters, int n_points)
    : n_points_(n_points), n_parameters_(n_parameters), parameters_(mlVectorZero, n_parameters),
      scored_(mlVectorZero, n_parameters), norm_distance_(0), last_distance_(0.0), all_points_of_(nullptr) {}

mlDistanceLeastSquares::~mlDistanceLeastSquares() = default;

void mlDistanceLeastSquares::set_parameters(mlVector const & p) {
    parameters_ = p;
}

double mlDistanceLeastSquares::get_last_square_distance() const {
    return last_distance_ * last_distance_;
}

int mlDistanceLeastSquares::n_independent_parameters() const {
    return n_parameters_;
}

void mlDistanceLeastSquares::parameter_scales(mlVector & s) const {
    s.become(mlVectorDim, n_parameters_);
    s.fill(1.0);
}

void mlDistanceLeastSquares::offer_all_points(std::unique_ptr<datumfit::internal::all_points_model> model,
                                              std::type_info const & of_class) {
    all_points_ = std::move(model);
    all_points_of_ = &of_class;
}

datumfit::internal::all_points_model * mlDistanceLeastSquares::all_points() const {
    return all_points_ && *all_points_of_ == typeid(*this) ? all_points_.get() : nullptr;
}

// Makes p current and lets an action look at all points at once, through the slots where there is no other way.
template <class Action>
auto mlDistanceLeastSquares::look_at_all(mlVector & p, Action const & action) {
    normalize_parameters(p);
    set_parameters(p);
    if (datumfit::internal::all_points_model * const model = all_points()) {
        model->from_parameters(p, scored_);
        model->place(scored_);
        return action(*model);
    }
    datumfit::internal::slot_model slots(*this);
    return action(static_cast<datumfit::internal::all_points_model &>(slots));
}

double mlDistanceLeastSquares::score(mlVector & p, double bound) {
    return look_at_all(p, [&](auto & model) { return model.sum_of_squares(bound); });
}

void mlDistanceLeastSquares::distances(mlVector & p, mlVector & d) {
    d.become(mlVectorDim, n_points_);
    look_at_all(p, [&](auto & model) { model.distances(d.data()); });
}

double mlDistanceLeastSquares::point_distribution_quality(mlVector const & p) {
    using namespace datumfit::internal;
    int const counted = n_independent_parameters();
    if (n_points_ <= 0 || counted <= 0) return 0.0;
    set_parameters(p);
    mlVector scales;
    parameter_scales(scales);
    slot_model model(*this);
    triangular_factor factor(n_parameters_);
    linearisation(n_parameters_, n_points_, model.rows_per_point()).factorise(model, factor);

    mlMatrix scaled(mlMatrixZero, n_parameters_, n_parameters_);
    for (int i = 0; i < n_parameters_; ++i) {
        for (int j = i; j < n_parameters_; ++j) {
            scaled(i, j) = factor(i, j) / scales[j];
            if (!std::isfinite(scaled(i, j))) return 0.0;
        }
    }
    mlSingularValueDecomposition const svd(scaled);
    return svd.diagonal()[counted - 1] / std::sqrt(static_cast<double>(n_points_));
}
