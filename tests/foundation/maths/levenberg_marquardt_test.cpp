#include "support/shapes.h"
#include "support/vectors.h"

#include <datumfit/foundation/maths/triangular_factor.h>
#include <datumfit/foundation/maths/trust_region_step.h>

#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace {

// A host's model: any function with derivatives, which goes through the slots point by point.
class host_model : public mlDistanceLeastSquares {
public:
    using formula = std::function<double(mlVector const & p, int i, mlVector & g)>;

    host_model(int parameters, int points, formula f) : mlDistanceLeastSquares(parameters, points), f_(std::move(f)) {}

    void set_parameters(mlVector const & p) override {
        mlDistanceLeastSquares::set_parameters(p);
        EXPECT_EQ(0, unnormalised);
        ++unnormalised;
    }
    void normalize_parameters(mlVector & p) const override {
        if (normalize) normalize(p);
        unnormalised = 0;
    }
    void get_distance_and_gradient(double & d, mlVector & g, int i) const override { d = f_(parameters(), i, g); }
    void get_distance(double & d, int i) const override {
        mlVector g;
        d = f_(parameters(), i, g);
    }
    int n_independent_parameters() const override { return independent > 0 ? independent : n_parameters(); }

    std::function<void(mlVector & p)> normalize;
    int independent = 0;
    mutable int unnormalised = 1;  // 0 between normalize_parameters and the set_parameters that it is for

private:
    formula f_;
};

double fit(mlDistanceLeastSquares & problem, std::vector<double> const & start, mlVector & result) {
    double const mean_square = mlLevenbergMarquardt(problem).fit(vector_of(start), result);
    double const sum = problem.score(result, HUGE_VAL);
    EXPECT_NEAR(sum, mean_square * 4.0, 1e-12 * sum + 1e-25) << "the mean square is not that of the result";
    return mean_square;
}

// Rosenbrock's valley and its relatives, as sums of four squares.
double rosenbrock(mlVector const & p, int i, mlVector & g) {
    g[0] = g[1] = 0.0;
    if (i == 0) {
        g[0] = -20.0 * p[0];
        g[1] = 10.0;
        return 10.0 * (p[1] - p[0] * p[0]);
    }
    if (i == 1) g[0] = -1.0;
    return i == 1 ? 1.0 - p[0] : 0.0;
}

// Large residuals bend the sum: each Gauss-Newton step leaves two thirds of the error, and the minimum is still found
// to rounding. Minimise (x - 3)^2 + a (x^2 + 1)^2 twice: 2 (x - 3) + 4 a x (x^2 + 1) = 0 at x = 1 for a = 1/2.
TEST(Solver, ConvergesToRoundingWhereResidualsAreLarge) {
    host_model problem(1, 4, [](mlVector const & p, int i, mlVector & g) {
        g[0] = i % 2 == 0 ? 1.0 : std::sqrt(0.5) * 2.0 * p[0];
        return i % 2 == 0 ? p[0] - 3.0 : std::sqrt(0.5) * (p[0] * p[0] + 1.0);
    });
    mlVector result(mlVectorDim, 1);
    for (double const start : {-4.0, 0.9, 30.0}) {
        fit(problem, {start}, result);
        EXPECT_NEAR(1.0, result[0], 1e-14);
    }
}

// A direction in the plane, told by two numbers of which one counts, scaled apart by normalize_parameters.
TEST(Solver, LeavesAloneWhatDoesNotCount) {
    host_model problem(3, 4, [](mlVector const & p, int i, mlVector & g) {
        double const x = i - 1.5, y = 2.0 * x + 5.0, e = p[1] * x + p[2] * y;
        g[0] = -1.0;
        g[1] = x - e * p[1];
        g[2] = y - e * p[2];
        return e - p[0];
    });
    problem.normalize = [](mlVector & p) {
        double const length = std::hypot(p[1], p[2]);
        p[1] /= length;
        p[2] /= length;
    };
    mlVector result(mlVectorDim, 3);
    for (int const independent : {2, 3}) {  // known to the model, or found out
        problem.independent = independent;
        EXPECT_NEAR(0.0, fit(problem, {0.1, 5.0, 1.0}, result), 1e-28);
        EXPECT_NEAR(-2.0, result[1] / result[2], 1e-14);
        EXPECT_NEAR(5.0, result[0] / result[2], 1e-13);
        EXPECT_NEAR(1.0, std::hypot(result[1], result[2]), 1e-15);
    }
}

