#include <datumfit/foundation/maths/brent_minimum_search.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <utility>

namespace {

// Records how often and where it is evaluated, and the lowest value.
struct recorded : mlFunction {
    explicit recorded(std::function<double(double)> f) : formula(std::move(f)) {}
    double function(double t) const override {
        ++calls;
        first = std::min(first, t);
        last = std::max(last, t);
        double const value = formula(t);
        lowest = std::isnan(value) ? lowest : std::min(lowest, value);
        return value;
    }
    double t_min() const override { return -1e300; }
    double t_max() const override { return 1e300; }

    std::function<double(double)> formula;
    mutable int calls = 0;
    mutable double first = 1e300, last = -1e300, lowest = std::numeric_limits<double>::infinity();
};

double cusp(double t) {
    return std::sqrt(std::fabs(t - 0.3));
}
double parabola(double t) {
    return (t - 0.7) * (t - 0.7);
}
double rising(double t) {
    return t;
}
double flat(double) {
    return 4.0;
}
double half_undefined(double t) {
    return t < 0.5 ? std::numeric_limits<double>::quiet_NaN() : parabola(t);
}
double undefined(double) {
    return std::numeric_limits<double>::quiet_NaN();
}

TEST(BrentMinimumSearch, StaysInItsBracketAndGivesTheBestOfIt) {
    for (auto const & f : {cusp, parabola, rising, flat, half_undefined, undefined}) {
        for (double const middle : {0.03125, 0.5, 0.0, 1.0, 2.0}) {
            for (int const most : {0, 1, 5, 200}) {
                for (bool const reversed : {false, true}) {
                    recorded r(f);
                    double x = -1.0;
                    double const value = ml_brent_minimum_search(r, reversed, middle, !reversed, 1e-5, most, &x);
                    EXPECT_GE(r.first, 0.0);
                    EXPECT_LE(r.last, 1.0);
                    EXPECT_LE(r.calls, most + 1);
                    EXPECT_EQ(r.lowest, value);
                    double const at_x = r.function(x);
                    EXPECT_TRUE(at_x == value || (std::isnan(at_x) && std::isinf(value)));
                }
            }
        }
    }
}

TEST(BrentMinimumSearch, FindsTheMinimumToTheTolerance) {
    double x = 0.0;
    recorded smooth([](double t) { return std::cosh(t - 1000.25); });
    ml_brent_minimum_search(smooth, 1010.0, 1001.0, 990.0, 1e-8, 100, &x);
    EXPECT_NEAR(1000.25, x, 3e-5);
    EXPECT_LT(smooth.calls, 15);

    // Parabolas reach a minimum without curvature in few steps; sections alone take 50.
    recorded flat_bottom([](double t) { return std::pow(t - 1000.25, 8.0); });
    ml_brent_minimum_search(flat_bottom, 990.0, 1001.0, 1010.0, 1e-13, 100, &x);
    EXPECT_NEAR(1000.25, x, 1e-9);
    EXPECT_LT(flat_bottom.calls, 30);

    recorded kinked([](double t) { return std::fabs(t - 0.3); });
    ml_brent_minimum_search(kinked, 0.0, 0.9, 1.0, 1e-12, 200, &x);
    EXPECT_NEAR(0.3, x, 1e-12);

    // A parabola takes three sections before its vertex can be told.
    recorded five(parabola);
    ml_brent_minimum_search(five, 0.0, 0.0625, 1.0, 1e-5, 5, &x);
    EXPECT_NEAR(0.7, x, 1e-5);
}

TEST(BrentMinimumSearch, EndsOnABracketWithoutLength) {
    recorded r(parabola);
    double x = 0.0;
    EXPECT_EQ(parabola(2.0), ml_brent_minimum_search(r, 2.0, 2.0, 2.0, 1e-5, 50, &x));
    EXPECT_EQ(2.0, x);
    EXPECT_EQ(1, r.calls);
}

}  // namespace
