#include "primitives/fitted.h"
#include "support/shapes.h"

#include <gtest/gtest.h>

namespace {

TEST(SphereFit, SearchesWhereTheFirstFitIsPoor) {
    // Noise of 5 on a sphere of 100: the mean square of 25 exceeds a 1000th of the range, so all passes run.
    giPoint3coDynArr const points = sphere_cap(general_point(30.0), 100.0, 2.0, 60, 0.05);
    fitted f, again;
    ASSERT_EQ(1, evaluator::evaluate_sphere(points, f.point, f.radius, f.deviation));
    sqLeastSquareSphere problem(points);
    ASSERT_GT(f.deviation * f.deviation, 0.001 * 3.0 * problem.range());
    evaluator::evaluate_sphere(points, again.point, again.radius, again.deviation);
    EXPECT_TRUE(f.radius == again.radius && f.deviation == again.deviation && distance(f.point, again.point) == 0.0);

    double const found[] = {f.point.x(), f.point.y(), f.point.z(), f.radius};
    for (int k = 0; k < 8; ++k) {
        mlVector moved(utConvert, found, 4);
        moved[k / 2] += k % 2 == 0 ? 0.01 : -0.01;
        EXPECT_GT(problem.score(moved, HUGE_VAL), points.size() * f.deviation * f.deviation);
    }
}

TEST(SphereFit, RefusesThreePointsAndStaysFiniteInAPlane) {
    fitted f;
    giPoint3coDynArr const three = rectangle(general_point(0.0), 2.0, 1.0, 3);
    EXPECT_EQ(0, evaluator::evaluate_sphere(three, f.point, f.radius, f.deviation));
    EXPECT_EQ(0, evaluator::evaluate_probed_sphere(three, filled(3, 0.1), 1, f.point, f.radius, f.deviation));
    EXPECT_TRUE(f.untouched());
    giPoint3coDynArr const flat = rectangle(general_point(0.0), 2.0, 1.0, 30);
    EXPECT_EQ(1, evaluator::evaluate_sphere(flat, f.point, f.radius, f.deviation));
    EXPECT_TRUE(std::isfinite(f.radius) && std::isfinite(f.point.x()));
    EXPECT_LT(f.deviation, 1e-3);
}

TEST(ProbedFits, TakeAnyNumberButZeroForInside) {
    fitted sphere, circle;
    giPoint3coDynArr const points = sphere_cap(general_point(2.0), 3.5, 3.0, 50);
    evaluator::evaluate_probed_sphere(points, filled(50, 0.5), 7, sphere.point, sphere.radius, sphere.deviation);
    EXPECT_NEAR(4.0, sphere.radius, 1e-14);
    giPoint2coDynArr const flat = arc(general_point2(2.0), 3.5, 6.0, 50);
    evaluator::evaluate_probed_circle(flat, filled(50, 0.5), 7, circle.point2, circle.radius, circle.deviation);
    EXPECT_NEAR(4.0, circle.radius, 1e-14);
}

}  // namespace
