#include "support/vectors.h"

#include <datumfit/foundation/maths/constrained_quadratic_minimiser.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <random>
#include <vector>

namespace {

using row = std::vector<double>;  // the numbers of a row of K, and its d

struct constraints {
    constraints(std::vector<row> const & rows, int n) : K(static_cast<int>(rows.size()), n) {
        for (row const & r : rows) {
            std::copy_n(r.data(), n, K.row_data(d.dimension()));
            d.append(r.back());
        }
    }
    mlMatrix K;
    mlVector d;
};

template <class A>
auto list(A const & a) {
    return std::vector<std::decay_t<decltype(a.read(0))>>(a.data(), a.data() + a.size());
}

double length(mlVector const & v) {
    return std::sqrt(scalar_product(v, v));
}

// How far K x falls short of d in any row but those given up, as a share of |row| |x|, or near 0 of |row| / 1000: the
// problems here are of size 1.
double shortfall(constraints const & c, mlVector const & x, std::vector<int> const & given_up = {}) {
    double worst = 0.0;
    for (int i = 0; i < c.d.dimension(); ++i) {
        if (std::binary_search(given_up.begin(), given_up.end(), i)) continue;
        mlVector const k(utConvert, c.K.row_data(i), c.K.cols());
        worst = std::max(worst, (c.d[i] - scalar_product(k, x)) / (length(k) * std::max(length(x), 1e-3)));
    }
    return worst;
}

// A problem of known minimum x: the gradient there is a sum of rows through x by positive multipliers. Rows repeat or
// oppose others, and have lengths from 1e-6 to 1e6.
struct problem {
    problem(unsigned seed, int n, int rows, int rank, double share_through)
        : generator(seed), through(share_through), x(mlVectorZero, n), A(mlMatrixZero, n, n), g(mlVectorZero, n) {
        if (through < 1.0) x = some_vector();
        for (int r = 0; r < rank; ++r) {
            mlVector const v = some_vector();
            for (int i = 0; i < n; ++i) {
                for (int j = 0; j < n; ++j) A(i, j) += v[i] * v[j] + (i == j && rank == n ? 0.1 : 0.0);
            }
        }
        mlVector const slope(mlMatrixProduct, A, x);
        for (int j = 0; j < n; ++j) g[j] -= slope[j];
        std::vector<row> made;
        for (int i = 0; i < rows; ++i) made.push_back(some_row(made));
        data = constraints(made, n);
    }
    mlVector some_vector() {
        mlVector v(mlVectorDim, g.dimension());
        for (int j = 0; j < v.dimension(); ++j) v[j] = normal(generator);
        return v;
    }
    row some_row(std::vector<row> const & others) {
        double const kind = uniform(generator), scale = std::pow(10.0, 12.0 * uniform(generator) - 6.0);
        mlVector k = some_vector();
        if (kind < 0.2 && !others.empty()) std::copy_n(others[generator() % others.size()].data(), k.size(), k.data());
        k *= (kind < 0.1 ? -1.0 : 1.0) / length(k);
        bool const passes = uniform(generator) < through;
        double const multiplier = passes && kind < 0.6 ? kind : 0.0;
        for (int j = 0; j < g.dimension(); ++j) g[j] += multiplier * k[j];
        k *= scale;
        row made = list(k);
        made.push_back(scalar_product(k, x) - (passes ? 0.0 : scale * uniform(generator)));
        return made;
    }
    double value(mlVector const & at) const {
        return 0.5 * scalar_product(at, mlVector(mlMatrixProduct, A, at)) + scalar_product(g, at);
    }
    std::mt19937 generator;
    std::normal_distribution<double> normal;
    std::uniform_real_distribution<double> uniform;
    double through;
    mlVector x;
    mlMatrix A;
    mlVector g;
    constraints data{{}, 0};
};

// Few rows pass through the minimum; half of them do, up to a vertex of a thousand rows; all do, and it lies at 0.
class RandomProblems : public testing::TestWithParam<double> {};

TEST_P(RandomProblems, HaveTheMinimumThatTheyWereMadeFor) {
    for (unsigned k = 0; k <= 600; ++k) {
        unsigned const seed = k < 600 ? k : 19758;  // where rounding takes a row in and lets it go in turn
        SCOPED_TRACE(seed);
        int const n = 1 + static_cast<int>(seed % 12), rows = seed % 50 == 0 ? 2000 : static_cast<int>(seed % 70);
        // A is definite, or of a lower rank: down to a linear program.
        bool const definite = seed % 3 != 0;
        problem const p(seed, n, rows, definite ? n : static_cast<int>(seed / 12) % n, GetParam());
        mlConstrainedQuadraticMinimiser minimiser(p.data.K, p.data.d, 1);
        mlVector found(mlVectorZero, n);
        ASSERT_EQ(1, minimiser.solve(p.A, p.g, found));
        EXPECT_EQ(0, minimiser.overdetermined_constraints().size());
        EXPECT_GE(1e-13, shortfall(p.data, found));
        EXPECT_NEAR(p.value(p.x), p.value(found), 1e-11 * (1.0 + length(p.g)));        // the worst seen is 1.2e-12
        for (int j = 0; j < n && definite; ++j) EXPECT_NEAR(p.x[j], found[j], 1e-12);  // and here 2.1e-14
    }
}
INSTANTIATE_TEST_SUITE_P(RowsThroughTheMinimum, RandomProblems, testing::Values(0.05, 0.5, 1.0));

TEST(ConstrainedQuadraticMinimiser, FindsTheNearestFeasiblePointAndLeavesAFeasibleOne) {
    for (unsigned seed = 0; seed < 100; ++seed) {
        problem p(seed, 1 + static_cast<int>(seed % 12), 200, 0, 0.05);
        mlConstrainedQuadraticMinimiser minimiser(p.data.K, p.data.d, 0);
        mlVector x = p.some_vector(), slope = x, nearest(mlVectorZero, x.dimension());
        slope *= -1.0;
        ASSERT_EQ(1, minimiser.stage1(x));
        ASSERT_EQ(1, minimiser.solve(mlMatrix(mlMatrixIdentity, x.dimension()), slope, nearest));
        for (int j = 0; j < x.dimension(); ++j) EXPECT_NEAR(nearest[j], x[j], 1e-12);
        std::vector<double> const found = list(x);
        EXPECT_EQ(1, minimiser.stage1(x));
        EXPECT_EQ(found, list(x));
    }
}

TEST(ConstrainedQuadraticMinimiser, MovesAlongIdleDirectionsOnlyAsFarAsRowsAsk) {
    mlMatrix A(mlMatrixZero, 3, 3);
    A(0, 0) = 4.0;
    for (double const bound : {-1.0, 2.0}) {
        constraints const c({{0.0, 1.0, 1.0, bound}}, 3);
        mlVector x(mlVectorZero, 3);
        ASSERT_EQ(1, mlConstrainedQuadraticMinimiser(c.K, c.d, 1).solve(A, vector_of({-8.0, 0.0, 1e-16}), x));
        for (int j = 0; j < 3; ++j) EXPECT_NEAR(j == 0 ? 2.0 : std::max(0.5 * bound, 0.0), x[j], 1e-12);
    }
    // Nothing stops the slope along an idle direction.
    mlVector x(mlVectorZero, 3);
    EXPECT_EQ(0, mlConstrainedQuadraticMinimiser(mlMatrix(), mlVector(), 1).solve(A, vector_of({-8.0, 1.0, 0.0}), x));
    EXPECT_EQ(0.0, length(x));
}

// Eliminates one unknown after the other (Fourier and Motzkin): exact for small whole numbers.
bool can_be_met(std::vector<row> rows, std::size_t n) {
    for (std::size_t j = 0; j < n; ++j) {
        std::vector<row> rest;
        for (row const & a : rows) {
            if (a[j] == 0.0) rest.push_back(a);
            for (row const & b : rows) {
                if (a[j] <= 0.0 || b[j] >= 0.0) continue;
                rest.push_back(a);
                for (std::size_t i = 0; i <= n; ++i) rest.back()[i] = b[i] * a[j] - a[i] * b[j];
            }
        }
        rows = rest;
    }
    return std::none_of(rows.begin(), rows.end(), [n](row const & r) { return r[n] > 0.0; });
}

// Of all smallest sets of rows without which the others can be met, the last in the order of words.
std::vector<int> fewest_and_latest(std::vector<row> const & rows, std::size_t n) {
    std::vector<int> best(rows.size());
    for (unsigned set = 0; set < 1u << rows.size(); ++set) {
        std::vector<int> out;
        std::vector<row> in;
        for (unsigned i = 0; i < rows.size(); ++i) {
            if (set >> i & 1u) out.push_back(static_cast<int>(i));
            if (!(set >> i & 1u)) in.push_back(rows[i]);
        }
        bool const better = out.size() < best.size() || (out.size() == best.size() && out > best);
        if (better && can_be_met(in, n)) best = out;
    }
    return best;
}

TEST(ConstrainedQuadraticMinimiser, GivesUpTheFewestRowsAndOfTheseTheLatest) {
    std::mt19937 generator(5);
    int conflicts = 0;
    for (int trial = 0; trial < 400; ++trial) {
        SCOPED_TRACE(trial);
        std::size_t const n = 1 + generator() % 3;
        std::vector<row> rows(2 + generator() % 7, row(n + 1));
        for (row & r : rows) {
            for (double & number : r) number = static_cast<double>(generator() % 5) - 2.0;
            r.back() += 1.0;
        }
        std::vector<int> const expected = fewest_and_latest(rows, n);
        conflicts += expected.size() > 1;
        constraints const c(rows, static_cast<int>(n));
        mlConstrainedQuadraticMinimiser minimiser(c.K, c.d, 1);
        mlVector x(mlVectorZero, c.K.cols());
        mlVector const g = x;
        mlMatrix const A(mlMatrixIdentity, c.K.cols());
        EXPECT_EQ(expected.empty(), minimiser.stage1(x));
        EXPECT_EQ(expected, list(minimiser.overdetermined_constraints()));
        EXPECT_GE(1e-13, shortfall(c, x, expected));
        EXPECT_EQ(expected.empty(), minimiser.stage2(A, g, x));
        minimiser.delete_overdetermined_constraints();
        EXPECT_EQ(1, minimiser.stage2(A, g, x));
        EXPECT_GE(1e-13, shortfall(c, x, expected));
    }
    EXPECT_LT(100, conflicts);
}

TEST(ConstrainedQuadraticMinimiser, GivesUpTheStrayRowsAmongMany) {
    problem p(1, 6, 0, 0, 0.0);
    std::vector<row> rows;
    std::vector<int> const expected = {0, 7, 14, 21, 28};
    for (int i = 0; i < 1000; ++i) {
        rows.push_back(list(p.some_vector()));
        rows.back().push_back(i % 7 == 0 && i < 35 ? 60.0 : -0.1);
    }
    constraints const c(rows, 6);
    mlConstrainedQuadraticMinimiser minimiser(c.K, c.d, 1);
    mlVector x(mlVectorZero, 6);
    EXPECT_EQ(0, minimiser.stage1(x));
    EXPECT_EQ(expected, list(minimiser.overdetermined_constraints()));
    EXPECT_GE(1e-13, shortfall(c, x, expected));
}

// More conflicts than the search for the fewest rows takes on: then none is given up in vain.
TEST(ConstrainedQuadraticMinimiser, GivesUpOneOfTwoHostileHalves) {
    std::vector<row> rows;
    std::vector<int> even, odd;
    for (int i = 0; i < 400; ++i) {
        (i % 2 ? odd : even).push_back(i);
        rows.push_back(i % 2 ? row{1.0, 1.0 + i} : row{-1.0, 0.0 + i});
    }
    constraints const c(rows, 1);
    mlConstrainedQuadraticMinimiser minimiser(c.K, c.d, 1);
    mlVector x(mlVectorZero, 1);
    EXPECT_EQ(0, minimiser.stage1(x));
    EXPECT_EQ(x[0] > 0.0 ? even : odd, list(minimiser.overdetermined_constraints()));
}

TEST(ConstrainedQuadraticMinimiser, KeepsRowsThatAreNamedOrMetByTheStart) {
    constraints const c({{1.0, 1.0}, {-1.0, 0.0}, {-2.0, 0.0}}, 1);  // x >= 1, and twice x <= 0
    struct {
        double start;
        std::vector<int> kept, given_up;
        double end;
    } const cases[] = {{0.0, {}, {0}, 0.0},
                       {0.0, {0}, {1, 2}, 1.0},
                       {0.0, {0, 1, 2}, {0}, 0.0},
                       {3.0, {}, {1, 2}, 3.0},
                       {3.0, {1}, {0}, 0.0}};
    for (auto const & k : cases) {
        mlConstrainedQuadraticMinimiser minimiser(c.K, c.d, 1);
        mlVector x = vector_of({k.start});
        for (int const i : k.kept) minimiser.keep(i);
        EXPECT_EQ(0, minimiser.stage1(x));
        EXPECT_EQ(k.given_up, list(minimiser.overdetermined_constraints()));
        EXPECT_EQ(k.end, x[0]);
    }
}

TEST(ConstrainedQuadraticMinimiser, TellsConflictsFromRoundingAndFromRowsWithoutABound) {
    struct {
        row last;  // beside x0 >= 2
        bool conflict;
    } const cases[] = {
        {{0.0, 0.0, 0.0}, false},         {{0.0, 0.0, 1e-6}, true},      {{1e-16, 0.0, -1.0}, false},
        {{1e-16, 0.0, 1.0}, true},        {{1.0, 0.0, -DBL_MAX}, false}, {{-1.0, 1e-4, -1.0}, false},
        {{1.0, 0.0, 1e200}, true},        {{-1.0, 0.0, -2.0}, false},    {{-1.0, 1e-14, -2.0 + 5e-13}, false},
        {{-1.0, 0.0, -2.0 + 1e-9}, true}, {{-1.0, 1e-13, -1.0}, true},   {{1e-3, 0.0, DBL_MAX}, true}};
    for (auto const & k : cases) {
        constraints const c({{1.0, 0.0, 2.0}, k.last}, 2);
        for (int const drop : {0, 1}) {
            SCOPED_TRACE(testing::PrintToString(k.last));
            mlVector x(mlVectorZero, 2);
            mlConstrainedQuadraticMinimiser minimiser(c.K, c.d, drop);
            bool const fails = k.conflict && drop == 0;
            EXPECT_EQ(!fails, minimiser.solve(mlMatrix(mlMatrixIdentity, 2), mlVector(mlVectorZero, 2), x));
            EXPECT_NEAR(fails ? 0.0 : 2.0, x[0], 1e-12);
            EXPECT_EQ(k.conflict && drop ? 1 : 0, minimiser.overdetermined_constraints().size());
        }
    }
}

TEST(ConstrainedQuadraticMinimiser, RefusesUnusableData) {
    constraints const good({{1.0, 0.0, 2.0}}, 2), none({}, 2);
    EXPECT_EQ(1, mlConstrainedQuadraticMinimiser::are_valid(good.K, good.d));
    EXPECT_EQ(1, mlConstrainedQuadraticMinimiser::are_valid(none.K, none.d));
    EXPECT_EQ(0, mlConstrainedQuadraticMinimiser::are_valid(good.K, none.d));
    mlVector x = vector_of({0.0, 0.0}), shorter = vector_of({0.0});
    for (constraints const & bad : {constraints({{1.0, NAN, 2.0}}, 2), constraints({{1.0, 0.0, HUGE_VAL}}, 2),
                                    constraints({{1e200, 0.0, 2.0}}, 2), constraints({{2.0}}, 0)}) {
        EXPECT_EQ(0, mlConstrainedQuadraticMinimiser::are_valid(bad.K, bad.d));
        EXPECT_EQ(0, mlConstrainedQuadraticMinimiser(bad.K, bad.d, 1).stage1(x));
    }
    mlConstrainedQuadraticMinimiser minimiser(good.K, good.d, 1);
    EXPECT_EQ(0, minimiser.stage1(shorter));
    EXPECT_EQ(0, minimiser.stage2(mlMatrix(mlMatrixIdentity, 3), x, x));
    EXPECT_EQ(0, minimiser.solve(mlMatrix(mlMatrixIdentity, 2), vector_of({NAN, 0.0}), x));
    EXPECT_EQ(0.0, length(x));
}

TEST(ConstrainedQuadraticMinimiser, CountsIndicesAmongTheConstraintsNotYetGivenUp) {
    struct {
        intcoDynArr list, indices;
        std::vector<int> merged;
    } const cases[] = {{{}, {2, 5}, {2, 5}}, {{3}, {2, 3, 9}, {2, 3, 4, 10}}, {{1, 2}, {4, 0, 4}, {0, 1, 2, 6}}};
    for (auto const & c : cases) {
        intcoDynArr merged = c.list;
        mlConstrainedQuadraticMinimiser::append_constraint_indices(merged, c.indices);
        EXPECT_EQ(c.merged, list(merged));
    }
}

}  // namespace
