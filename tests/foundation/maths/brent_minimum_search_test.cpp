#include <datumfit/foundation/maths/brent_minimum_search.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// Records how often and where it is evaluated, and the lowest value.
struct recorded : mlFunction {
    explicit recorded(double (*f)(double)) : formula(f) {}
    double function(double t) const override {
        ++calls;
        first = std::min(first, t);
        last = std::max(last, t);
        double const value = formula(t);
        lowest = std::isnan(value) ? lowest : std::min(lowest, value);
        return value;
    }
    double t_min() const override { return 0.0; }
    double t_max() const override { return 1.0; }

    double (*formula)(double);
    mutable int calls = 0;
    mutable double first = 1e300, last = -1e300, lowest = std::numeric_limits<double>::infinity();
};

TEST(BrentMinimumSearch, StaysInItsBracketAndGivesTheBestOfIt) {
    double (*const formulas[])(double) = {[](double t) { return t < 0.5 ? std::nan("") : (t - 0.7) * (t - 0.7); },
                                          [](double t) { return std::sqrt(std::fabs(t - 0.3)); },
                                          [](double t) { return t; }, [](double) { return 4.0; }};
    for (auto const f : formulas) {
        for (int i = 0; i < 40; ++i) {
            double const start = i / 8 * 0.25, reversed = i % 2;
            int const most = i % 8 / 2 * 20;
            recorded r(f);
            double x = -1.0;
            double const value = ml_brent_minimum_search(r, reversed, start, 1.0 - reversed, 1e-5, most, &x);
            EXPECT_GE(r.first, 0.0);
            EXPECT_LE(r.last, 1.0);
            EXPECT_LE(r.calls, most + 1);
            EXPECT_EQ(r.lowest, value);
            EXPECT_TRUE(std::isinf(value) || r.formula(x) == value);
        }
    }
}

TEST(BrentMinimumSearch, FindsTheMinimumInFewSteps) {
    struct {
        double (*f)(double);
        double tolerance, error;
        int most;
    } const cases[] = {{[](double t) { return std::cosh(t - 1000.25); }, 1e-8, 3e-5, 15},
                       {[](double t) { return std::fabs(t - 1000.25); }, 1e-13, 1e-9, 60},
                       // Parabolas reach a minimum without curvature soon too; sections alone take 50.
                       {[](double t) { return std::pow(t - 1000.25, 8.0); }, 1e-13, 1e-9, 30}};
    for (auto const & c : cases) {
        recorded r(c.f);
        double x = 0.0;
        ml_brent_minimum_search(r, 1010.0, 1001.0, 990.0, c.tolerance, 100, &x);
        EXPECT_NEAR(1000.25, x, c.error);
        EXPECT_LT(r.calls, c.most);
    }
    recorded square([](double t) { return t * t; });
    double x = 0.0;
    EXPECT_EQ(4.0, ml_brent_minimum_search(square, 2.0, 2.0, 2.0, 1e-5, 50, &x));
    EXPECT_EQ(2.0, x);
}

}  // namespace
