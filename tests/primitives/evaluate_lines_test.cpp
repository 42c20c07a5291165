#include "primitives/fitted.h"
#include "support/shapes.h"

#include <datumfit/primitives/principal_axes.h>

#include <gtest/gtest.h>

// How exact the fits are, here and there, tell the reference pairs.

namespace {

class LineInPlane : public testing::TestWithParam<placement> {};
INSTANTIATE_TEST_SUITE_P(Placements, LineInPlane, testing::ValuesIn(placements),
                         [](auto const & at) { return name_of(at.param); });

TEST_P(LineInPlane, IsThatOfTheProjectedPoints) {
    placement const at = GetParam();
    giPoint3coDynArr const points = rectangle(general_point(at.offset), at.size, 0.0, 300);
    giPoint3 const origin = general_point(at.offset) - 0.5 * at.size * general_direction();
    fitted f;
    ASSERT_EQ(1, evaluator::evaluate_line2(origin, general_direction(), points, f.point, f.direction, f.deviation));
    EXPECT_LE(angle_between(f.direction, general_direction().any_normal()), 2.0 * rounding_at(at) / at.size);
    EXPECT_LE(std::abs(general_direction().dot(f.point - origin)), 2.0 * rounding_at(at));
    EXPECT_NEAR(0.5 * at.size, f.deviation, 2.0 * rounding_at(at)) << "heights count";
}

// The axes of a decomposition of the centred coordinates, also where most of the points, and so perhaps the sample that
// tells the first frame, lie in a plane of their own.
TEST(PrincipalAxes, EqualTheSingularValueDecomposition) {
    giPoint3coDynArr points = rectangle(general_point(1e4), 5.0, 1.0, 3000, 1e-6);
    for (int i = 0; i < 3; ++i) points.append(general_point(1e4) + giVector3(3.0 * i, 20.0, -7.0 * i));
    giPoint3 centroid;
    mlVector s;
    mlMatrix v;
    ASSERT_EQ(1, datumfit::internal::principal_axes(points, centroid, s, v));
    mlMatrix centred(points.size(), 3);
    for (int i = 0; i < points.size(); ++i) {
        giVector3 const p = points[i] - centroid;
        centred(i, 0) = p.x();
        centred(i, 1) = p.y();
        centred(i, 2) = p.z();
    }
    mlSingularValueDecomposition const svd(centred, mlJOB_U_NONE, mlJOB_V_WANTED);
    for (int k = 0; k < 3; ++k) {
        EXPECT_NEAR(svd.diagonal()[k], s[k], 1e-12 * s[0]);
        double cosine = 0.0;
        for (int j = 0; j < 3; ++j) cosine += svd.V()(j, k) * v(j, k);
        EXPECT_NEAR(1.0, std::abs(cosine), 1e-14) << k;
    }
    centroid = giPoint3(5.0, 6.0, 7.0);
    EXPECT_EQ(0, datumfit::internal::principal_axes({giPoint3(1.0, 2.0, 3.0)}, centroid, s, v));
    EXPECT_EQ(7.0, centroid.z());
}

TEST(LineFit, GivesZeroAndResultsForPointsInOnePlace) {
    giPoint3coDynArr const one_place = {giPoint3(1.0, 2.0, 3.0), giPoint3(1.0, 2.0, 3.0), giPoint3(1.0, 2.0, 3.0)};
    fitted f;
    EXPECT_EQ(0, evaluator::evaluate_line3(one_place, f.point, f.direction, f.deviation));
    EXPECT_EQ(3.0, f.point.z());
    EXPECT_NEAR(1.0, f.direction.dot(f.direction), 1e-15);
    EXPECT_EQ(0.0, f.deviation);
    EXPECT_EQ(0, evaluator::evaluate_line2(general_point(0.0), general_direction(), one_place, f.point, f.direction,
                                           f.deviation));
    EXPECT_GT(f.deviation, 0.1) << "the height above the plane";
    EXPECT_EQ(1, evaluator::evaluate_plane(one_place, f.point, f.direction, f.deviation));
    EXPECT_EQ(0.0, f.deviation);

    giPoint2coDynArr const flat = {giPoint2(1.0, 2.0), giPoint2(1.0, 2.0)};
    EXPECT_EQ(0, evaluator::evaluate_probed_line2(flat, filled(2, 0.1), {}, f.point2, f.direction2, f.deviation));
    EXPECT_TRUE(f.point2.x() == 5.0 && f.direction2.y() == 1.0 && f.deviation == 0.0);
}

TEST(ProbedLineFit, TriesBothSidesWithoutNormals) {
    // Centres above the line y = 0 by their radii: to be right, those of radius 3 stand higher than those of 1.
    giPoint2coDynArr const points = {giPoint2(0.0, 1.0), giPoint2(1.0, 3.0), giPoint2(2.0, 3.0), giPoint2(3.0, 1.0)};
    doublecoDynArr const radii = {1.0, 3.0, 3.0, 1.0};
    fitted f;
    ASSERT_EQ(1, evaluator::evaluate_probed_line2(points, radii, {}, f.point2, f.direction2, f.deviation));
    EXPECT_NEAR(0.0, f.deviation, 1e-14);
    EXPECT_NEAR(0.0, f.point2.y(), 1e-14);
    EXPECT_NEAR(1.0, std::abs(f.direction2.y()), 1e-14);
}

TEST(ProbedPlaneFit, GivesTheMirroredPointAndTheSideOfTheSumOfDirections) {
    giPoint3coDynArr const points = {giPoint3(1.0, 2.0, 1.0), giPoint3(5.0, 2.0, 1.0), giPoint3(3.0, 5.0, 1.0)};
    for (double const sense : {1.0, -1.0}) {
        // Directions of any number; only their sum counts.
        giUnitVec3coDynArr const sides = {giUnitVec3(0.1, 0.2, sense), giUnitVec3(0.3, 0.0, sense)};
        fitted f;
        ASSERT_EQ(1,
                  evaluator::evaluate_probed_plane(points, filled(3, 0.25), sides, f.point, f.direction, f.deviation));
        // The centroid is (3, 3, 1).
        EXPECT_NEAR(0.0, (f.point - giPoint3(-3.0, -3.0, 1.0 - sense * 0.25)).length().value(), 1e-13);
        EXPECT_NEAR(sense, f.direction.z(), 1e-15);
    }
}

TEST(FlatFit, RefusesTooFewPoints) {
    giPoint3coDynArr const one = {general_point(0.0)}, two = {general_point(0.0), general_point(1.0)};
    giPoint2coDynArr const one2 = {general_point2(0.0)};
    fitted f;
    EXPECT_EQ(0, evaluator::evaluate_line(one2, f.point2, f.direction2, f.deviation));
    EXPECT_EQ(0, evaluator::evaluate_line2(f.point, f.direction, one, f.point, f.direction, f.deviation));
    EXPECT_EQ(0, evaluator::evaluate_line3(one, f.point, f.direction, f.deviation));
    EXPECT_EQ(0, evaluator::evaluate_plane(two, f.point, f.direction, f.deviation));
    EXPECT_EQ(0, evaluator::evaluate_probed_line2(one2, filled(1, 1.0), {}, f.point2, f.direction2, f.deviation));
    EXPECT_EQ(0, evaluator::evaluate_probed_plane(two, filled(2, 1.0), {}, f.point, f.direction, f.deviation));
    EXPECT_TRUE(f.untouched());
}

}  // namespace
