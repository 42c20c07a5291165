#include <datumfit/foundation/maths/down_hill_simplex.h>
#include <datumfit/foundation/maths/singular_value_decomposition.h>

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <utility>

#include "matrices.h"
#include "support/vectors.h"

namespace {

using formula = std::function<double(mlSlice const &)>;

struct counted : mlFunctionN1 {
    counted(int n, formula f) : mlFunctionN1(n), f_(std::move(f)) {}
    double function(mlSlice const & x) const override {
        ++calls;
        return f_(x);
    }
    mutable int calls = 0;

private:
    formula f_;
};

mlVector filled(int n, double x) {
    return vector_of(std::vector<double>(static_cast<std::size_t>(n), x));
}

// The largest error of a coordinate of the minimum found, which is to be at `centre`.
double error(formula const & f, mlVector const & start, mlVector const & centre,
             mlDownHillSimplexSpeed speed = mlDownHillSimplexThorough) {
    counted g(start.dimension(), f);
    mlDownHillSimplex simplex(start.dimension());
    mlVector x;
    double const value = simplex.solve(g, start, speed);
    simplex.result(x);
    EXPECT_EQ(f(x), value);
    EXPECT_LE(value, f(start));
    EXPECT_LE(g.calls, 9 * 2001 * start.dimension() + 100);
    return largest_difference(diagonal_matrix(x), diagonal_matrix(centre));
}

TEST(DownHillSimplex, FindsTheMinimumOfAQuadraticFromAnyStart) {
    mlRandom random(1);
    for (auto const & [scale, offset] : {std::pair{1e-3, 0.0}, {1e5, 0.0}, {1.0, -1e5}}) {
        for (int n = 1; n <= 6; ++n) {
            SCOPED_TRACE(testing::Message() << n << " variables at scale " << scale << " offset " << offset);
            // Axes in general position, and curvatures from 1 to 1e4.
            mlMatrix const axes = transposed(mlSingularValueDecomposition(random_matrix(n, n, random)).V());
            mlMatrix roots(mlMatrixZero, n, n);
            mlVector centre = filled(n, offset), beside = centre;
            for (int i = 0; i < n; ++i) {
                roots(i, i) = std::pow(100.0, i / 5.0);
                centre[i] += scale * random.minus_one_one();
                beside[i] += scale * random.minus_one_one();
            }
            mlMatrix const stretched = product(roots, axes);
            formula const f = [&](mlSlice const & x) {
                mlVector d = centre;
                d *= -1.0;
                d += mlVector(mlMatrixProduct, mlMatrix(mlMatrixIdentity, n), x);
                multiply(stretched, d, d);
                return scalar_product(d, d);
            };
            for (mlVector const & start : {filled(n, 0.0), beside, centre}) {
                EXPECT_LT(error(f, start, centre), 1e-10 * std::max(scale, std::fabs(offset)));
            }
        }
    }
}

double rosenbrock(mlSlice const & x) {
    double sum = 0.0;
    for (int i = 0; i + 1 < x.dimension(); ++i) {
        sum += 100.0 * std::pow(x[i + 1] - x[i] * x[i], 2) + std::pow(1.0 - x[i], 2);
    }
    return sum;
}

TEST(DownHillSimplex, FollowsCurvedValleys) {
    for (int const n : {2, 6}) EXPECT_LT(error(rosenbrock, filled(n, 0.0), filled(n, 1.0)), 1e-10) << n;
}

TEST(DownHillSimplex, WorksHarderWhenAskedTo) {
    int calls = 0;
    double lowest = 1e300;
    for (auto const speed : {mlDownHillSimplexQuick, mlDownHillSimplexNormal, mlDownHillSimplexThorough}) {
        counted f(3, rosenbrock);
        double const value = mlDownHillSimplex(3).solve(f, filled(3, 0.0), speed);
        EXPECT_GT(f.calls, calls);
        EXPECT_LT(value, lowest);
        calls = f.calls;
        lowest = value;
    }
}

TEST(DownHillSimplex, IsNotHeldByEqualValues) {
    // The first simplex, of steps of 0.1 to both sides in turn, has all its corners on one contour.
    mlVector const centre = vector_of({0.05, -0.05});
    formula const f = [&](mlSlice const & x) { return std::fabs(x[0] - centre[0]) + std::fabs(x[1] - centre[1]); };
    EXPECT_LT(error(f, filled(2, 0.0), centre, mlDownHillSimplexQuick), 1e-3);
}

TEST(DownHillSimplex, AvoidsWhereTheFunctionIsNotDefined) {
    double const nan = std::numeric_limits<double>::quiet_NaN();
    formula const f = [=](mlSlice const & x) { return x[0] < 0.5 ? nan : std::pow(x[0] - 0.6, 2) + x[1] * x[1]; };
    EXPECT_LT(error(f, vector_of({0.51, 3.0}), vector_of({0.6, 0.0})), 1e-10);
    counted nowhere(3, [=](mlSlice const &) { return nan; });
    EXPECT_TRUE(std::isinf(mlDownHillSimplex(3).solve(nowhere, filled(3, 1.0), mlDownHillSimplexThorough)));
}

}  // namespace
