#include "curved/cones.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

giUnitVec3 const no_direction;

giAngle degrees(double x) {
    return giAngle(giAngleDegrees, x);
}

// A cone of five sections, each a little turned.
cone_shape measured(giPoint3 const & apex, double half_angle, double size, int n_section = 8) {
    cone_shape cone(apex, general_direction(), half_angle);
    for (int k = 0; k < 5; ++k) cone.section((1.0 + 0.4 * k) * size * std::cos(half_angle), n_section, 0.3 + 0.5 * k);
    return cone;
}

struct fit {
    giPoint3 apex = giPoint3(7.0, 7.0, 7.0);
    giUnitVec3 axis = giUnitVec3(giAxisX);
    double half_angle = 7.0, deviation = 7.0;

    int of(giPoint3coDynArr const & points, int new_points = 0) {
        return sqLeastSquareEvaluator::evaluate_cone(points, apex, axis, half_angle, deviation, no_direction,
                                                     degrees(10.0), new_points);
    }
};

class ConeSearch : public testing::TestWithParam<placement> {};

TEST_P(ConeSearch, FindsTheConeThatThePointsLieOn) {
    placement const & at = GetParam();
    for (double const half_angle : {0.06, 0.3, 0.8, 1.4}) {
        cone_shape const cone = measured(general_point(at.offset), half_angle, at.size);
        fit f;
        ASSERT_EQ(1, f.of(cone.points));
        double const gain = 100.0 / std::sin(half_angle) / std::cos(half_angle);
        EXPECT_LT(f.deviation, 4.0 * rounding_at(at));
        EXPECT_GT(f.axis.dot(cone.axis), 0.0) << "towards the apex";
        EXPECT_LT(angle_between(f.axis, cone.axis) * at.size, gain * rounding_at(at));
        EXPECT_NEAR(half_angle, f.half_angle, gain * rounding_at(at) / at.size);
        EXPECT_LT(f.apex.distance(cone.apex).value(), gain / half_angle * rounding_at(at));
    }
}

TEST_P(ConeSearch, FindsTheSurfaceThatProbesTouched) {
    placement const & at = GetParam();
    for (int const inside : {0, 1}) {
        cone_shape const cone = measured(general_point(at.offset), 0.5, at.size);
        int const n = cone.points.size();
        giPoint3coDynArr centres(n, 1);
        doublecoDynArr radii(n, 1);
        for (int i = 0; i < n; ++i) {
            radii.append(at.size * (0.02 + 0.03 * (i % 3)));
            centres.append(cone.points[i] + (inside != 0 ? -radii[i] : radii[i]) * cone.normals[i]);
        }
        fit f;
        ASSERT_EQ(
            1, sqLeastSquareEvaluator::evaluate_probed_cone(centres, radii, inside, cone.points, f.apex, f.axis,
                                                            f.half_angle, f.deviation, no_direction, degrees(10.0), 0));
        EXPECT_NEAR(0.5, f.half_angle, 300.0 * rounding_at(at) / at.size);
        EXPECT_LT(f.apex.distance(cone.apex).value(), 500.0 * rounding_at(at));
    }
}

INSTANTIATE_TEST_SUITE_P(Placements, ConeSearch, testing::ValuesIn(placements),
                         [](auto const & p) { return p.param.name; });

TEST(ConeSearches, TakeNormalsAndDirectionsAsAPreference) {
    cone_shape const cone = measured(general_point(0.0), 0.4, 1.0);
    giUnitVec3coDynArr in(cone.normals.size(), 1), mixed(cone.normals.size(), 1);
    for (int i = 0; i < cone.normals.size(); ++i) {
        in.append(-cone.normals[i]);
        mixed.append(i == 20 ? -cone.normals[i] : cone.normals[i]);
    }
    for (giUnitVec3coDynArr const * normals : {&cone.normals, &std::as_const(in), &std::as_const(mixed)}) {
        fit f;
        EXPECT_EQ(1, sqLeastSquareEvaluator::evaluate_cone(cone.points, *normals, degrees(1.0), f.apex, f.axis,
                                                           f.half_angle, f.deviation, 0));
        EXPECT_NEAR(0.4, f.half_angle, 1e-12);
    }
    for (giUnitVec3 const & preferred : {-cone.axis, giUnitVec3(cone.axis + 0.5 * cone.axis.any_normal())}) {
        fit f;
        EXPECT_EQ(1, sqLeastSquareEvaluator::evaluate_cone(cone.points, f.apex, f.axis, f.half_angle, f.deviation,
                                                           preferred, degrees(5.0), 0));
        EXPECT_NEAR(0.4, f.half_angle, 1e-12);
    }
}

