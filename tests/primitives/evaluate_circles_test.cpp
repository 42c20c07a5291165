#include "support/shapes.h"

#include <gtest/gtest.h>

namespace {

double const full = 2.0 * utMath::pi();

class CircleFit : public testing::TestWithParam<placement> {};

// An arc of angle t fixes the radius through its sagitta alone, which magnifies the rounding of the input.
double rounding_of_arc(placement const & at, double angle) {
    return rounding_at(at) / (1.0 - std::cos(0.5 * std::min(angle, utMath::pi())));  // the worst seen is 0.50 of it
}

TEST_P(CircleFit, FindsTheCircleThatThePointsLieOn) {
    placement const at = GetParam();
    giPoint2 const centre = general_point2(at.offset);
    for (double const angle : {full, full / 6.0, full / 36.0}) {
        SCOPED_TRACE(testing::Message() << "arc of " << angle);
        giPoint2 found;
        double radius = 0.0, deviation = 1.0;
        giPoint2coDynArr const points = arc(centre, at.size, angle, 200);
        ASSERT_EQ(1, sqLeastSquareEvaluator::evaluate_circle(points, found, radius, deviation));
        EXPECT_LE((found - centre).length().value(), rounding_of_arc(at, angle));
        EXPECT_NEAR(at.size, radius, rounding_of_arc(at, angle));
        EXPECT_LE(deviation, rounding_at(at));
    }
}

TEST_P(CircleFit, LeavesNoSmallMoveThatHelps) {
    placement const at = GetParam();
    giPoint2coDynArr const points = arc(general_point2(at.offset), at.size, full / 6.0, 50, 1e-3);
    giPoint2 centre;
    double radius = 0.0, deviation = 0.0;
    ASSERT_EQ(1, sqLeastSquareEvaluator::evaluate_circle(points, centre, radius, deviation));
    auto const mean_square = [&](double x, double y, double r) {
        double sum = 0.0;
        for (int i = 0; i < points.size(); ++i) {
            double const d = std::hypot(points[i].x() - centre.x() - x, points[i].y() - centre.y() - y) - radius - r;
            sum += d * d;
        }
        return sum / points.size();
    };
    EXPECT_NEAR(std::sqrt(mean_square(0.0, 0.0, 0.0)), deviation, 1e-6 * deviation);
    double const step = 1e-4 * at.size;
    for (int k = 0; k < 26; ++k) {
        int const move = k < 13 ? k : k + 1;  // every neighbour in three dimensions but the point itself
        EXPECT_GT(mean_square((move % 3 - 1) * step, (move / 3 % 3 - 1) * step, (move / 9 - 1) * step),
                  mean_square(0.0, 0.0, 0.0));
    }
}

INSTANTIATE_TEST_SUITE_P(Placements, CircleFit, testing::ValuesIn(placements),
                         [](auto const & at) { return name_of(at.param); });

TEST(CircleFit, FindsAFlatArcOfAGreatCircle) {
    giPoint2coDynArr const points = arc(giPoint2(12.0, -7.0), 1e6, full / 360.0, 200);
    giPoint2 centre;
    double radius = 0.0, deviation = 0.0;
    ASSERT_EQ(1, sqLeastSquareEvaluator::evaluate_circle(points, centre, radius, deviation));
    EXPECT_NEAR(1e6, radius, 1e-5);  // the sagitta of 38 magnifies the rounding of 1e-10 by 26000
}

TEST(CircleFit, StaysFiniteOnPointsThatDetermineNone) {
    giPoint2coDynArr in_line, in_one_place;
    for (int i = 0; i < 10; ++i) {
        in_line.append(giPoint2(1.0 + i * i, 3.0 + 2.0 * i * i));
        in_one_place.append(giPoint2(1.0, 2.0));
    }
    giPoint2 centre;
    double radius, deviation;
    ASSERT_EQ(1, sqLeastSquareEvaluator::evaluate_circle(in_line, centre, radius, deviation));
    EXPECT_TRUE(std::isfinite(radius) && std::isfinite(centre.x()));
    EXPECT_LT(deviation, 1e-3) << "a great circle fits the line better than any about the points";
    ASSERT_EQ(1, sqLeastSquareEvaluator::evaluate_circle(in_one_place, centre, radius, deviation));
    EXPECT_EQ(0.0, radius);
    EXPECT_EQ(0.0, deviation);
    EXPECT_TRUE(centre.coincident(giPoint2(1.0, 2.0), 0.0));
}

TEST(CircleFit, RefusesTwoPoints) {
    giPoint2coDynArr const two = {giPoint2(1.0, 0.0), giPoint2(0.0, 1.0)};
    giPoint3coDynArr const two3 = {general_point(0.0), general_point(1.0)};
    giPoint2 centre(5.0, 6.0);
    giPoint3 centre3(5.0, 6.0, 7.0);
    giUnitVec3 normal(giAxisY);
    double radius = 7.0, deviation = 8.0;
    EXPECT_EQ(0, sqLeastSquareEvaluator::evaluate_circle(two, centre, radius, deviation));
    EXPECT_EQ(0, sqLeastSquareEvaluator::evaluate_probed_circle(two, filled(2, 1.0), 1, centre, radius, deviation));
    EXPECT_EQ(0, sqLeastSquareEvaluator::evaluate_circle2(centre3, normal, two3, centre3, radius, deviation));
    EXPECT_EQ(0, sqLeastSquareEvaluator::evaluate_circle3(two3, centre3, normal, radius, deviation));
    EXPECT_TRUE(centre.x() == 5.0 && centre3.z() == 7.0 && normal.y() == 1.0 && radius == 7.0 && deviation == 8.0);
}

TEST(ProbedCircleFit, GivesTheSurfaceAndNotThePathOfTheCentres) {
    giPoint2coDynArr points = arc(giPoint2(1.0, 2.0), 4.0, full, 40);
    doublecoDynArr radii = filled(40, 0.5);
    giPoint2 centre;
    double radius, deviation;
    // One probe of another size stands off accordingly.
    for (int const inside : {1, 0}) {
        double const surface = inside != 0 ? 4.5 : 3.5, off = inside != 0 ? 4.25 : 3.75;
        radii[7] = 0.25;
        points[7] = giPoint2(1.0, 2.0) + (off / 4.0) * (arc(giPoint2(1.0, 2.0), 4.0, full, 40)[7] - giPoint2(1.0, 2.0));
        ASSERT_EQ(1, sqLeastSquareEvaluator::evaluate_probed_circle(points, radii, inside, centre, radius, deviation));
        EXPECT_NEAR(surface, radius, 1e-14);
        EXPECT_NEAR(0.0, centre.distance(giPoint2(1.0, 2.0)).value(), 1e-14);
        EXPECT_NEAR(0.0, deviation, 1e-14);
    }
}

TEST(ProbedCircleFit, EqualsThePlainFitWithoutRadiiAndKeepsMaximumForNaN) {
    giPoint2coDynArr points = arc(giPoint2(1.0, 2.0), 4.0, 1.0, 40, 1e-3);
    giPoint2 centre, plain;
    double radius, deviation, plain_radius, plain_deviation;
    sqLeastSquareEvaluator::evaluate_circle(points, plain, plain_radius, plain_deviation);
    sqLeastSquareEvaluator::evaluate_probed_circle(points, filled(40, 0.0), 0, centre, radius, deviation);
    EXPECT_TRUE(centre.coincident(plain, 0.0));
    EXPECT_EQ(plain_radius, radius);
    EXPECT_EQ(plain_deviation, deviation);

    points[3] = giPoint2(std::nan(""), 0.0);
    radius = 11.0;
    EXPECT_EQ(1, sqLeastSquareEvaluator::evaluate_probed_circle(points, filled(40, 0.1), 0, centre, radius, deviation));
    EXPECT_EQ(11.0, radius);
    EXPECT_EQ(utMath::max_double(), deviation);
}

class CircleInSpace : public testing::TestWithParam<placement> {};

TEST_P(CircleInSpace, FindsTheCircleAndItsPlane) {
    placement const at = GetParam();
    giPoint3 const centre = general_point(at.offset);
    giUnitVec3 const axis = general_direction();
    for (double const angle : {full, full / 6.0}) {
        giPoint3coDynArr const points = arc(centre, axis, at.size, angle, 100);
        double const rounding = rounding_of_arc(at, angle);
        giPoint3 found;
        giUnitVec3 normal;
        double radius, deviation;
        ASSERT_EQ(1, sqLeastSquareEvaluator::evaluate_circle3(points, found, normal, radius, deviation));
        EXPECT_LE((found - centre).length().value(), rounding);
        EXPECT_LE(angle_between(normal, axis), 2.0 * rounding / at.size);
        EXPECT_NEAR(at.size, radius, rounding);
        ASSERT_EQ(1, sqLeastSquareEvaluator::evaluate_circle2(centre, axis, points, found, radius, deviation));
        EXPECT_LE((found - centre).length().value(), 2.0 * rounding);
        EXPECT_NEAR(at.size, radius, rounding);
    }
}

INSTANTIATE_TEST_SUITE_P(Placements, CircleInSpace, testing::ValuesIn(placements),
                         [](auto const & at) { return name_of(at.param); });

TEST(CircleInSpace, CountsHeightsInTheDeviationOnly) {
    giUnitVec3 const axis = general_direction();
    giPoint3 const centre = general_point(3.0);
    giPoint3coDynArr points = arc(centre + 0.5 * axis, axis, 2.0, full, 50);
    giPoint3 found;
    double radius, deviation;
    ASSERT_EQ(1, sqLeastSquareEvaluator::evaluate_circle2(centre, axis, points, found, radius, deviation));
    EXPECT_NEAR(0.0, (found - centre).length().value(), 1e-14);
    EXPECT_NEAR(2.0, radius, 1e-14);
    EXPECT_NEAR(0.5, deviation, 1e-14);
}

// Points off the circle tell whether the sample took them: none behind the 10000th up to 11999 points; from 12000 on
// every index that trunc(n i / 10000) meets.
TEST(CircleInSpace, SamplesManyPoints) {
    for (int const n : {10000, 10001, 11999, 12000, 25000}) {
        giPoint3coDynArr points = arc(general_point(0.0), general_direction(), 2.0, full, n);
        intcoDynArr used(n, 1);
        used.expand(n);
        for (int i = 0; i < n; ++i) used[i] = 0;
        for (int i = 0; i < 10000; ++i)
            used[n < 12000 ? i : static_cast<int>(n * static_cast<long long>(i) / 10000)] = 1;
        for (int i = 0; i < n; ++i) {
            if (used[i] == 0) points[i] = giPoint3(50.0, 50.0, 50.0);
        }
        giPoint3 centre;
        giUnitVec3 normal;
        double radius, deviation;
        ASSERT_EQ(1, sqLeastSquareEvaluator::evaluate_circle3(points, centre, normal, radius, deviation));
        EXPECT_LT(deviation, 1e-14) << n;
        int const last = n < 12000 ? 9999 : n == 12000 ? 11998 : 24997;
        points[last] = giPoint3(50.0, 50.0, 50.0);
        ASSERT_EQ(1, sqLeastSquareEvaluator::evaluate_circle3(points, centre, normal, radius, deviation));
        EXPECT_GT(deviation, 0.1) << n;
    }
}

}  // namespace
