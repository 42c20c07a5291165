#include <datumfit/foundation/geometry/length.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

namespace {

double stored(giLength const & length) {
    double l;
    std::memcpy(&l, &length, sizeof l);
    return l;
}

giLength root_of(double square) {
    return giLength().become(giLengthSquared, square);
}

TEST(Length, ComparesByItsRulesAndTakesNoRoot) {
    double const nan = std::numeric_limits<double>::quiet_NaN();
    giLength const unset;
    struct {
        giLength a;
        double d;
        bool less, at_most, greater, at_least;
    } const cases[] = {
        {root_of(9.0), 3.0, false, true, false, true}, {root_of(9.0), 2.9, false, false, true, true},
        {root_of(9.0), 3.1, true, true, false, false}, {root_of(9.0), -4.0, false, false, true, true},
        {3.0, 3.0, false, true, false, true},          {3.0, 2.9, false, false, true, true},
        {3.0, 3.1, true, true, false, false},          {0.0, -1e-300, false, false, true, true},
        {root_of(0.0), 0.0, false, true, false, true}, {3.0, nan, false, true, false, true},
        {unset, 3.0, true, false, true, false},        {unset, -1.0, true, false, true, false},
    };
    for (auto const & c : cases) {
        SCOPED_TRACE(testing::Message() << stored(c.a) << " and " << c.d);
        double const before = stored(c.a);
        EXPECT_TRUE(c.less == (c.a < c.d) && c.at_most == (c.a <= c.d));
        EXPECT_TRUE(c.greater == (c.a > c.d) && c.at_least == (c.a >= c.d) && c.at_least == (c.d <= c.a));
        EXPECT_EQ(before, stored(c.a));
        if (!(c.d >= 0.0)) continue;  // no length
        for (giLength const & b : {giLength(c.d), root_of(c.d * c.d)}) {
            EXPECT_TRUE(c.at_most == (c.a <= b) && c.greater == (c.a > b));
        }
    }
    EXPECT_TRUE(root_of(9.0) <= 3 && 3 <= root_of(9.0) && giLength(3.0) > unset && !(giLength(3.0) <= unset));
}

TEST(Length, KeepsTheRootThatWasReadAndReadsNothingAsPlusZero) {
    giLength const nine = root_of(9.0), null = root_of(0.0);
    EXPECT_EQ(-9.0, stored(nine));
    EXPECT_TRUE(nine.squared() == 9.0 && nine.value() == 3.0 && stored(nine) == 3.0 && nine.squared() == 9.0);
    EXPECT_TRUE(std::signbit(stored(null)) && !std::signbit(null.value()) && !std::signbit(null.l_validate()));
}

TEST(Length, IsScaledAndTestedInEitherForm) {
    for (giLength length : {root_of(9.0), giLength(3.0)}) {
        EXPECT_TRUE(length.is_zero(3.0) && !length.is_zero(2.9));
        EXPECT_EQ(6.0, (2.0 * length).value());
        length *= 0.5;
        EXPECT_EQ(1.5, length.value());
    }
    giLength unset;
    unset *= 0.5;
    EXPECT_TRUE(unset.invalid() && (2 * unset).invalid() && !unset.is_zero(1e308));
}

}  // namespace
