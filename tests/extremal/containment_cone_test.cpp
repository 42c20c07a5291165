#include <datumfit/extremal/containment_cone.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace {

constexpr double turn = 6.283185307179586;

struct found_cone {
    int status;
    giUnitVec3 axis;
    giAngle angle = giAngle(giAngleDegrees, 7.0);
    double radians() const { return angle.angle(giAngleRadians); }
};

giUnitVec3coDynArr array(std::vector<giUnitVec3> const & directions) {
    giUnitVec3coDynArr result;
    for (giUnitVec3 const & d : directions) result.append(d);
    return result;
}

found_cone solve(std::vector<giUnitVec3> const & directions) {
    found_cone found{0, giUnitVec3(1.0, 2.0, 3.0)};
    found.status = sqContainmentCone(array(directions)).solve(found.axis, found.angle);
    return found;
}

found_cone solve_slowly(std::vector<giUnitVec3> const & directions) {
    found_cone found{0, giUnitVec3(1.0, 2.0, 3.0)};
    found.status = sqContainmentCone(array(directions)).solve_slow_and_simple_for_utest(found.axis, found.angle);
    return found;
}

// At an angle from z and at one about it, in degrees; z tilted by a general rotation.
giUnitVec3 direction(double tilt, double about) {
    double const t = tilt * turn / 360.0, a = about * turn / 360.0;
    giUnitVec3 const z(1.0, -2.0, 0.5), x = z.any_normal(), y(z.cross(x));
    return giUnitVec3(std::sin(t) * std::cos(a) * giVector3(x) + std::sin(t) * std::sin(a) * giVector3(y) +
                      std::cos(t) * giVector3(z));
}

TEST(ContainmentCone, KnowsTheConesOfFewDirections) {
    for (auto const & search : {solve, solve_slowly}) {
        found_cone const none = search({});
        EXPECT_EQ(1, none.status);
        EXPECT_TRUE(none.angle.sin() < 0.0 && none.angle.cos() == 1.0);  // a full turn
        EXPECT_EQ(0.0, giVector3(none.axis).cross(giUnitVec3(1.0, 2.0, 3.0)).length());
        giUnitVec3 const a = direction(20.0, 0.0), b = direction(20.0, 180.0), c = direction(20.0, 90.0);
        found_cone const one = search({a});
        EXPECT_TRUE(one.status == 1 && one.radians() == 0.0 && one.axis.x() == a.x());
        EXPECT_EQ(0.0, search({a, a}).radians());
        for (found_cone const & pair : {search({a, b}), search({a, b, c}), search({c, a, b})}) {
            EXPECT_EQ(1, pair.status);
            EXPECT_NEAR(20.0, pair.angle.angle(giAngleDegrees), 1e-13);
            EXPECT_NEAR(0.0, giVector3(pair.axis).cross(direction(0.0, 0.0)).length(), 1e-15);
        }
    }
}

TEST(ContainmentCone, RefusesAHalfSphereAndMore) {
    for (auto const & search : {solve, solve_slowly}) {
        giUnitVec3 const a(0.3, -0.5, 0.7);
        EXPECT_EQ(0, search({a, -a}).status);
        EXPECT_EQ(0, search({direction(90.0, 10.0), direction(90.0, 130.0), direction(90.0, 250.0)}).status);
        EXPECT_EQ(
            0, search({direction(100.0, 10.0), direction(100.0, 130.0), direction(100.0, 250.0), direction(0.0, 0.0)})
                   .status);
        found_cone const wide = search({direction(89.9, 10.0), direction(89.9, 130.0), direction(89.9, 250.0)});
        EXPECT_EQ(1, wide.status);
        EXPECT_NEAR(89.9, wide.angle.angle(giAngleDegrees), 1e-10);
    }
}

// Directions whose chord from one of the support is too short to count are passed over, others are not.
TEST(ContainmentCone, PassesOverNeighboursOfTheSupport) {
    double const short_chord = 0.18, long_chord = 0.19;  // degrees; the limit is at 0.1812
    EXPECT_EQ(0.0, solve({direction(30.0, 0.0), direction(30.0 + short_chord, 0.0)}).radians());
    EXPECT_NEAR(0.5 * long_chord,
                solve({direction(30.0, 0.0), direction(30.0 + long_chord, 0.0)}).angle.angle(giAngleDegrees), 1e-12);
}

TEST(ContainmentCone, AgreesWithAnExhaustiveSearch) {
    std::mt19937 engine(5);
    auto const uniform = [&](double to) { return to * (static_cast<double>(engine()) * 0x1p-32); };
    for (double const half_angle : {5.0, 40.0, 85.0}) {
        for (int trial = 0; trial < 60; ++trial) {
            std::vector<giUnitVec3> directions;
            for (int n = 3 + trial % 7; n > 0; --n)
                directions.push_back(direction(uniform(half_angle), uniform(360.0)));
            found_cone const fast = solve(directions), again = solve(directions), slow = solve_slowly(directions);
            ASSERT_TRUE(fast.status == 1 && slow.status == 1);
            EXPECT_EQ(fast.radians(), again.radians());
            // A direction passed over may stick out by its chord from the support, at most.
            EXPECT_LE(fast.radians(), slow.radians() + 1e-7);
            double worst = 0.0;
            for (giUnitVec3 const & d : directions) {
                worst = std::max(worst, unsigned_angle(d, fast.axis).angle(giAngleRadians) - fast.radians());
            }
            if (worst < 1e-7) {
                EXPECT_NEAR(slow.radians(), fast.radians(), 1e-7);
                EXPECT_NEAR(0.0, giVector3(fast.axis).cross(slow.axis).length(), 1e-6);
            }
            EXPECT_LT(worst, 0.00317);
        }
    }
}

// What a derived class reaches: rims, and the choice among the six cones of four directions.
struct steps : sqContainmentCone {
    using sqContainmentCone::exact_cone3;
    using sqContainmentCone::inside_cone;
    using sqContainmentCone::sqContainmentCone;
};

TEST(ContainmentCone, PutsThreeDirectionsOnTheRim) {
    steps cone((giUnitVec3coDynArr()));
    giUnitVec3 const a = direction(33.0, 20.0), b = direction(33.0, 100.0), c = direction(33.0, 290.0);
    giUnitVec3 axis;
    giAngle angle;
    double excess = 0.0;
    for (int order = 0; order < 2; ++order) {
        cone.exact_cone3(order ? b : a, order ? a : b, c, axis, angle);
        EXPECT_NEAR(33.0, angle.angle(giAngleDegrees), 1e-12);
        EXPECT_NEAR(1.0, axis.dot(direction(0.0, 0.0)), 1e-15);
    }
    EXPECT_EQ(0, steps::inside_cone(direction(33.1, 0.0), axis, angle, excess));
    EXPECT_NEAR(0.1 * turn / 360.0, excess, 1e-14);
    EXPECT_EQ(1, steps::inside_cone(direction(32.9, 0.0), axis, angle, excess));
    cone.exact_cone3(a, a, c, axis, angle);  // no cone: everything is inside
    EXPECT_EQ(1, steps::inside_cone(-c, axis, angle, excess));
}

}  // namespace
