#pragma once

#include "support/ridders.h"

#include <datumfit/foundation/maths/distance_least_squares.h>

#include <gtest/gtest.h>

/// Expects of a model in a state p that the slots of its first n points agree with each other, and the gradients with
/// differences. States are set in their unique form or, where told not to, as they are.
inline void expect_gradients(mlDistanceLeastSquares & problem, mlVector const & p, int n, bool unique = true,
                             double first_step = 0.05, double tolerance = 1e-9) {
    auto const distance = [&](int i, int k, double by) {
        mlVector moved(p);
        if (unique) problem.normalize_parameters(moved);
        moved[k] += by;
        if (unique) problem.normalize_parameters(moved);
        problem.set_parameters(moved);
        double d;
        problem.get_distance(d, i);
        return d;
    };
    for (int i = 0; i < n; ++i) {
        double const alone = distance(i, 0, 0.0);
        double d;
        mlVector g;
        problem.get_distance_and_gradient(d, g, i);
        EXPECT_EQ(alone, d);
        EXPECT_NEAR(d * d, problem.get_last_square_distance(), 1e-14);
        for (int k = 0; k < problem.n_parameters(); ++k) {
            auto const moved = [&](double by) { return distance(i, k, by); };
            EXPECT_NEAR(derivative(moved, 0.0, first_step), g[k], tolerance) << "point " << i << ", parameter " << k;
        }
    }
}