TEST(Solver, LeavesASaddle) {
    // f = (x^2 - 1)^2 + y^2: the start at x = 0 is a maximum along x, where all derivatives are 0.
    host_model problem(2, 4, [](mlVector const & p, int i, mlVector & g) {
        g[0] = i == 0 ? 2.0 * p[0] : 0.0;
        g[1] = i == 1 ? 1.0 : 0.0;
        return i == 0 ? p[0] * p[0] - 1.0 : i == 1 ? p[1] : 0.0;
    });
    mlVector result(mlVectorDim, 2);
    for (double const y : {0.0, 0.5}) {
        EXPECT_NEAR(0.0, fit(problem, {0.0, y}, result), 1e-28);
        EXPECT_NEAR(1.0, std::abs(result[0]), 1e-14);
    }
}

TEST(Solver, KeepsTheStartWhereNothingIsFinite) {
    for (double const x : {std::nan(""), HUGE_VAL}) {
        host_model problem(1, 4, [x](mlVector const &, int i, mlVector & g) {
            g[0] = 1.0;
            return i == 2 ? x : 1.0;
        });
        mlVector result(mlVectorDim, 1);
        EXPECT_FALSE(std::isfinite(mlLevenbergMarquardt(problem).fit(vector_of({3.0}), result)));
        EXPECT_EQ(3.0, result[0]);
    }
    // The full step from 2 leads to where the logarithm is none.
    host_model wall(1, 4, [](mlVector const & p, int, mlVector & g) {
        g[0] = 1.0 / p[0];
        return std::log(p[0]) + 1.0;
    });
    mlVector result(mlVectorDim, 1);
    EXPECT_NEAR(0.0, fit(wall, {8.0}, result), 1e-28);
    EXPECT_NEAR(std::exp(-1.0), result[0], 1e-14);
}

TEST(Solver, FollowsABentValleyToItsEndOrTheLimitOfIterations) {
    host_model problem(2, 4, rosenbrock);
    mlVector const start = vector_of({-1.2, 1.0});
    double last = 24.2 / 4.0;
    for (int const limit : {1, 3, 6}) {
        mlVector result(mlVectorDim, 2);
        mlLevenbergMarquardt solver(problem);
        solver.set_max_iterations(limit);
        double const mean_square = solver.fit(start, result);
        EXPECT_LE(mean_square, last);
        EXPECT_GT(mean_square, 1e-20);
        last = mean_square;
    }
    for (bool const strict : {false, true}) {
        mlVector result(mlVectorDim, 2);
        mlLevenbergMarquardt solver(problem);
        solver.set_strict(strict);
        if (strict) solver.set_max_iterations(10000);
        EXPECT_LE(solver.fit(start, result), 1e-28);
        for (int k = 0; k < 2; ++k) EXPECT_NEAR(1.0, result[k], 1e-14);
    }
}

// A class derived from a model of ours is asked through what it overrides, and comes to the same.
class watched_circle : public sqLeastSquareCircle2 {
public:
    using sqLeastSquareCircle2::sqLeastSquareCircle2;
    void get_distance_and_gradient(double & d, mlVector & g, int i) const override {
        ++asked;
        sqLeastSquareCircle2::get_distance_and_gradient(d, g, i);
    }
    mutable int asked = 0;
};

TEST(Solver, AsksDerivedModelsThroughTheirSlots) {
    for (placement const & at : placements) {
        giPoint2coDynArr const points = arc(general_point2(at.offset), at.size, 1.5, 300, 1e-3);
        sqLeastSquareCircle2 plain(points);
        watched_circle derived(points);
        giPoint2 const m = plain.centroid();
        mlVector const s = vector_of({m.x(), m.y(), 0.3 * at.size});
        mlVector a(mlVectorDim, 3), b(mlVectorDim, 3);
        mlLevenbergMarquardt(plain).fit(s, a);
        mlLevenbergMarquardt(derived).fit(s, b);
        EXPECT_GT(derived.asked, 300);
        for (int k = 0; k < 3; ++k) EXPECT_NEAR(a[k], b[k], 20.0 * rounding_at(at)) << at.name;
    }
}