TEST(ConeSearches, ContinueFromAnEarlierFit) {
    auto const deviation = [](int new_points, double off_new) {
        cone_shape const cone = measured(general_point(0.0), 0.4, 1.0, 4);
        int const n = cone.points.size();
        giPoint3coDynArr points = cone.points;
        points[n - 1] = points[n - 1] + off_new * cone.normals[n - 1];
        fit f;
        f.apex = cone.apex;
        f.axis = cone.axis;
        f.half_angle = 0.4;
        EXPECT_EQ(1, f.of(points, new_points));
        EXPECT_NEAR(0.4, f.half_angle, off_new + 1e-12);
        return f.deviation;
    };
    EXPECT_LT(deviation(5, 0.0), 1e-14);
    EXPECT_LT(deviation(-1, 0.0), 1e-14);
    EXPECT_NEAR(deviation(-1, 0.1), deviation(2, 0.1), 1e-12);  // a search, after the test, comes to the same
}

TEST(ConeSearches, FindConesAboutGuessedDirections) {
    cone_shape const cone = measured(general_point(0.0), 0.4, 1.0);
    giUnitVec3coDynArr const guesses = {giUnitVec3(cone.axis + 0.1 * cone.axis.any_normal()), -cone.axis};
    sqFittedConecoDynArr found;
    auto const look = [&](double tolerance, double least, double most) {
        return sqCalculateMultipleLeastSquareCones(cone.points, guesses, tolerance, degrees(1.0), 5, found,
                                                   giAngle(giAngleRadians, least), giAngle(giAngleRadians, most));
    };
    EXPECT_EQ(0, look(1e-6, 0.0, 0.39));
    EXPECT_EQ(0, look(1e-6, 0.41, 1.5));
    EXPECT_EQ(0, look(1e-17, 0.0, 1.5));
    EXPECT_EQ(1, look(1e-6, 0.0, 1.5));  // the second guess leads to the same cone
    EXPECT_NEAR(-1.0, found[0].axis_dir().dot(cone.axis), 1e-12) << "away from the apex";
    EXPECT_EQ(1, sqLeastSquareEvaluator::evaluate_multiple_cones(cone.points, guesses, 1e-6, degrees(1.0), 5, found));
    EXPECT_EQ(1, sqLeastSquareEvaluator::evaluate_multiple_cones(cone.points, giUnitVec3coDynArr(), 1e-6, degrees(1.0),
                                                                 5, found));
}

TEST(ConeSearches, RefuseTooFewPoints) {
    cone_shape const cone = measured(general_point(0.0), 0.4, 1.0);
    for (int n = 0; n <= 5; ++n) {
        giPoint3coDynArr points = cone.points;
        points.shrink(n, 0);
        fit f;
        EXPECT_EQ(0, f.of(points));
        EXPECT_EQ(
            0, sqLeastSquareEvaluator::evaluate_probed_cone(points, filled(n, 1.0), 1, cone.points, f.apex, f.axis,
                                                            f.half_angle, f.deviation, no_direction, degrees(10.0), 0));
        EXPECT_EQ(1.0, f.axis.x());
        EXPECT_EQ(7.0, f.half_angle);
    }
}

TEST(ConeSearches, GiveCylindersAndPlanesAsWhatTheyAre) {
    giPoint3coDynArr tube(40, 1), plate(40, 1);
    for (int i = 0; i < 40; ++i) {
        tube.append(giPoint3(2.0 * std::cos(0.7 * i), 2.0 * std::sin(0.7 * i), 0.1 * i));
        plate.append(giPoint3(i % 7, i / 7, 3.0));
    }
    fit t, p;
    EXPECT_EQ(1, t.of(tube));
    EXPECT_LT(t.deviation, 1e-14);
    EXPECT_LT(t.half_angle, 1e-14);
    EXPECT_FALSE(std::isnan(t.apex.x() + t.apex.y()));
    EXPECT_EQ(1, p.of(plate));
    EXPECT_LT(p.deviation, 1e-9);
}

TEST(ConeSearches, AreCalmAboutWhatIsNoCone) {
    giPoint3coDynArr line(9, 1), place(9, 1);
    for (int i = 0; i < 9; ++i) {
        line.append(giPoint3(1.0, 2.0, 3.0) + i * giVector3(1.0, -2.0, 0.5));
        place.append(giPoint3(1.0, 2.0, 3.0));
    }
    for (giPoint3coDynArr const & points : {line, place, sphere_cap(general_point(0.0), 2.0, 3.0, 12)}) {
        fit f;
        EXPECT_EQ(1, f.of(points));
        EXPECT_FALSE(std::isnan(f.half_angle + f.deviation + f.apex.x() + f.apex.y() + f.apex.z()));
        EXPECT_NEAR(1.0, f.axis.dot(f.axis), 1e-15);
    }
}

}  // namespace
