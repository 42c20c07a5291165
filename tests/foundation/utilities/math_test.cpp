#include <datumfit/foundation/utilities/math.h>

#include <gtest/gtest.h>

#include <climits>

namespace {

double const nan = std::numeric_limits<double>::quiet_NaN();
double const infinity = std::numeric_limits<double>::infinity();

TEST(Math, ExtremesGiveTheSecondUnlessTheFirstIsStrictlyBeyond) {
    EXPECT_EQ(1.0, utMath::min(1.0, 2.0));
    EXPECT_EQ(2.0, utMath::max(1.0, 2.0));
    EXPECT_TRUE(std::signbit(utMath::min(0.0, -0.0)) && std::signbit(utMath::max(0.0, -0.0)));
    EXPECT_TRUE(std::isnan(utMath::min(1.0, nan)) && std::isnan(utMath::max(1.0, nan)));
    EXPECT_EQ(1.0, utMath::min(nan, 1.0));
    EXPECT_EQ(1.0, utMath::max(nan, 1.0));
}

TEST(Math, RoundsToIntsOnEitherSide) {
    struct Case {
        double x;
        int floor, ceiling, sign;
    };
    for (Case const & c : {Case{1.5, 1, 2, 1}, Case{-1.5, -2, -1, -1}, Case{3.0, 3, 3, 1}, Case{-3.0, -3, -3, -1},
                           Case{-0.0, 0, 0, 0}, Case{5e-324, 0, 1, 1}, Case{nan, 0, 0, 0},
                           Case{2147483646.5, INT_MAX - 1, INT_MAX, 1}, Case{2147483647.5, INT_MAX, INT_MAX, 1},
                           Case{-2147483648.5, INT_MIN, INT_MIN, -1}, Case{-2147483647.5, INT_MIN, INT_MIN + 1, -1},
                           Case{1e300, INT_MAX, INT_MAX, 1}, Case{-infinity, INT_MIN, INT_MIN, -1}}) {
        EXPECT_EQ(c.floor, utMath::floor(c.x)) << c.x;
        EXPECT_EQ(c.ceiling, utMath::ceiling(c.x)) << c.x;
        EXPECT_EQ(c.sign, utMath::sign(c.x)) << c.x;
    }
}

TEST(Math, RemaindersLieFromZeroToBelowTheDivisor) {
    struct Case {
        double a, b, remainder;
    };
    for (Case const & c : {Case{4.0, 3.0, 1.0}, Case{-4.0, 3.0, 2.0}, Case{4.0, -3.0, -2.0}, Case{-4.0, -3.0, -1.0},
                           Case{-6.0, 3.0, 0.0}, Case{-1e-300, 3.0, 0.0}, Case{1e-200, -2e-200, -1e-200},
                           Case{5.0, 0.0, 5.0}}) {
        double const r = utMath::remd(c.a, c.b);
        EXPECT_EQ(c.remainder, r) << c.a << " by " << c.b;
        EXPECT_FALSE(r == 0.0 && std::signbit(r));
    }
    EXPECT_EQ(0.0, utMath::remd(-utMath::pi(), utMath::pi()));
}

} // namespace
