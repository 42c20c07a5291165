#include <datumfit/foundation/maths/step_acceleration.h>

#include <algorithm>
#include <cmath>

namespace datumfit {
namespace internal {

namespace {

// Steps that shrink faster than this come home sooner by themselves.
constexpr double slow = 0.03;

// Differences that add less than this to those before them tell nothing but rounding.
constexpr double smallest_pivot = 1e-8;

double length_of(mlVector const & v) {
    double s = 0.0;
    for (int k = 0; k < v.dimension(); ++k) s += v[k] * v[k];
    return std::sqrt(s);
}

}  // namespace

step_acceleration::step_acceleration(int unknowns)
    : unknowns_(unknowns), last_step_(mlVectorZero, unknowns), factor_(depth) {
    std::size_t const n = static_cast<std::size_t>(unknowns);
    moves_.resize(depth * n);
    changes_.resize(depth * n);
    block_.resize((depth + 1) * n);
    weights_.resize(depth);
}

void step_acceleration::reset() {
    known_ = 0;
    count_ = 0;
    last_length_ = 0.0;
}

bool step_acceleration::improve(mlVector const & moved, mlVector & step) {
    int const n = unknowns_;
    double const length = length_of(step);
    bool const is_slow = last_length_ > 0.0 && length > slow * last_length_ && length < last_length_;
    if (last_length_ > 0.0) {
        double * const move = moves_.data() + count_ % depth * n;
        double * const change = changes_.data() + count_ % depth * n;
        for (int k = 0; k < n; ++k) {
            move[k] = moved[k];
            change[k] = step[k] - last_step_[k];
        }
        ++count_;
        known_ = std::min(known_ + 1, std::min(depth, n));
    }
    last_step_ = step;
    last_length_ = length;
    if (!is_slow) return false;

    // Weights of the differences, newest first, whose sum comes nearest to the step itself.
    for (int j = 0; j < known_; ++j) {
        double const * const change = changes_.data() + (count_ - 1 - j) % depth * n;
        std::copy(change, change + n, block_.data() + j * n);
    }
    for (int k = 0; k < n; ++k) block_.data()[known_ * n + k] = -step[k];
    factor_.clear(known_);
    factor_.absorb(block_.data(), n, n);
    for (int j = 0; j < known_; ++j) {
        if (!(std::abs(factor_(j, j)) > smallest_pivot * std::abs(factor_(0, 0)))) {
            factor_.cut(j);
            break;
        }
    }
    factor_.solve(weights_.data());
    for (int j = 0; j < factor_.columns(); ++j) {
        double const * const move = moves_.data() + (count_ - 1 - j) % depth * n;
        double const * const change = changes_.data() + (count_ - 1 - j) % depth * n;
        for (int k = 0; k < n; ++k) step[k] -= weights_.data()[j] * (move[k] + change[k]);
    }
    return true;
}

}  // namespace internal
}  // namespace datumfit
