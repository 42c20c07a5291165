#include "curved/cones.h"

#include <datumfit/curved/cone/cone_normal.h>
#include <datumfit/curved/cone/fixed_axis_passes.h>
#include <datumfit/curved/cone/least_square_cone_fixed_axis.h>
#include <datumfit/curved/cone/least_square_probed_cone.h>

#include <gtest/gtest.h>

#include <cstring>
#include <limits>

namespace {

constexpr double pi = utMath::pi();
constexpr double unset = std::numeric_limits<double>::max();

giPoint3coDynArr const some_points = {giPoint3(3.0, 1.5, 0.3),  giPoint3(-0.4, 2.2, 1.9), giPoint3(1.1, -2.0, -0.6),
                                      giPoint3(-1.3, 0.7, 2.4), giPoint3(0.9, 3.1, -1.2), giPoint3(2.3, -0.8, 1.7)};

double distance_at(mlDistanceLeastSquares const & problem, int i) {
    double d = 0.0;
    problem.get_distance(d, i);
    return d;
}

TEST(ConeModel, DistancesGrowOutwardsAndProbesStandOffToTheirSide) {
    // Apex at height 4 above the origin, half angle with sine 0.6: the surface passes 0.6 * 4 from the origin.
    double const h = std::asin(0.6);
    giPoint3coDynArr const at = {giPoint3(0, 0, 0), giPoint3(0, 0, 4), giPoint3(5, 0, 0), giPoint3(0, 0, 6)};
    doublecoDynArr const half = {0.5, 0.5, 0.5, 0.5};
    double const expected[] = {-2.4, 0.0, 1.6, 1.2};
    sqLeastSquareCone free(at);
    sqLeastSquareProbedCone bore(at, half, 3), boss(at, half, 0);
    for (auto * problem : {&free, static_cast<sqLeastSquareCone *>(&bore), static_cast<sqLeastSquareCone *>(&boss)}) {
        problem->set_parameters(vector_of({0, 0, 0, 0, 0, 2, 2.4, h}));
    }
    for (int i = 0; i < 4; ++i) {
        EXPECT_NEAR(expected[i], distance_at(free, i), 1e-15);
        EXPECT_NEAR(expected[i] + 0.5, distance_at(bore, i), 1e-15);
        EXPECT_NEAR(expected[i] - 0.5, distance_at(boss, i), 1e-15);
    }
    mlVector s;
    free.parameter_scales(s);
    ASSERT_EQ(8, s.dimension());
    for (int k = 0; k < 8; ++k) EXPECT_NEAR(k < 3 ? 1.0 : k == 6 ? 1.0 / 0.6 : std::sqrt(41.0), s[k], 1e-14);
    free.set_parameters(vector_of({0, 0, 0, 0, 0, 1, 2}));  // without a half angle: a cylinder
    EXPECT_EQ(3.0, distance_at(free, 2));
    free.parameter_scales(s);
    for (int k = 3; k < 8; ++k) EXPECT_EQ(HUGE_VAL, s[k]);
}

TEST(ConeModel, NormalisationKeepsTheSurfaceAndTheApex) {
    struct {
        double h, expected, sign, sense;  // of the distances, and of the direction
    } const cases[] = {{0.4, 0.4, 1, 1},          {pi / 2 + 0.1, pi / 2 - 0.1, -1, -1},
                       {-0.1, 0.1, 1, -1},        {pi + 0.3, 0.3, -1, 1},
                       {2 * pi + 0.2, 0.2, 1, 1}, {-5 * pi - 0.7, 0.7, -1, -1}};
    sqLeastSquareCone problem(some_points);
    for (auto const & c : cases) {
        SCOPED_TRACE(c.h);
        mlVector p = vector_of({30.0, -12.0, 5.0, 0.62, -1.04, 1.58, 1.7, c.h}), before(p);
        problem.normalize_parameters(p);
        EXPECT_NEAR(c.expected, p[7], 1e-14);
        EXPECT_NEAR(1.0, p[3] * p[3] + p[4] * p[4] + p[5] * p[5], 1e-15);
        EXPECT_GT(c.sense * p[3], 0.0);
        EXPECT_NEAR(0.0, p[0] * p[3] + p[1] * p[4] + p[2] * p[5], 1e-14);
        EXPECT_NEAR(0.0, distance(apex_of(before), apex_of(p)), 1e-11);
        for (int i = 0; i < 6; ++i) {
            problem.set_parameters(before);
            double const d = distance_at(problem, i);
            problem.set_parameters(p);
            EXPECT_NEAR(c.sign * d, distance_at(problem, i), 1e-13);
        }
    }
    for (double const h : {-1e-20, 1e20, -1e20}) {  // rounding to a whole turn; many turns
        mlVector p = vector_of({1, 2, 3, 0, 0, 0, 1, h});
        problem.normalize_parameters(p);
        EXPECT_TRUE(p[7] >= 0.0 && p[7] <= pi / 2) << h << " " << p[7];
        EXPECT_EQ(1.0, std::abs(p[3]));
    }
}

TEST(ConeModel, NormalsPointOutwardsAndBeyondTheApexAwayFromIt) {
    giPoint3 const apex(1, 2, 3);
    auto const expect_normal = [&](giVector3 const & from_apex, giVector3 const & n) {
        giAngle const h(giAngleDegrees, 30.0);
        EXPECT_NEAR(0.0, (sqGetConeNormal(apex, giAxisZ, h, apex + from_apex) - n).length(), 1e-15);
    };
    giVector3 const across(std::sqrt(0.75), 0, 0.5);
    for (double const x : {0.1, 30.0}) expect_normal(giVector3(x, 0, -8), across);  // whichever side of the surface
    expect_normal(giVector3(3, 0, 0), across);
    expect_normal(giVector3(3, 0, 4), giVector3(0.6, 0, 0.8));
    for (double const z : {-8.0, 1.0}) expect_normal(giVector3(0, 0, z), giAxisZ);
    EXPECT_EQ(1.0, sqGetConeNormal(apex, giAxisZ, giAngle(giAngle90), giPoint3(4, 2, -5)).z());
}

TEST(ConeModel, LimitsTakeAllNormalsOrAllReversed) {
    for (bool const cylinder : {false, true}) {  // nearly: with an apex too far for coordinates
        cone_shape part(general_point(10.0), general_direction(), 0.4);
        part.section(2.0, 5);
        giVector3 const q = part.apex.release() - 2.0 * part.axis, a = part.axis;
        double const h = cylinder ? 1e-13 : 0.4;
        mlVector p = vector_of({q.x(), q.y(), q.z(), a.x(), a.y(), a.z(), 2.0 * std::tan(0.4) * std::cos(h), h});
        for (int i = 0; i < 5 && cylinder; ++i) part.normals[i] = giUnitVec3(part.axis.project_normal(part.normals[i]));
        auto const limited = [&](giUnitVec3 const & preferred, giUnitVec3coDynArr const & normals) {
            giAngle const tight(giAngleDegrees, 1.0);
            return sqLeastSquareCone::are_normals_in_limit(part.points, tight, preferred, normals, p);
        };
        EXPECT_EQ(1, limited(-part.axis, part.normals));
        EXPECT_EQ(0, limited(part.axis.any_normal(), part.normals));
        EXPECT_EQ(0, limited(part.axis.any_normal(), giUnitVec3coDynArr()));
        for (int reversed = 0; reversed <= 5; ++reversed) {
            EXPECT_EQ(reversed % 5 == 0 ? 1 : 0, limited(giUnitVec3(), part.normals)) << reversed;
            if (reversed < 5) part.normals[reversed] = -part.normals[reversed];
        }
    }
}

TEST(ConeModel, TolerancesAreTwoAndGiveBackWhatTheyWere) {
    EXPECT_EQ(0.05, sqSetLeastSquareConeNonPhysicalTolerance(0.1));
    EXPECT_EQ(0.05, sqSetLeastSquareProbedConeNonPhysicalTolerance(0.2));
    EXPECT_EQ(0.1, sqSetLeastSquareConeNonPhysicalTolerance(0.05));
    EXPECT_EQ(0.2, sqSetLeastSquareProbedConeNonPhysicalTolerance(0.05));
}

sqFittedCone cone(double z, double tilt, double degrees, double deviation = 0.1) {
    return sqFittedCone(giPoint3(1, 2, z), giUnitVec3(tilt, 0, 1), giAngle(giAngleDegrees, degrees), deviation);
}

TEST(FittedCone, KnowsWhatIsNotACone) {
    EXPECT_EQ(0, cone(3, 0, 30, 0.0).invalid());
    for (double const deviation : {-1e-300, std::nan("")}) EXPECT_EQ(1, cone(3, 0, 30, deviation).invalid());
    for (double const degrees : {0, 90, -30}) EXPECT_EQ(1, cone(3, 0, degrees).invalid());
    giAngle const h(giAngleDegrees, 30.0);
    for (giPoint3 const & apex : {giPoint3(unset, 2, 3), giPoint3(-unset, 2, 3), giPoint3(1, unset, 3)}) {
        EXPECT_EQ(1, sqFittedCone(apex, giAxisZ, h, 0.1).invalid());
    }
    EXPECT_EQ(2, sqFittedCone().invalid() + sqFittedCone(giPoint3(1, 2, 3), giUnitVec3(), h, 0.1).invalid());
}

TEST(FittedCone, CoincidesInApexAngleAndAxis) {
    sqFittedCone const it = cone(3, 0, 30);
    giAngle const degree(giAngleDegrees, 1.0);
    EXPECT_EQ(1, it.coincident(cone(3.5, 0.01, 30.9), 0.5, degree));
    for (auto const & other : {cone(3.6, 0, 30), cone(3, 0.02, 30), cone(3, 0, 31.1)}) {
        EXPECT_EQ(0, it.coincident(other, 0.5, degree));
    }
    EXPECT_EQ(0, it.coincident(it, -0.1, degree));
    EXPECT_EQ(0, sqFittedCone().coincident(sqFittedCone(), 1.0, degree));
    sqFittedCone const reversed(it.apex(), -it.axis_dir(), it.half_angle(), 0.2);
    EXPECT_EQ(1, it.coincident(reversed, 0.0, degree));
    sqFittedConecoDynArr results;
    for (double const z : {3.0, 3.4, 4.0}) sqLeastSquareCone::add_distinct_result(cone(z, 0, 30), 0.5, degree, results);
    ASSERT_EQ(2, results.size());
    EXPECT_EQ(4.0, results[1].apex().z());
}

TEST(ConeFixedAxis, FramesItsAxis) {
    sqLeastSquareConeFixedAxis problem(some_points);
    problem.set_axis(giVector3(0, 0, 1));
    EXPECT_EQ(-1.0, problem.x_axis().x());
    EXPECT_EQ(-1.0, problem.y_axis().y());
    problem.set_axis(giVector3(0.6, 0.64, 0.48));  // steeper along y: from the x axis
    EXPECT_NEAR(0.0, (problem.x_axis() - giVector3(0, 0.6, -0.8)).length(), 1e-15);
    EXPECT_NEAR(0.0, (problem.y_axis() - giVector3(-0.8, 0.48, 0.36)).length(), 1e-15);

    giVector3 const at = some_points[2].release();  // on the axis there is no direction
    problem.set_parameters(vector_of({at.dot(problem.x_axis()), at.dot(problem.y_axis())}));
    double d;
    mlVector g = vector_of({1, 1});
    problem.get_distance_and_gradient(d, g, 2);
    EXPECT_EQ(0.0, std::abs(g[0]) + std::abs(g[1]));
}

TEST(ConeFixedAxis, IsLevelWhereAllPointsHaveOneDistanceFromTheAxis) {
    giPoint3coDynArr ring = arc(giPoint3(70.0, -30.0, 5.0), giUnitVec3(0, 0, 1), 40.0, 6.0, 9);
    ring[4].z() = 8.0;
    sqLeastSquareConeFixedAxis problem(ring);
    problem.set_axis(giVector3(0, 0, 1));
    mlVector p = vector_of({-70.0, 30.0}), d, g;
    problem.set_parameters(p);
    double slot;
    problem.get_distance_and_gradient(slot, g, 4);
    EXPECT_EQ(8.0, slot);
    EXPECT_EQ(0.0, std::abs(g[0]) + std::abs(g[1]));
    problem.distances(p, d);
    EXPECT_NEAR(8.0, d[4], 1e-14);
    problem.full_fit_parameters(p);
    EXPECT_EQ(pi / 2, p[7]);
}

TEST(ConeFixedAxis, GivesTheSameSurfaceAsACone) {
    for (double const sense : {1.0, -1.0}) {  // slopes either way
        cone_shape part(general_point(3.0), general_direction(), 0.4);
        part.section(1.0, 5).section(2.0, 5);
        part.points.append(part.apex + giVector3(1.0, 0.5, -0.5));
        sqLeastSquareConeFixedAxis fixed(part.points);
        fixed.set_axis(sense * part.axis);
        giVector3 const apex = part.apex.release();
        fixed.set_parameters(vector_of({apex.dot(fixed.x_axis()) + 0.1, apex.dot(fixed.y_axis())}));
        mlVector p;
        fixed.full_fit_parameters(p);
        EXPECT_GT(axis_of(p).dot(part.axis), 0.999);
        sqLeastSquareCone cone(part.points);
        cone.set_parameters(p);
        for (int i = 0; i < part.points.size(); ++i) {
            EXPECT_NEAR(sense * std::sin(p[7]) * distance_at(fixed, i), distance_at(cone, i), 1e-14);
        }
    }
}

TEST(ConeFixedAxis, SumsTheSameBitsInLanesOfBothKinds) {
    giPoint3coDynArr points(1031, 1);  // to end within a block and within a group, on the axis
    noise error;
    for (int i = 0; i < 1031; ++i) points.append(giPoint3(7, -3, 1e3) + (i < 1030 ? 1.0 : 0.0) * error.vector(2.0));
    datumfit::internal::fixed_axis_passes passes(points);
    passes.set_frame(giAxisX, giAxisY, giAxisZ);
    mlVector x(mlVectorZero, 2);
    passes.from_parameters(vector_of({7.0, -3.0}), x);
    double sums[2][7];
    for (bool const wide : {false, true}) {
        passes.use_wide_lanes(wide);
        passes.place(x);
        passes.gram(sums[wide]);
        sums[wide][6] = passes.sum_of_squares(HUGE_VAL);
    }
    EXPECT_EQ(0, std::memcmp(sums[0], sums[1], sizeof sums[0]));
    EXPECT_NEAR(sums[0][5], sums[0][6], 1e-12 * sums[0][5]);
    double row[3];
    passes.rows(1030, 1, row, 1);
    EXPECT_EQ(0.0, std::abs(row[0]) + std::abs(row[1]));
}

// Hosts' classes are asked point by point, ours for all points at once; both must reach the same fit.
struct asked_by_point : sqLeastSquareConeFixedAxis {
    using sqLeastSquareConeFixedAxis::sqLeastSquareConeFixedAxis;
};

class ConeFixedAxisFits : public testing::TestWithParam<placement> {};

TEST_P(ConeFixedAxisFits, FindTheApexInBothFormsOfTheModel) {
    placement const at = GetParam();
    double const rounding = rounding_at(at), size = at.size;
    cone_shape part(general_point(at.offset), general_direction(), 0.4);
    part.section(1.0 * size, 12).section(1.7 * size, 13).section(2.5 * size, 11);
    mlVector found, full;
    sqLeastSquareConeFixedAxis fixed(part.points);
    asked_by_point slots(part.points);
    for (auto * problem : {&fixed, static_cast<sqLeastSquareConeFixedAxis *>(&slots)}) {
        problem->set_axis(part.axis);
        giVector3 const there = part.apex.release();
        double const x = there.dot(problem->x_axis()) + 0.4 * size, y = there.dot(problem->y_axis());
        mlLevenbergMarquardt(*problem).fit(vector_of({x, y}), found);
        problem->set_parameters(found);
        problem->full_fit_parameters(full);
        EXPECT_NEAR(0.0, distance(part.apex, apex_of(full)), 20.0 * rounding);
        EXPECT_NEAR(0.4, full[7], 20.0 * rounding / size);
    }
}

INSTANTIATE_TEST_SUITE_P(Placements, ConeFixedAxisFits, testing::ValuesIn(placements),
                         [](auto const & at) { return name_of(at.param); });

}  // namespace
