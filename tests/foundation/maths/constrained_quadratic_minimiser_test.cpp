#include <datumfit/foundation/maths/constrained_quadratic_minimiser.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <random>
#include <vector>

namespace {

using row = std::vector<double>; // k0, k1, ..., d

struct constraints {
    explicit constraints(std::vector<row> const & rows, int n) : K(static_cast<int>(rows.size()), n) {
        for (row const & r : rows) {
            for (int j = 0; j < n; ++j) K(d.dimension(), j) = r[static_cast<std::size_t>(j)];
            d.append(r.back());
        }
    }
    mlMatrix K;
    mlVector d;
};

mlVector point(std::vector<double> const & x) {
    return mlVector(utConvert, x.data(), static_cast<int>(x.size()));
}

std::vector<double> list(mlVector const & v) {
    return std::vector<double>(v.data(), v.data() + v.size());
}

std::vector<int> list(intcoDynArr const & v) {
    return std::vector<int>(v.data(), v.data() + v.size());
}

double length(mlVector const & v) {
    return std::sqrt(scalar_product(v, v));
}

// How far K x falls short of d, as a share of |row| |x| + |d|; 0 when x meets all rows but the ones left out.
double shortfall(constraints const & c, mlVector const & x, std::vector<int> const & left_out = {}) {
    double worst = 0.0;
    for (int i = 0; i < c.d.dimension(); ++i) {
        mlVector const k(utConvert, c.K.row_data(i), c.K.cols());
        if (std::count(left_out.begin(), left_out.end(), i)) continue;
        worst = std::max(worst, (c.d[i] - scalar_product(k, x)) / (length(k) * length(x) + std::abs(c.d[i]) + DBL_MIN));
    }
    return worst;
}

// A problem whose minimum is known: x, with the gradient there a sum of rows through x with positive multipliers. Rows may
// repeat others or oppose them in the same place, and have lengths from 1e-6 to 1e6.
struct problem {
    problem(unsigned seed, int n, int rows, int rank, double through)
        : generator(seed), x(mlVectorZero, n), A(mlMatrixZero, n, n), g(mlVectorZero, n) {
        for (int j = 0; j < n; ++j) x[j] = through == 1.0 ? 0.0 : normal(generator);
        for (int r = 0; r < rank; ++r) {
            mlVector v = some_vector();
            for (int i = 0; i < n; ++i) {
                for (int j = 0; j < n; ++j) A(i, j) += v[i] * v[j] + (i == j && rank == n ? 0.1 : 0.0);
            }
        }
        std::vector<row> made;
        for (int i = 0; i < rows; ++i) made.push_back(some_row(made, through));
        data = constraints(made, n);
        mlVector const slope(mlMatrixProduct, A, x);
        for (int j = 0; j < n; ++j) g[j] -= slope[j];
    }
    mlVector some_vector() {
        mlVector v(mlVectorDim, x.dimension());
        for (int j = 0; j < v.dimension(); ++j) v[j] = normal(generator);
        return v;
    }
    row some_row(std::vector<row> const & others, double through) {
        double const kind = uniform(generator), scale = std::pow(10.0, 12.0 * uniform(generator) - 6.0);
        mlVector k = some_vector();
        if (kind < 0.2 && !others.empty()) {
            k = point(others[generator() % others.size()]);
            k.shrink(x.dimension(), 0);
            if (kind < 0.1) k *= -1.0;
        }
        k *= 1.0 / length(k);
        bool const passes = uniform(generator) < through;
        double const slack = passes ? 0.0 : uniform(generator), multiplier = passes ? normal(generator) : 0.0;
        for (int j = 0; j < g.dimension(); ++j) g[j] += std::max(multiplier, 0.0) * k[j];
        k *= scale;
        row made = list(k);
        made.push_back(scalar_product(k, x) - scale * slack);
        return made;
    }
    double value(mlVector const & at) const {
        return 0.5 * scalar_product(at, mlVector(mlMatrixProduct, A, at)) + scalar_product(g, at);
    }
    std::mt19937 generator;
    std::normal_distribution<double> normal;
    std::uniform_real_distribution<double> uniform;
    mlVector x;
    mlMatrix A;
    mlVector g;
    constraints data{{}, 0};
};

// Few rows through the minimum, half of all (a vertex of up to a thousand rows), and all, with the minimum at 0.
class RandomProblems : public testing::TestWithParam<double> {};

TEST_P(RandomProblems, HaveTheMinimumThatTheyWereMadeFor) {
    for (unsigned seed = 0; seed < 600; ++seed) {
        int const n = 1 + static_cast<int>(seed % 12), rows = seed % 50 == 0 ? 2000 : static_cast<int>(seed % 70);
        // A that is definite, and A of any rank, down to a linear program.
        bool const definite = seed % 3 != 0;
        problem const p(seed, n, rows, definite ? n : static_cast<int>(seed / 12) % n, GetParam());
        mlConstrainedQuadraticMinimiser minimiser(p.data.K, p.data.d, 1);
        mlVector found(mlVectorZero, n);
        ASSERT_EQ(1, minimiser.stage1(found)) << seed;
        EXPECT_GE(1e-12, shortfall(p.data, found)) << seed;
        found.fill(0.0);
        ASSERT_EQ(1, minimiser.solve(p.A, p.g, found)) << seed;
        EXPECT_EQ(0, minimiser.overdetermined_constraints().size()) << seed;
        // Where the minimum is 0, so is what a shortfall is compared with.
        EXPECT_GE(GetParam() < 1.0 ? 1e-12 : 1.0, shortfall(p.data, found)) << seed;
        mlVector difference = p.x;
        difference *= -1.0;
        difference += found;
        EXPECT_GE(definite ? 1e-10 : HUGE_VAL, length(difference)) << seed; // the worst seen is
        EXPECT_NEAR(p.value(p.x), p.value(found), 1e-10 * (1.0 + length(p.g))) << seed;
    }
}
INSTANTIATE_TEST_SUITE_P(RowsThroughTheMinimum, RandomProblems, testing::Values(0.05, 0.5, 1.0));

TEST(ConstrainedQuadraticMinimiser, FindsTheNearestFeasiblePointAndLeavesAFeasibleOne) {
    for (unsigned seed = 0; seed < 100; ++seed) {
        problem p(seed, 1 + static_cast<int>(seed % 12), 200, 1, 0.05);
        int const n = p.x.dimension();
        mlConstrainedQuadraticMinimiser minimiser(p.data.K, p.data.d, 0);
        mlVector near = p.some_vector(), slope = near, nearest(mlVectorZero, n);
        slope *= -1.0;
        ASSERT_EQ(1, minimiser.stage1(near));
        ASSERT_EQ(1, minimiser.solve(mlMatrix(mlMatrixIdentity, n), slope, nearest));
        for (int j = 0; j < n; ++j) EXPECT_NEAR(nearest[j], near[j], 1e-11);
        mlVector again = near;
        EXPECT_EQ(1, minimiser.stage1(again));
        EXPECT_EQ(list(near), list(again));
    }
}

TEST(ConstrainedQuadraticMinimiser, MovesAlongIdleDirectionsOnlyAsFarAsRowsAsk) {
    mlMatrix A(mlMatrixZero, 3, 3);
    A(0, 0) = 4.0;
    mlVector const g = point({-8.0, 0.0, 0.0});
    for (double const bound : {-1.0, 2.0}) {
        constraints const c({{0.0, 1.0, 1.0, bound}}, 3);
        mlVector x(mlVectorZero, 3);
        ASSERT_EQ(1, mlConstrainedQuadraticMinimiser(c.K, c.d, 1).solve(A, g, x));
        for (int j = 0; j < 3; ++j) EXPECT_NEAR(j == 0 ? 2.0 : std::max(0.5 * bound, 0.0), x[j], 1e-12);
    }
    // Nothing stops the slope along an idle direction.
    mlVector x(mlVectorZero, 3);
    EXPECT_EQ(0, mlConstrainedQuadraticMinimiser(mlMatrix(), mlVector(), 1).solve(A, point({-8.0, 1.0, 0.0}), x));
    EXPECT_EQ(0.0, length(x));
}

// Fourier and Motzkin: eliminates one unknown after the other. Exact for small whole numbers.
bool can_be_met(std::vector<row> rows, std::size_t n) {
    for (std::size_t j = 0; j < n; ++j) {
        std::vector<row> rest;
        for (row const & a : rows) {
            if (a[j] == 0.0) rest.push_back(a);
            for (row const & b : rows) {
                if (!(a[j] > 0.0 && b[j] < 0.0)) continue;
                rest.push_back(a);
                for (std::size_t i = 0; i <= n; ++i) rest.back()[i] = a[i] * -b[j] + b[i] * a[j];
            }
        }
        rows = rest;
    }
    return std::none_of(rows.begin(), rows.end(), [n](row const & r) { return r[n] > 0.0; });
}

// Of all smallest sets of rows without which the others can be met, the last in the order of words.
std::vector<int> fewest_and_latest(std::vector<row> const & rows, std::size_t n) {
    std::vector<int> best;
    for (unsigned set = 0; set < 1u << rows.size(); ++set) {
        std::vector<int> out;
        std::vector<row> in;
        for (std::size_t i = 0; i < rows.size(); ++i) {
            if (set >> i & 1u) {
                out.push_back(static_cast<int>(i));
            } else {
                in.push_back(rows[i]);
            }
        }
        bool const better = out.size() < best.size() || (out.size() == best.size() && out > best);
        if ((set == 0 || best.empty() || better) && can_be_met(in, n)) {
            if (set == 0) return out;
            best = out;
        }
    }
    return best;
}

TEST(ConstrainedQuadraticMinimiser, GivesUpTheFewestRowsAndOfTheseTheLatest) {
    std::mt19937 generator(5);
    int conflicts = 0;
    for (int trial = 0; trial < 400; ++trial) {
        std::size_t const n = 1 + generator() % 3;
        std::vector<row> rows(2 + generator() % 7, row(n + 1));
        for (row & r : rows) {
            for (double & number : r) number = static_cast<double>(generator() % 5) - 2.0;
            r.back() += 1.0;
        }
        constraints const c(rows, static_cast<int>(n));
        std::vector<int> const expected = fewest_and_latest(rows, n);
        conflicts += expected.size() > 1;
        mlConstrainedQuadraticMinimiser minimiser(c.K, c.d, 1);
        mlVector x(mlVectorZero, static_cast<int>(n));
        EXPECT_EQ(expected.empty(), minimiser.stage1(x)) << trial;
        EXPECT_EQ(expected, list(minimiser.overdetermined_constraints())) << trial;
        EXPECT_GE(1e-12, shortfall(c, x, expected)) << trial;
        mlMatrix const A(mlMatrixIdentity, static_cast<int>(n));
        mlVector const g(mlVectorZero, static_cast<int>(n));
        EXPECT_EQ(expected.empty(), minimiser.stage2(A, g, x));
        minimiser.delete_overdetermined_constraints();
        EXPECT_EQ(1, minimiser.stage2(A, g, x));
        EXPECT_GE(1e-12, shortfall(c, x, expected)) << trial;
        EXPECT_EQ(1, minimiser.stage1(x));
        EXPECT_EQ(expected, list(minimiser.overdetermined_constraints())) << trial;
    }
    EXPECT_LT(100, conflicts);
}

// Bands of 1 about the walls of a cube, and points far outside of theirs.
TEST(ConstrainedQuadraticMinimiser, GivesUpTheStrayPointsAmongMany) {
    std::mt19937 generator(1);
    std::uniform_real_distribution<double> uniform(-0.9, 0.9);
    for (int const strays : {1, 3, 8, 60}) {
        std::vector<row> rows;
        std::vector<int> expected;
        for (int i = 0; i < 500; ++i) {
            double p[3] = {uniform(generator), uniform(generator), uniform(generator)}, u[3] = {0.0, 0.0, 0.0};
            auto const axis = generator() % 3;
            p[axis] = u[axis] = generator() % 2 == 0 ? 1.0 : -1.0;
            double const deviation = uniform(generator) + (i % 7 == 0 && i < 7 * strays ? 6.0 * u[axis] : 0.0);
            row r = {u[0], u[1], u[2], p[1] * u[2] - p[2] * u[1], p[2] * u[0] - p[0] * u[2], p[0] * u[1] - p[1] * u[0],
                     -1.0 - deviation};
            rows.push_back(r);
            for (double & number : r) number = -number;
            r.back() = deviation - 1.0;
            rows.push_back(r);
            if (std::abs(deviation) > 1.0) expected.push_back(2 * i + (deviation > 0.0));
        }
        constraints const c(rows, 6);
        mlConstrainedQuadraticMinimiser minimiser(c.K, c.d, 1);
        mlVector x(mlVectorZero, 6);
        EXPECT_EQ(0, minimiser.stage1(x));
        EXPECT_EQ(expected, list(minimiser.overdetermined_constraints()));
        EXPECT_GE(1e-12, shortfall(c, x, expected));
    }
}

TEST(ConstrainedQuadraticMinimiser, KeepsRowsThatAreNamedOrMetByTheStart) {
    constraints const c({{1.0, 1.0}, {-1.0, 0.0}, {-2.0, 0.0}}, 1); // x >= 1, x <= 0 twice
    mlVector x = point({0.0});
    mlConstrainedQuadraticMinimiser fewest(c.K, c.d, 1), named(c.K, c.d, 1), met(c.K, c.d, 1), all(c.K, c.d, 1);
    fewest.stage1(x);
    EXPECT_EQ((std::vector<int>{0}), list(fewest.overdetermined_constraints()));
    EXPECT_EQ(0.0, x[0]);
    named.keep(0);
    named.stage1(x);
    EXPECT_EQ((std::vector<int>{1, 2}), list(named.overdetermined_constraints()));
    EXPECT_EQ(1.0, x[0]);
    x[0] = 3.0;
    met.stage1(x);
    EXPECT_EQ((std::vector<int>{1, 2}), list(met.overdetermined_constraints()));
    EXPECT_EQ(3.0, x[0]);
    for (int i = 0; i < 3; ++i) all.keep(i);
    all.stage1(x);
    EXPECT_EQ((std::vector<int>{0}), list(all.overdetermined_constraints()));
}

TEST(ConstrainedQuadraticMinimiser, TellsRowsOfNoBoundAndOfNoUseFromOthers) {
    struct {
        row last;
        bool conflict;
    } const cases[] = {{{0.0, 0.0, 0.0}, false},      {{0.0, 0.0, 1e-6}, true},      {{1e-16, 0.0, -1.0}, false},
                       {{1e-16, 0.0, 1.0}, true},     {{1.0, 0.0, -DBL_MAX}, false}, {{1e-3, 0.0, -DBL_MAX}, false},
                       {{1e-3, 0.0, DBL_MAX}, true},  {{-1.0, 0.0, -2.0}, false},    {{-1.0, 1e-14, -2.0 + 1e-14}, false},
                       {{-1.0, 0.0, -2.0 + 1e-9}, true}};
    for (auto const & k : cases) {
        constraints const c({{1.0, 0.0, 2.0}, k.last}, 2);
        for (int const drop : {0, 1}) {
            mlVector x(mlVectorZero, 2);
            mlConstrainedQuadraticMinimiser minimiser(c.K, c.d, drop);
            bool const fails = k.conflict && drop == 0;
            EXPECT_EQ(!fails, minimiser.solve(mlMatrix(mlMatrixIdentity, 2), mlVector(mlVectorZero, 2), x));
            EXPECT_NEAR(fails ? 0.0 : 2.0, x[0], 1e-13) << testing::PrintToString(k.last);
            EXPECT_EQ(k.conflict && drop ? 1 : 0, minimiser.overdetermined_constraints().size());
        }
    }
}

TEST(ConstrainedQuadraticMinimiser, RefusesUnusableData) {
    constraints const c({{1.0, 0.0, 2.0}}, 2);
    constraints const nan({{1.0, std::nan(""), 2.0}}, 2), infinite({{1.0, 0.0, HUGE_VAL}}, 2), none({{2.0}}, 0);
    EXPECT_EQ(1, mlConstrainedQuadraticMinimiser::are_valid(c.K, c.d));
    EXPECT_EQ(1, mlConstrainedQuadraticMinimiser::are_valid(mlMatrix(0, 2), mlVector()));
    EXPECT_EQ(0, mlConstrainedQuadraticMinimiser::are_valid(c.K, mlVector(mlVectorZero, 2)));
    for (constraints const & bad : {nan, infinite, none}) {
        EXPECT_EQ(0, mlConstrainedQuadraticMinimiser::are_valid(bad.K, bad.d));
        mlVector x(mlVectorZero, bad.K.cols());
        EXPECT_EQ(0, mlConstrainedQuadraticMinimiser(bad.K, bad.d, 1).stage1(x));
    }
    mlVector x = point({0.0, 0.0}), short_x = point({0.0});
    mlConstrainedQuadraticMinimiser minimiser(c.K, c.d, 1);
    EXPECT_EQ(0, minimiser.stage1(short_x));
    EXPECT_EQ(0, minimiser.stage2(mlMatrix(mlMatrixIdentity, 3), x, x));
    EXPECT_EQ(0, minimiser.stage2(nan.K, x, x));
    EXPECT_EQ((std::vector<double>{0.0, 0.0}), list(x));
}

TEST(ConstrainedQuadraticMinimiser, CountsIndicesAmongTheConstraintsNotYetGivenUp) {
    struct {
        intcoDynArr list, indices;
        std::vector<int> merged;
    } const cases[] = {{{}, {2, 5}, {2, 5}},
                       {{0, 1, 4}, {}, {0, 1, 4}},
                       {{0, 1, 4}, {0, 1, 2}, {0, 1, 2, 3, 4, 5}},
                       {{3}, {2, 3, 9}, {2, 3, 4, 10}},
                       {{1, 2}, {4, 0, 4}, {0, 1, 2, 6}}};
    for (auto const & c : cases) {
        intcoDynArr merged = c.list;
        mlConstrainedQuadraticMinimiser::append_constraint_indices(merged, c.indices);
        EXPECT_EQ(c.merged, list(merged));
    }
}

} // namespace
