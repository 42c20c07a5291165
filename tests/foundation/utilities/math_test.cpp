#include <datumfit/foundation/utilities/math.h>
#include <gtest/gtest.h>

#include <climits>

namespace {

double const nan = std::numeric_limits<double>::quiet_NaN();

TEST(Math, ExtremesGiveTheSecondUnlessTheFirstIsStrictlyBeyond) {
    EXPECT_TRUE(std::signbit(utMath::min(0.0, -0.0)) && std::signbit(utMath::max(0.0, -0.0)));
    EXPECT_TRUE(std::isnan(utMath::min(1.0, nan)) && std::isnan(utMath::max(1.0, nan)));
    EXPECT_EQ(1.0, utMath::min(nan, 1.0));
    EXPECT_EQ(1.0, utMath::max(nan, 1.0));
}

TEST(Math, RoundsToIntsOnEitherSide) {
    struct {
        double x;
        int floor, ceiling, sign;
    } const cases[] = {{1.5, 1, 2, 1},
                       {-1.5, -2, -1, -1},
                       {-3.0, -3, -3, -1},
                       {-0.0, 0, 0, 0},
                       {nan, 0, 0, 0},
                       {2147483647.5, INT_MAX, INT_MAX, 1},
                       {1e300, INT_MAX, INT_MAX, 1},
                       {-2147483648.5, INT_MIN, INT_MIN, -1}};
    for (auto const & c : cases) {
        EXPECT_EQ(c.floor, utMath::floor(c.x)) << c.x;
        EXPECT_EQ(c.ceiling, utMath::ceiling(c.x)) << c.x;
        EXPECT_EQ(c.sign, utMath::sign(c.x)) << c.x;
    }
}

TEST(Math, RemaindersLieFromZeroToBelowTheDivisor) {
    double const cases[][3] = {{4.0, 3.0, 1.0},  {-4.0, 3.0, 2.0},    {4.0, -3.0, -2.0},          {-4.0, -3.0, -1.0},
                               {-6.0, 3.0, 0.0}, {-1e-300, 3.0, 0.0}, {1e-200, -2e-200, -1e-200}, {5.0, 0.0, 5.0}};
    for (auto const & c : cases) {
        double const r = utMath::remd(c[0], c[1]);
        EXPECT_EQ(c[2], r) << c[0] << " by " << c[1];
        EXPECT_FALSE(r == 0.0 && std::signbit(r));
    }
}

}  // namespace
