#include "support/shapes.h"

#include <datumfit/primitives/principal_axes.h>

#include <gtest/gtest.h>

namespace {

class FlatFit : public testing::TestWithParam<placement> {};

TEST_P(FlatFit, FindsThePlaneThatThePointsLieOn) {
    placement const at = GetParam();
    giPoint3 const centre = general_point(at.offset);
    for (double const width : {1.0, 1e-2}) {
        giPoint3coDynArr const points = rectangle(centre, at.size, width * at.size, 300);
        giPoint3 point;
        giUnitVec3 normal;
        double deviation = 1.0;
        ASSERT_EQ(1, sqLeastSquareEvaluator::evaluate_plane(points, point, normal, deviation));
        // The worst seen are 0.38, 0.30 and 0.28 of these.
        EXPECT_LE(angle_between(normal, general_direction()), rounding_at(at) / (width * at.size));
        EXPECT_LE(std::abs(general_direction().dot(point - centre)), rounding_at(at));
        EXPECT_LE(deviation, rounding_at(at));
    }
}

TEST_P(FlatFit, FindsTheLineThatThePointsLieOn) {
    placement const at = GetParam();
    giPoint3coDynArr const points = rectangle(general_point(at.offset), at.size, 0.0, 300);
    giPoint2coDynArr flat;
    for (int i = 0; i < points.size(); ++i) flat.append(points[i].xy());
    giUnitVec3 const axis = general_direction().any_normal();
    giPoint3 point;
    giUnitVec3 direction;
    giPoint2 point2;
    giUnitVec2 direction2;
    double deviation = 1.0;
    ASSERT_EQ(1, sqLeastSquareEvaluator::evaluate_line3(points, point, direction, deviation));
    EXPECT_LE(angle_between(direction, axis), rounding_at(at) / at.size);
    EXPECT_LE(axis.cross(point - general_point(at.offset)).length().value(), rounding_at(at));
    EXPECT_LE(deviation, rounding_at(at));
    ASSERT_EQ(1, sqLeastSquareEvaluator::evaluate_line(flat, point2, direction2, deviation));
    EXPECT_LE(std::abs(direction2.cross(giUnitVec2(axis.x(), axis.y()))), 2.0 * rounding_at(at) / at.size);
    EXPECT_LE(deviation, rounding_at(at));
    ASSERT_EQ(1, sqLeastSquareEvaluator::evaluate_line2(general_point(at.offset), general_direction(), points, point,
                                                        direction, deviation));
    EXPECT_LE(angle_between(direction, axis), 2.0 * rounding_at(at) / at.size);
    EXPECT_LE(deviation, 2.0 * rounding_at(at));
}

// The mean of the squares of what the fit leaves is the least eigenvalue of the scatter: no turn or shift lowers it.
TEST_P(FlatFit, LeavesNoSmallMoveThatHelps) {
    placement const at = GetParam();
    giPoint3coDynArr const points = rectangle(general_point(at.offset), at.size, 0.3 * at.size, 100, 1e-3);
    giPoint3 point;
    giUnitVec3 normal;
    double deviation = 0.0;
    ASSERT_EQ(1, sqLeastSquareEvaluator::evaluate_plane(points, point, normal, deviation));
    auto const mean_square = [&](giVector3 const & turn, double shift) {
        giUnitVec3 const n(normal + turn);
        double sum = 0.0;
        for (int i = 0; i < points.size(); ++i) sum += utMath::square(n.dot(points[i] - point) - shift);
        return sum / points.size();
    };
    double const least = mean_square(giVector3(0.0, 0.0, 0.0), 0.0);
    EXPECT_NEAR(std::sqrt(least), deviation, 1e-6 * deviation);
    giUnitVec3 const u = normal.any_normal(), v(normal.cross(u));
    for (int k = 0; k < 27; ++k) {
        if (k == 13) continue;
        giVector3 const turn = ((k % 3 - 1) * 1e-5) * u + ((k / 3 % 3 - 1) * 1e-5) * v;
        EXPECT_GT(mean_square(turn, (k / 9 - 1) * 1e-5 * at.size), least);
    }
}

TEST_P(FlatFit, StandsOneProbeRadiusOffEachCentre) {
    placement const at = GetParam();
    giPoint3 const centre = general_point(at.offset);
    giPoint3coDynArr points = rectangle(centre, at.size, 0.5 * at.size, 100);
    doublecoDynArr radii;
    for (int i = 0; i < points.size(); ++i) {
        radii.append((0.1 + 0.01 * (i % 7)) * at.size);
        points[i] += radii[i] * general_direction();
    }
    for (double const sense : {1.0, -1.0}) {
        // Directions of any number; only their sum counts, and here it points to the wrong side for -1.
        giUnitVec3coDynArr const sides = {giUnitVec3(sense * (general_direction() + giVector3(0.1, 0.2, 0.3)))};
        giPoint3 point;
        giUnitVec3 normal;
        double deviation;
        ASSERT_EQ(1, sqLeastSquareEvaluator::evaluate_probed_plane(points, radii, sides, point, normal, deviation));
        EXPECT_GT(sense * normal.dot(general_direction()), 0.0);
        if (sense < 0.0) {
            EXPECT_GT(deviation, 0.01 * at.size);
            continue;
        }
        EXPECT_LE(angle_between(normal, general_direction()), 4.0 * rounding_at(at) / at.size);
        // The point lies as far from the centre as the origin does, and twice as far again.
        EXPECT_LE(std::abs(normal.dot(point - centre)), 8.0 * rounding_at(at));
        EXPECT_LE(deviation, rounding_at(at));
    }
}

INSTANTIATE_TEST_SUITE_P(Placements, FlatFit, testing::ValuesIn(placements),
                         [](auto const & at) { return name_of(at.param); });

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

TEST(LineFit, PassesHalfWayBetweenTwoPoints) {
    giPoint3coDynArr const two = {giPoint3(1.0, 2.0, 3.0), giPoint3(3.0, 2.0, 1.0)};
    giPoint3 point;
    giUnitVec3 direction;
    double deviation = 1.0;
    ASSERT_EQ(1, sqLeastSquareEvaluator::evaluate_line3(two, point, direction, deviation));
    EXPECT_NEAR(0.0, (point - giPoint3(2.0, 2.0, 2.0)).length().value(), 1e-15);
    EXPECT_NEAR(0.0, angle_between(direction, giUnitVec3(1.0, 0.0, -1.0)), 1e-15);
    EXPECT_NEAR(0.0, deviation, 1e-15);
}

TEST(LineFit, GivesZeroAndResultsForPointsInOnePlace) {
    giPoint3coDynArr const one_place = {giPoint3(1.0, 2.0, 3.0), giPoint3(1.0, 2.0, 3.0), giPoint3(1.0, 2.0, 3.0)};
    giPoint3 point;
    giUnitVec3 direction;
    double deviation = 1.0;
    EXPECT_EQ(0, sqLeastSquareEvaluator::evaluate_line3(one_place, point, direction, deviation));
    EXPECT_EQ(3.0, point.z());
    EXPECT_NEAR(1.0, direction.dot(direction), 1e-15);
    EXPECT_EQ(0.0, deviation);
    deviation = 1.0;
    EXPECT_EQ(0, sqLeastSquareEvaluator::evaluate_line2(general_point(0.0), general_direction(), one_place, point,
                                                        direction, deviation));
    EXPECT_GT(deviation, 0.1) << "the height above the plane";
    EXPECT_EQ(1, sqLeastSquareEvaluator::evaluate_plane(one_place, point, direction, deviation));
    EXPECT_EQ(0.0, deviation);

    giPoint2coDynArr const flat = {giPoint2(1.0, 2.0), giPoint2(1.0, 2.0)};
    giPoint2 probed(5.0, 6.0);
    giUnitVec2 normal(0.0, 1.0);
    EXPECT_EQ(0, sqLeastSquareEvaluator::evaluate_probed_line2(flat, filled(2, 0.1), giUnitVec2coDynArr(), probed,
                                                               normal, deviation));
    EXPECT_TRUE(probed.x() == 5.0 && normal.y() == 1.0 && deviation == 0.0);
}

TEST(ProbedLineFit, TriesBothSidesWithoutNormals) {
    // Centres above the line y = 0 by their radii: to be right, those of radius 3 stand higher than those of 1.
    giPoint2coDynArr const points = {giPoint2(0.0, 1.0), giPoint2(1.0, 3.0), giPoint2(2.0, 3.0), giPoint2(3.0, 1.0)};
    doublecoDynArr const radii = {1.0, 3.0, 3.0, 1.0};
    giPoint2 point;
    giUnitVec2 normal;
    double deviation;
    ASSERT_EQ(1, sqLeastSquareEvaluator::evaluate_probed_line2(points, radii, giUnitVec2coDynArr(), point, normal,
                                                               deviation));
    EXPECT_NEAR(0.0, deviation, 1e-14);
    EXPECT_NEAR(0.0, point.y(), 1e-14);
    EXPECT_NEAR(1.0, std::abs(normal.y()), 1e-14);
}

TEST(ProbedPlaneFit, GivesTheMirroredPoint) {
    giPoint3coDynArr const points = {giPoint3(1.0, 2.0, 1.0), giPoint3(5.0, 2.0, 1.0), giPoint3(3.0, 5.0, 1.0)};
    giPoint3 point;
    giUnitVec3 normal;
    double deviation;
    ASSERT_EQ(1, sqLeastSquareEvaluator::evaluate_probed_plane(points, filled(3, 0.25), {giUnitVec3(giAxisZ)}, point,
                                                               normal, deviation));
    EXPECT_NEAR(0.0, (point - giPoint3(-3.0, -3.0, 0.75)).length().value(), 1e-13);  // the centroid is (3, 3, 1)
    EXPECT_NEAR(1.0, normal.z(), 1e-15);
}

TEST(FlatFit, RefusesTooFewPoints) {
    giPoint3coDynArr const one = {general_point(0.0)}, two = {general_point(0.0), general_point(1.0)};
    giPoint2coDynArr const one2 = {general_point2(0.0)};
    giPoint3 point(5.0, 6.0, 7.0);
    giUnitVec3 unit(giAxisY);
    giPoint2 point2(5.0, 6.0);
    giUnitVec2 unit2(0.0, 1.0);
    double deviation = 8.0;
    EXPECT_EQ(0, sqLeastSquareEvaluator::evaluate_line(one2, point2, unit2, deviation));
    EXPECT_EQ(0, sqLeastSquareEvaluator::evaluate_line2(point, unit, one, point, unit, deviation));
    EXPECT_EQ(0, sqLeastSquareEvaluator::evaluate_line3(one, point, unit, deviation));
    EXPECT_EQ(0, sqLeastSquareEvaluator::evaluate_plane(two, point, unit, deviation));
    EXPECT_EQ(0, sqLeastSquareEvaluator::evaluate_probed_line2(one2, filled(1, 1.0), {}, point2, unit2, deviation));
    EXPECT_EQ(0, sqLeastSquareEvaluator::evaluate_probed_plane(two, filled(2, 1.0), {}, point, unit, deviation));
    EXPECT_TRUE(point.z() == 7.0 && unit.y() == 1.0 && point2.y() == 6.0 && unit2.y() == 1.0 && deviation == 8.0);
}

}  // namespace
