#include <datumfit/foundation/maths/down_hill_simplex.h>
#include <datumfit/foundation/maths/singular_value_decomposition.h>

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <utility>

#include "matrices.h"

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

mlVector vector_of(int n, double x) {
    mlVector v(mlVectorDim, n);
    v.fill(x);
    return v;
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
    struct Case {
        double scale, offset;
    };
    mlRandom random(1);
    for (Case const & c : {Case{1.0, 0.0}, Case{1e-3, 0.0}, Case{1e5, 0.0}, Case{1.0, -1e5}}) {
        for (int n = 1; n <= 6; ++n) {
            SCOPED_TRACE(testing::Message() << n << " variables at scale " << c.scale << " offset " << c.offset);
            // Axes in general position, and curvatures from 1 to 1e4.
            mlMatrix const axes = transposed(mlSingularValueDecomposition(random_matrix(n, n, random)).V());
            mlMatrix roots(mlMatrixZero, n, n);
            mlVector centre = vector_of(n, c.offset), beside = centre;
            for (int i = 0; i < n; ++i) {
                roots(i, i) = std::pow(100.0, i / 5.0);
                centre[i] += c.scale * random.minus_one_one();
                beside[i] += c.scale * random.minus_one_one();
            }
            mlMatrix const stretched = product(roots, axes);
            formula const f = [&](mlSlice const & x) {
                mlVector d = centre;
                d *= -1.0;
                d += mlVector(mlMatrixProduct, mlMatrix(mlMatrixIdentity, n), x);
                multiply(stretched, d, d);
                return scalar_product(d, d);
            };
            for (mlVector const & start : {vector_of(n, 0.0), beside, centre}) {
                EXPECT_LT(error(f, start, centre), 1e-10 * std::max(c.scale, std::fabs(c.offset)));
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

// Without curvature in two directions at its minimum.
double powell_singular(mlSlice const & x) {
    return std::pow(x[0] + 10.0 * x[1], 2) + 5.0 * std::pow(x[2] - x[3], 2) + std::pow(x[1] - 2.0 * x[2], 4) +
           10.0 * std::pow(x[0] - x[3], 4);
}

TEST(DownHillSimplex, FollowsCurvedAndFlatValleys) {
    for (int const n : {2, 4, 6}) {
        EXPECT_LT(error(rosenbrock, vector_of(n, 0.0), vector_of(n, 1.0)), 1e-10) << n;
    }
    double const start[] = {3.0, -1.0, 0.0, 1.0};
    EXPECT_LT(error(powell_singular, mlVector(utConvert, start, 4), vector_of(4, 0.0)), 1e-10);
}

TEST(DownHillSimplex, FindsTheCentreOfARingFarFromTheOrigin) {
    // The width of the ring about x that holds the points: it has kinks. The points touch its two circles in turn.
    formula const width = [](mlSlice const & x) {
        double longest = 0.0, shortest = 1e300;
        for (int i = 0; i < 7; ++i) {
            double const radius = i % 2 == 0 ? 10.0 : 10.01, angle = 0.25 * i;
            double const u = 1e4 + radius * std::cos(angle), v = -2e4 + radius * std::sin(angle);
            longest = std::max(longest, std::hypot(u - x[0], v - x[1]));
            shortest = std::min(shortest, std::hypot(u - x[0], v - x[1]));
        }
        return longest - shortest;
    };
    double const start[] = {1e4 + 7.0, -2e4 + 7.0}, centre[] = {1e4, -2e4};
    EXPECT_LT(error(width, mlVector(utConvert, start, 2), mlVector(utConvert, centre, 2)), 1e-7);
}

TEST(DownHillSimplex, WorksHarderWhenAskedTo) {
    int calls = 0;
    double lowest = 1e300;
    for (auto const speed : {mlDownHillSimplexQuick, mlDownHillSimplexNormal, mlDownHillSimplexThorough}) {
        counted f(3, rosenbrock);
        double const value = mlDownHillSimplex(3).solve(f, vector_of(3, 0.0), speed);
        EXPECT_GT(f.calls, calls);
        EXPECT_LT(value, lowest);
        calls = f.calls;
        lowest = value;
    }
}

TEST(DownHillSimplex, IsNotHeldByEqualValues) {
    // The first simplex, of steps of 0.1 to both sides in turn, has all its corners on one contour.
    double const centre[] = {0.05, -0.05};
    formula const f = [=](mlSlice const & x) { return std::fabs(x[0] - centre[0]) + std::fabs(x[1] - centre[1]); };
    EXPECT_LT(error(f, vector_of(2, 0.0), mlVector(utConvert, centre, 2), mlDownHillSimplexQuick), 1e-3);
}

TEST(DownHillSimplex, AvoidsWhereTheFunctionIsNotDefined) {
    double const nan = std::numeric_limits<double>::quiet_NaN();
    formula const f = [=](mlSlice const & x) { return x[0] < 0.5 ? nan : std::pow(x[0] - 0.6, 2) + x[1] * x[1]; };
    double const start[] = {0.51, 3.0}, centre[] = {0.6, 0.0};
    EXPECT_LT(error(f, mlVector(utConvert, start, 2), mlVector(utConvert, centre, 2)), 1e-10);
    counted nowhere(3, [=](mlSlice const &) { return nan; });
    EXPECT_TRUE(std::isinf(mlDownHillSimplex(3).solve(nowhere, vector_of(3, 1.0), mlDownHillSimplexThorough)));
}

}  // namespace
