#include "primitives/fitted.h"
#include "support/shapes.h"

#include <gtest/gtest.h>

#include <set>

namespace {

double const full = 2.0 * utMath::pi();

TEST(CircleFit, FindsAFlatArcOfAGreatCircle) {
    giPoint2coDynArr const points = arc(giPoint2(12.0, -7.0), 1e6, full / 360.0, 200);
    fitted f;
    ASSERT_EQ(1, evaluator::evaluate_circle(points, f.point2, f.radius, f.deviation));
    EXPECT_NEAR(1e6, f.radius, 1e-5);  // the sagitta of 38 magnifies the rounding of 1e-10 by 26000
}

TEST(CircleFit, StaysFiniteOnPointsThatDetermineNone) {
    giPoint2coDynArr in_line, in_one_place;
    for (int i = 0; i < 10; ++i) {
        in_line.append(giPoint2(1.0 + i * i, 3.0 + 2.0 * i * i));
        in_one_place.append(giPoint2(1.0, 2.0));
    }
    fitted f;
    ASSERT_EQ(1, evaluator::evaluate_circle(in_line, f.point2, f.radius, f.deviation));
    EXPECT_TRUE(std::isfinite(f.radius) && std::isfinite(f.point2.x()));
    EXPECT_LT(f.deviation, 1e-3) << "a great circle fits the line better than any about the points";
    ASSERT_EQ(1, evaluator::evaluate_circle(in_one_place, f.point2, f.radius, f.deviation));
    EXPECT_TRUE(f.radius == 0.0 && f.deviation == 0.0 && f.point2.coincident(giPoint2(1.0, 2.0), 0.0));
}

TEST(CircleFit, RefusesTwoPoints) {
    giPoint2coDynArr const two = {giPoint2(1.0, 0.0), giPoint2(0.0, 1.0)};
    giPoint3coDynArr const two3 = {general_point(0.0), general_point(1.0)};
    fitted f;
    EXPECT_EQ(0, evaluator::evaluate_circle(two, f.point2, f.radius, f.deviation));
    EXPECT_EQ(0, evaluator::evaluate_probed_circle(two, filled(2, 1.0), 1, f.point2, f.radius, f.deviation));
    EXPECT_EQ(0, evaluator::evaluate_circle2(f.point, f.direction, two3, f.point, f.radius, f.deviation));
    EXPECT_EQ(0, evaluator::evaluate_circle3(two3, f.point, f.direction, f.radius, f.deviation));
    EXPECT_TRUE(f.untouched());
}

TEST(ProbedCircleFit, EqualsThePlainFitWithoutRadiiAndKeepsMaximumForNaN) {
    giPoint2coDynArr points = arc(giPoint2(1.0, 2.0), 4.0, 1.0, 40, 1e-3);
    fitted f, plain;
    evaluator::evaluate_circle(points, plain.point2, plain.radius, plain.deviation);
    evaluator::evaluate_probed_circle(points, filled(40, 0.0), 0, f.point2, f.radius, f.deviation);
    EXPECT_TRUE(f.point2.coincident(plain.point2, 0.0));
    EXPECT_EQ(plain.radius, f.radius);
    EXPECT_EQ(plain.deviation, f.deviation);

    points[3] = giPoint2(std::nan(""), 0.0);
    f.radius = 11.0;
    EXPECT_EQ(1, evaluator::evaluate_probed_circle(points, filled(40, 0.1), 0, f.point2, f.radius, f.deviation));
    EXPECT_EQ(11.0, f.radius);
    EXPECT_EQ(utMath::max_double(), f.deviation);
}

TEST(CircleInSpace, CountsHeightsInTheDeviationOnly) {
    giUnitVec3 const axis = general_direction();
    giPoint3 const centre = general_point(3.0);
    giPoint3coDynArr const points = arc(centre + 0.5 * axis, axis, 2.0, full, 50);
    fitted f;
    ASSERT_EQ(1, evaluator::evaluate_circle2(centre, axis, points, f.point, f.radius, f.deviation));
    EXPECT_NEAR(0.0, (f.point - centre).length().value(), 1e-14);
    EXPECT_NEAR(2.0, f.radius, 1e-14);
    EXPECT_NEAR(0.5, f.deviation, 1e-14);
}

// Points off the circle tell whether the sample took them: none behind the 10000th up to 11999 points; from 12000 on
// every index that trunc(n i / 10000) meets.
TEST(CircleInSpace, SamplesManyPoints) {
    for (int const n : {10000, 10001, 11999, 12000, 25000}) {
        giPoint3coDynArr points = arc(general_point(0.0), general_direction(), 2.0, full, n);
        std::set<int> used;
        for (long long i = 0; i < 10000; ++i) used.insert(static_cast<int>(n < 12000 ? i : n * i / 10000));
        for (int i = 0; i < n; ++i) {
            if (used.count(i) == 0) points[i] = giPoint3(50.0, 50.0, 50.0);
        }
        fitted f;
        ASSERT_EQ(1, evaluator::evaluate_circle3(points, f.point, f.direction, f.radius, f.deviation));
        EXPECT_LT(f.deviation, 1e-14) << n;
        points[*used.rbegin()] = giPoint3(50.0, 50.0, 50.0);
        ASSERT_EQ(1, evaluator::evaluate_circle3(points, f.point, f.direction, f.radius, f.deviation));
        EXPECT_GT(f.deviation, 0.1) << n;
    }
}

}  // namespace
