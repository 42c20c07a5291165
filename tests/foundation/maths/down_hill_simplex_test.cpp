#include <datumfit/foundation/maths/down_hill_simplex.h>

#include <datumfit/foundation/maths/random.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <utility>

namespace {

struct counted : mlFunctionN1 {
    counted(int n, std::function<double(mlSlice const &)> f) : mlFunctionN1(n), formula(std::move(f)) {}
    double function(mlSlice const & x) const override {
        ++calls;
        return formula(x);
    }

    std::function<double(mlSlice const &)> formula;
    mutable int calls = 0;
};

mlVector vector_of(int n, double x) {
    mlVector v(mlVectorDim, n);
    v.fill(x);
    return v;
}

double largest_difference(mlVector const & a, mlVector const & b) {
    double largest = 0.0;
    for (int i = 0; i < a.dimension(); ++i) {
        largest = std::max(largest, std::fabs(a[i] - b[i]));
    }
    return largest;
}

// Solves from the start and checks what holds for every result.
mlVector solved(counted const & f, mlVector const & start, mlDownHillSimplexSpeed speed) {
    counted g(f);
    mlDownHillSimplex simplex(g.variables());
    mlVector x;
    double const value = simplex.solve(g, start, speed);
    simplex.result(x);
    EXPECT_EQ(g.formula(x), value);
    EXPECT_LE(value, g.formula(start));
    EXPECT_LE(g.calls, 9 * 2001 * g.variables() + 100);
    return x;
}

// The quadratic about `centre` with a curvature from 1 to `condition` along the axes of a random reflection.
counted quadratic(mlVector const & centre, double condition, mlRandom & random) {
    int const n = centre.dimension();
    mlVector mirror(mlVectorDim, n);
    for (int i = 0; i < n; ++i) {
        mirror[i] = random.minus_one_one();
    }
    mirror *= 1.0 / std::sqrt(scalar_product(mirror, mirror));
    return counted(n, [=](mlSlice const & x) {
        mlVector d(mlVectorDim, n);
        for (int i = 0; i < n; ++i) {
            d[i] = x[i] - centre[i];
        }
        double const height = scalar_product(d, mirror);
        double sum = 0.0;
        for (int i = 0; i < n; ++i) {
            double const side = d[i] - 2.0 * height * mirror[i];
            sum += std::pow(condition, n > 1 ? i / (n - 1.0) : 0.0) * side * side;
        }
        return sum;
    });
}

struct Problem {
    double scale, offset, condition;
};
class DownHillSimplexOnQuadratics : public testing::TestWithParam<Problem> {};

TEST_P(DownHillSimplexOnQuadratics, FindsTheMinimumFromAnyStart) {
    Problem const p = GetParam();
    mlRandom random(1);
    for (int n = 1; n <= 6; ++n) {
        mlVector centre(mlVectorDim, n), beside(mlVectorDim, n);
        for (int i = 0; i < n; ++i) {
            centre[i] = p.offset + p.scale * random.minus_one_one();
            beside[i] = centre[i] + p.scale * random.minus_one_one();
        }
        counted const f = quadratic(centre, p.condition, random);
        for (mlVector const & start : {vector_of(n, 0.0), beside, centre}) {
            mlVector const x = solved(f, start, mlDownHillSimplexThorough);
            EXPECT_LT(largest_difference(x, centre), 1e-10 * std::max(p.scale, std::fabs(p.offset))) << n;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Scales, DownHillSimplexOnQuadratics,
                         testing::Values(Problem{1.0, 0.0, 1.0}, Problem{1.0, 0.0, 1e4}, Problem{1e-3, 0.0, 1e4},
                                         Problem{1e5, 0.0, 1e4}, Problem{1.0, -1e5, 1e4}));

double rosenbrock(mlSlice const & x) {
    double sum = 0.0;
    for (int i = 0; i + 1 < x.dimension(); ++i) {
        sum += 100.0 * std::pow(x[i + 1] - x[i] * x[i], 2) + std::pow(1.0 - x[i], 2);
    }
    return sum;
}

// Without curvature in two directions at its minimum, which is 0.
double powell_singular(mlSlice const & x) {
    return std::pow(x[0] + 10.0 * x[1], 2) + 5.0 * std::pow(x[2] - x[3], 2) + std::pow(x[1] - 2.0 * x[2], 4) +
           10.0 * std::pow(x[0] - x[3], 4);
}

TEST(DownHillSimplex, FollowsCurvedAndFlatValleys) {
    for (int const n : {2, 4, 6}) {
        mlVector const x = solved(counted(n, rosenbrock), vector_of(n, 0.0), mlDownHillSimplexThorough);
        EXPECT_LT(largest_difference(x, vector_of(n, 1.0)), 1e-10) << n;
    }
    double const start[] = {3.0, -1.0, 0.0, 1.0};
    mlVector const x = solved(counted(4, powell_singular), mlVector(utConvert, start, 4), mlDownHillSimplexThorough);
    EXPECT_LT(largest_difference(x, vector_of(4, 0.0)), 1e-10);
}

TEST(DownHillSimplex, FindsTheCentreOfARingFarFromTheOrigin) {
    // The ring of least width between two circles about one centre, on an arc: kinks along every bisector. Its points
    // touch the outer and the inner circle in turn.
    counted const f(2, [](mlSlice const & x) {
        double longest = 0.0, shortest = 1e300;
        for (int i = 0; i < 7; ++i) {
            double const radius = i % 2 == 0 ? 10.0 : 10.01;
            double const angle = 0.25 * i;
            double const distance =
                std::hypot(x[0] - 1e4 - radius * std::cos(angle), x[1] + 2e4 - radius * std::sin(angle));
            longest = std::max(longest, distance);
            shortest = std::min(shortest, distance);
        }
        return longest - shortest;
    });
    double const mean[] = {1e4 + 7.0, -2e4 + 7.0}, centre[] = {1e4, -2e4};
    mlVector const x = solved(f, mlVector(utConvert, mean, 2), mlDownHillSimplexThorough);
    EXPECT_LT(largest_difference(x, mlVector(utConvert, centre, 2)), 1e-7);
}

TEST(DownHillSimplex, WorksHarderWhenAskedTo) {
    int calls = 0;
    double error = 1e300;
    for (int const speed : {mlDownHillSimplexQuick, mlDownHillSimplexNormal, mlDownHillSimplexThorough}) {
        counted f(3, rosenbrock);
        mlDownHillSimplex simplex(3);
        double const value = simplex.solve(f, vector_of(3, 0.0), static_cast<mlDownHillSimplexSpeed>(speed));
        EXPECT_GT(f.calls, calls);
        EXPECT_LT(value, error);
        calls = f.calls;
        error = value;
    }
}

TEST(DownHillSimplex, IsNotHeldByEqualValues) {
    // The first simplex, of steps of 0.1 to both sides in turn, has all its corners on one contour.
    double const centre[] = {0.05, -0.05};
    counted const f(2, [=](mlSlice const & x) { return std::fabs(x[0] - centre[0]) + std::fabs(x[1] - centre[1]); });
    for (int const speed : {mlDownHillSimplexQuick, mlDownHillSimplexThorough}) {
        mlVector const x = solved(f, vector_of(2, 0.0), static_cast<mlDownHillSimplexSpeed>(speed));
        EXPECT_LT(largest_difference(x, mlVector(utConvert, centre, 2)), 1e-3) << speed;
    }
}

TEST(DownHillSimplex, AvoidsWhereTheFunctionIsNotDefined) {
    double const nan = std::numeric_limits<double>::quiet_NaN();
    counted const f(2, [=](mlSlice const & x) { return x[0] < 0.5 ? nan : x[0] * x[0] + std::pow(x[1] - 3.0, 2); });
    mlVector const x = solved(f, vector_of(2, 0.6), mlDownHillSimplexThorough);
    EXPECT_NEAR(0.5, x[0], 1e-6);
    EXPECT_NEAR(3.0, x[1], 1e-2);

    counted nowhere(3, [=](mlSlice const &) { return nan; });
    mlDownHillSimplex simplex(3);
    EXPECT_EQ(std::numeric_limits<double>::infinity(),
              simplex.solve(nowhere, vector_of(3, 1.0), mlDownHillSimplexThorough));
}

}  // namespace
