#include "support/shapes.h"

#include <gtest/gtest.h>

namespace {

class SphereFit : public testing::TestWithParam<placement> {};

// A cap of half angle h fixes the radius through its sagitta 1 - cos h only, which magnifies the rounding of the input.
double rounding_of_cap(placement const & at, double half_angle) {
    return rounding_at(at) / (1.0 - std::cos(half_angle));  // the worst seen is all of it
}

TEST_P(SphereFit, FindsTheSphereThatThePointsLieOn) {
    placement const at = GetParam();
    giPoint3 const centre = general_point(at.offset);
    for (double const half_angle : {3.1, 1.0, 0.1}) {
        SCOPED_TRACE(testing::Message() << "cap of half angle " << half_angle);
        giPoint3coDynArr const points = sphere_cap(centre, at.size, half_angle, 200);
        giPoint3 found;
        double radius = 0.0, deviation = 1.0;
        ASSERT_EQ(1, sqLeastSquareEvaluator::evaluate_sphere(points, found, radius, deviation));
        EXPECT_LE((found - centre).length().value(), rounding_of_cap(at, half_angle));
        EXPECT_NEAR(at.size, radius, rounding_of_cap(at, half_angle));
        EXPECT_LE(deviation, rounding_at(at));
    }
}

INSTANTIATE_TEST_SUITE_P(Placements, SphereFit, testing::ValuesIn(placements),
                         [](auto const & at) { return name_of(at.param); });

TEST(SphereFit, SearchesWhereTheFirstFitIsPoor) {
    // Noise of 5 on a sphere of 100: the mean square of 25 exceeds a 1000th of the range, so all passes run.
    giPoint3coDynArr const points = sphere_cap(general_point(30.0), 100.0, 2.0, 60, 0.05);
    giPoint3 centre, again;
    double radius, deviation, radius_again, deviation_again;
    ASSERT_EQ(1, sqLeastSquareEvaluator::evaluate_sphere(points, centre, radius, deviation));
    ASSERT_GT(deviation * deviation, 0.001 * 3.0 * sqLeastSquareSphere(points).range());
    sqLeastSquareEvaluator::evaluate_sphere(points, again, radius_again, deviation_again);
    EXPECT_TRUE(radius == radius_again && deviation == deviation_again && (centre - again).length().value() == 0.0);

    sqLeastSquareSphere problem(points);
    double const found[] = {centre.x(), centre.y(), centre.z(), radius};
    for (int k = 0; k < 8; ++k) {
        mlVector moved(utConvert, found, 4);
        moved[k / 2] += k % 2 == 0 ? 0.01 : -0.01;
        EXPECT_GT(problem.score(moved, HUGE_VAL), points.size() * deviation * deviation);
    }
}

TEST(SphereFit, GivesTheSurfaceAndNotThePathOfTheCentres) {
    giPoint3 const centre = general_point(2.0);
    for (int const inside : {1, 0}) {
        giPoint3coDynArr points = sphere_cap(centre, 1.0, 3.0, 50);
        doublecoDynArr radii;
        for (int i = 0; i < points.size(); ++i) {
            radii.append(0.25 + 0.01 * (i % 5));
            points[i] = centre + (4.0 + (inside != 0 ? -radii[i] : radii[i])) * (points[i] - centre);
        }
        giPoint3 found;
        double radius, deviation;
        ASSERT_EQ(1, sqLeastSquareEvaluator::evaluate_probed_sphere(points, radii, inside, found, radius, deviation));
        EXPECT_NEAR(4.0, radius, 1e-14);
        EXPECT_NEAR(0.0, (found - centre).length().value(), 1e-14);
    }
}

TEST(SphereFit, RefusesThreePointsAndStaysFiniteInAPlane) {
    giPoint3 centre(5.0, 6.0, 7.0);
    double radius = 8.0, deviation = 9.0;
    giPoint3coDynArr const three = rectangle(general_point(0.0), 2.0, 1.0, 3);
    EXPECT_EQ(0, sqLeastSquareEvaluator::evaluate_sphere(three, centre, radius, deviation));
    EXPECT_EQ(0, sqLeastSquareEvaluator::evaluate_probed_sphere(three, filled(3, 0.1), 1, centre, radius, deviation));
    EXPECT_TRUE(centre.z() == 7.0 && radius == 8.0 && deviation == 9.0);
    giPoint3coDynArr const flat = rectangle(general_point(0.0), 2.0, 1.0, 30);
    EXPECT_EQ(1, sqLeastSquareEvaluator::evaluate_sphere(flat, centre, radius, deviation));
    EXPECT_TRUE(std::isfinite(radius) && std::isfinite(centre.x()));
    EXPECT_LT(deviation, 1e-3);
}

}  // namespace
