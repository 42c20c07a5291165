#include <datumfit/foundation/geometry/angle.h>
#include <datumfit/foundation/geometry/vector2.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>

namespace {

constexpr double epsilon = std::numeric_limits<double>::epsilon();

giAngle degrees(double d) {
    return giAngle(giAngleDegrees, d);
}
double in_degrees(giAngle const & angle) {
    return angle.angle(giAngleDegrees);
}

TEST(Angle, IsExactAtRoundDegrees) {
    double const sines[] = {0.0, 0.5, std::sqrt(0.5), std::sqrt(0.75)}, cosines[] = {1.0, sines[3], sines[2], 0.5};
    double const values[] = {0.0, 30.0, 45.0, 60.0};
    for (int i = 0; i < 4; ++i) {
        double s = sines[i], c = cosines[i];
        for (double d = values[i] - 720.0; d < 720.0; d += 90.0) {
            EXPECT_TRUE(s == degrees(d).sin() && c == degrees(d).cos()) << d;
            EXPECT_EQ(0.0, std::remainder(in_degrees(degrees(d)) - d, 360.0));
            s = std::exchange(c, -s);  // a quarter turn further
        }
    }
}

TEST(Angle, GivesItsValueBack) {
    for (double d = -179.3; d < 180.0; d += 7.7) {
        double const r = d * std::acos(-1.0) / 180.0;
        EXPECT_NEAR(d, in_degrees(degrees(d)), 180.0 * epsilon);
        EXPECT_NEAR(r, giAngle(giAngleRadians, r).angle(giAngleRadians), 4.0 * epsilon);
        EXPECT_NEAR(std::abs(d), in_degrees(giAngle(giAngleCosine, std::cos(r))), 1e-12);
    }
    EXPECT_EQ(180.0, in_degrees(giAngle(giAngleCosine, -1.0 - epsilon)));
    EXPECT_EQ(-1.0, giAngle(giAngleRadians, -1e-200).angle(giAngleRadians) * 1e200);
}

TEST(Angle, OfTwoSidesNeedsNoScale) {
    for (double const scale : {1e-200, 1e300}) {
        EXPECT_NEAR(-0.6, giAngle(giAngleTangent2, -3.0 * scale, 4.0 * scale).sin(), 2.0 * epsilon);
    }
    EXPECT_EQ(0.0, in_degrees(giAngle(giAngleTangent2, 0.0, 0.0)));
    EXPECT_TRUE(in_degrees(giAngle(giAngleTangent2, -0.0, -1.0)) == 180.0 && in_degrees(degrees(-180.0)) == 180.0);
}

TEST(Angle, HasATangentButAtRightAngles) {
    giAngleStatus status = giAngleUndefined;
    EXPECT_TRUE(degrees(135.0).tan(status) == -1.0 && status == giAngleDefined);
    EXPECT_TRUE(degrees(-90.0).tan(status) == 0.0 && status == giAngleUndefined);
}

TEST(Angle, ComparesByValueAndCoincidesAcrossTheSeam) {
    EXPECT_TRUE(degrees(-179.0) < degrees(-1.0) && degrees(1.0) < degrees(179.0) && degrees(180.0) > degrees(0.0));
    EXPECT_TRUE(giAngle(giAngleRadians, 1e-12) < giAngle(giAngleRadians, 2e-12));  // equal cosines
    giAngle const tolerance = degrees(2.5);
    EXPECT_TRUE(degrees(179.0).coincident(degrees(-179.0), tolerance) && degrees(-1).coincident(degrees(1), tolerance));
    EXPECT_FALSE(degrees(178.0).coincident(degrees(-179.0), tolerance) ||
                 degrees(1).coincident(degrees(-179), tolerance));
    EXPECT_TRUE(tolerance.coincident(tolerance, giAngle()) && !tolerance.coincident(tolerance, degrees(-1.0)));
}

TEST(Angle, BetweenDirectionsKeepsItsDigits) {
    giUnitVec3 const z(giAxisZ);
    for (double const r : {0.0, 1e-15, 1e-9, 1.5, 3.0}) {
        giUnitVec3 const turned(std::sin(r) * 0.6, std::sin(r) * -0.8, std::cos(r));
        EXPECT_NEAR(r, unsigned_angle(z, turned).angle(giAngleRadians), 4.0 * epsilon * r);
    }
    giVector2 const x(2.0, 0.0);
    EXPECT_EQ(90.0, in_degrees(x.signed_angle(giVector2(0.0, 3.0))));  // counterclockwise
    EXPECT_EQ(-45.0, in_degrees(x.signed_angle(giVector2(3.0, -3.0))));
    EXPECT_EQ(180.0, in_degrees(x.signed_angle(-x)));
}

}  // namespace