// Slots fill the factor by blocks, passes by the Gram matrix: see AsksDerivedModelsThroughTheirSlots.
TEST(TriangularFactor, RefusesAGramMatrixWhereDigitsAreLost) {
    for (double const spread : {1.0, 1e-2, 1e-4}) {  // the second column differs from the first by so much
        // Of the columns (1, 0), (1, spread) and the distances (3, 4).
        double const upper[] = {1.0, 1.0, 3.0, 1.0 + spread * spread, 3.0 + 4.0 * spread, 25.0};
        datumfit::internal::triangular_factor gram(2);
        ASSERT_EQ(spread > 1e-3, gram.take_gram(upper));
        if (spread < 1e-3) continue;
        double x[2];
        gram.solve(x);
        EXPECT_NEAR(-4.0 / spread, x[1], 1e-13 / (spread * spread));
        EXPECT_NEAR(-3.0, x[0] + x[1], 1e-13);
        EXPECT_NEAR(25.0, gram.sum_of_squares(), 1e-13);
    }
}

// J has four columns, the last the sum of the others: the step is the shortest of the best ones, and a damped one has
// the length asked for and the direction that a damped least-squares problem gives.
TEST(TrustRegionStep, IsTheShortestOfTheBestAndKeepsItsLimit) {
    int const n = 4, rows = 12;
    noise number;
    datumfit::internal::triangular_factor factor(n);
    std::vector<double> block(static_cast<std::size_t>((n + 1) * rows));
    double * const b = block.data();
    for (int i = 0; i < (n + 1) * rows; ++i) b[i] = number();
    for (int i = 0; i < rows; ++i) b[3 * rows + i] = b[i] + b[rows + i] + b[2 * rows + i];
    std::vector<double> used = block;
    factor.absorb(used.data(), rows, rows);
    double const scales[] = {1.0, 2.0, 1.0, 0.5};
    datumfit::internal::trust_region_step steps(n, 3);
    steps.reduce(factor, scales);
    ASSERT_EQ(3, steps.rank());

    double step[n], idle[n], gain, gradient[n];
    auto const sum_after = [&](double const * x) {
        double sum = 0.0;
        for (int k = 0; k < n; ++k) gradient[k] = 0.0;
        for (int i = 0; i < rows; ++i) {
            double d = b[n * rows + i];
            for (int k = 0; k < n; ++k) d += b[k * rows + i] * x[k];
            for (int k = 0; k < n; ++k) gradient[k] += d * b[k * rows + i];
            sum += d * d;
        }
        return sum;
    };
    double const length = steps.take(HUGE_VAL, step, gain);
    EXPECT_NEAR(factor.sum_of_squares() - sum_after(step), gain, 1e-13);
    for (int k = 0; k < n; ++k) EXPECT_NEAR(0.0, gradient[k], 1e-13);
    EXPECT_NEAR(steps.removable() * steps.removable(), gain, 1e-13);
    steps.idle(0, idle);
    double across = 0.0;
    for (int k = 0; k < n; ++k) across += scales[k] * scales[k] * idle[k] * step[k];
    EXPECT_NEAR(0.0, across, 1e-14) << "the step goes along a direction that changes nothing";

    for (double const share : {0.5, 0.01}) {
        double const damped = steps.take(share * length, step, gain);
        EXPECT_NEAR(share * length, damped, 0.1 * share * length);
        EXPECT_NEAR(factor.sum_of_squares() - sum_after(step), gain, 1e-13);
        double const lambda = -gradient[0] / step[0];
        EXPECT_GT(lambda, 0.0);
        for (int k = 0; k < n; ++k) EXPECT_NEAR(lambda * scales[k] * scales[k] * step[k], -gradient[k], 1e-12);
    }
}

}  // namespace
