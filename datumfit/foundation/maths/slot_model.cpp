#include <datumfit/foundation/maths/slot_model.h>

#include <cmath>

namespace datumfit {
namespace internal {

slot_model::slot_model(mlDistanceLeastSquares & problem)
    : problem_(problem), gradient_(mlVectorZero, problem.n_parameters()) {}

void slot_model::from_parameters(mlVector const & p, mlVector & x) const {
    x = p;
}

void slot_model::to_parameters(mlVector const & x, mlVector & p) const {
    p = x;
}

void slot_model::place(mlVector & x) {
    problem_.normalize_parameters(x);
    problem_.set_parameters(x);
}

int slot_model::unknowns() const {
    return problem_.n_parameters();
}

void slot_model::move(mlVector const & x, mlVector const & step, mlVector & to) const {
    for (int k = 0; k < unknowns(); ++k) to[k] = x[k] + step[k];
}

void slot_model::difference(mlVector const & from, mlVector const & to, mlVector & step) const {
    for (int k = 0; k < unknowns(); ++k) step[k] = to[k] - from[k];
}

void slot_model::scales(mlVector & s) const {
    problem_.parameter_scales(s);
}

double slot_model::sum_of_squares(double bound) {
    double sum = 0.0;
    for (int i = 0; i < problem_.n_points_ && !(sum > bound); ++i) {
        double d = 0.0;
        problem_.get_distance(d, i);
        sum += problem_.norm_distance_ != 0 ? problem_.get_last_square_distance() : d * d;
    }
    return sum;
}

void slot_model::distances(double * d) {
    for (int i = 0; i < problem_.n_points_; ++i) problem_.get_distance(d[i], i);
}

bool slot_model::gram(double *) {
    return false;
}

int slot_model::rows(int first, int count, double * columns, int stride) {
    int const n = problem_.n_parameters();
    for (int i = 0; i < count; ++i) {
        double d = 0.0;
        problem_.get_distance_and_gradient(d, gradient_, first + i);
        if (problem_.norm_distance_ != 0) d = std::sqrt(problem_.get_last_square_distance());
        for (int k = 0; k < n; ++k) columns[k * stride + i] = gradient_[k];
        columns[n * stride + i] = d;
    }
    return count;
}

// The rounding of a host's distances is not known; the solver then stops where steps no longer help.
double slot_model::resolution() const {
    return 0.0;
}

}  // namespace internal
}  // namespace datumfit
