#pragma once

#include <datumfit/foundation/maths/all_points_model.h>
#include <datumfit/foundation/maths/triangular_factor.h>

#include <vector>

namespace datumfit {
namespace internal {

/// Turns the current state of a model into the triangular factor of its Jacobian and distances, in one pass.
class linearisation {
public:
    linearisation(int unknowns, int points, int rows_per_point);

    /// By the model's Gram matrix where it offers one that keeps its digits, else by factorise().
    void run(all_points_model & model, triangular_factor & factor);

    /// By orthogonal reflections of blocks of rows, which loses no digits.
    void factorise(all_points_model & model, triangular_factor & factor);

private:
    int unknowns_;
    int points_;
    int stride_;
    std::vector<double> block_, gram_;
};

}  // namespace internal
}  // namespace datumfit
