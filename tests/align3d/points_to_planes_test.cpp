#include "engine_host.h"

#include <gtest/gtest.h>

using namespace align3d_tests;

namespace {

using host = sqPointsToPlanes;

giPoint3 const p1(1.0, 2.0, 3.0), p2(-2.0, 0.5, 1.0), q1(1.5, 2.5, 1.0), q2(0.0, 1.0, 2.0);

TEST(PointsToPlanes, LeavesOutRecordsWithoutWeight) {
    engine_host e, locked;
    e.add_bestfit(p1, q1, giAxisX, 0.0, 1.0, 0.0);
    e.add_balance(p1, q1, giAxisX, 1.0, p2, q2, giAxisX, 1.0, 0.0);
    EXPECT_TRUE(e.bestfit_.size() == 0 && e.balance_.empty() && e.has_bands_ == 0 && e.have_enough_data() == 0);
    e.add_unbanded(p1, q1, giAxisX);
    EXPECT_TRUE(e.has_bands_ == 0 && e.have_enough_data() == 1 && e.have_constraints() == 0);
    locked.lock_direction(giAxisX, giAxisY, 0);
    EXPECT_TRUE(locked.have_constraints() == 1 && locked.have_enough_data() == 1);
    e.add_bestfit(p1, q1, giAxisX, -DBL_MAX, 1.0, 1.0);
    locked.add_bestfit(p1, q1, giAxisX, 0.0, DBL_MAX, 1.0);
    EXPECT_TRUE(e.has_bands_ == 1 && locked.has_bands_ == 1);
}

TEST(PointsToPlanes, PairsBalanceRecords) {
    engine_host e;
    e.add_unbanded(p1, q1, giAxisY);
    e.add_balance(p1, q1, giAxisX, 0.25, p2, q2, giAxisZ, 4.0, 2.0);
    e.add_unbanded(p2, q2, giAxisZ, 3.0);
    std::vector<std::pair<int, double>> const expected = {{-1, 0.0}, {2, 0.25}, {1, 4.0}};
    EXPECT_EQ(expected, e.balance_);
    // Under a shift, without the weights: -0.5 + 0.1, the pair (-0.5 + 0.2) / 4 + 4 (-1 + 0.5), and -1 + 0.5. Another
    // pair has no effect.
    giXform3 const x(giXformTranslate, giVector3(0.2, 0.1, 0.5));
    for (int const first : {4, 6}) {
        EXPECT_NEAR(0.16 + 2.075 * 2.075 + 0.25, e.best_fit_deviation_with_transform(x), 1e-14);
        e.add_balance(p1, q1, giAxisX, 1.0, p1, q1, giAxisX, -1.0, -2.0);
        EXPECT_EQ((std::pair<int, double>(first + 1, 1.0)), e.balance_.at(static_cast<std::size_t>(first)));
    }
    e.clear_bestfit_data();
    EXPECT_TRUE(e.bestfit_.size() == 0 && e.balance_.empty());
}

// A part that is turned twice, always from where it was at first.
TEST(PointsToPlanes, TakesPlanesOfAWorkplaneAndTransformsThemFromTheirSources) {
    engine_host e;
    giWorkplane3 const frame(giPoint3(giOrigin), giAxisZ, giAxisX);  // u is y
    e.add_positioning(p1, frame, q1, host::PLANE_IGNORED, host::PLANE_IGNORED, host::PLANE_IGNORED, 1);
    EXPECT_TRUE(e.have_constraints() == 0 && e.standard_deviation_of_nominals(aside) == 0.0);
    e.add_positioning(p2, q2, giAxisX, 0);
    e.add_positioning(p1, frame, q1, host::PLANE_LOCKED, host::PLANE_WEAK, host::PLANE_RESERVE, 1);
    e.lock_direction(lock_axis, giAxisX, 1);
    ASSERT_TRUE(e.positioning_.size() == 3 && e.reserve_.size() == 1 && e.have_constraints() == 1);
    giVector3 const normals[] = {e.positioning_[1].normal, e.positioning_[2].normal, e.reserve_[0].normal};
    double const weights[] = {1.0, 0.001, 1.0};
    for (int k = 0; k < 3; ++k) {
        giVector3 const axis(static_cast<gi_Axis>((k + 1) % 3));
        EXPECT_EQ(0.0, (normals[k] - weights[k] * axis).length()) << k;
    }
    EXPECT_TRUE(e.positioning_[2].weight == 0.001 && e.reserve_[0].weight == 1.0 && e.reserve_[0].located == 1);
    double const nominal = e.standard_deviation_of_nominals(aside);
    EXPECT_NEAR(std::sqrt((1.0 + 1.5 * 1.5 + 5.0 * 5.0) / 3.0), nominal, 1e-15);
    giXform3 const x(giXformRotate, p2, general_direction(), giAngle(giAngleDegrees, 40.0));
    for (giXform3 const & transform : {x, aside, x}) {
        e.transform_rps_data(transform);
        EXPECT_EQ(0.0, e.positioning_[0].point.distance(transform * p2) + e.positioning_[0].plane_point.distance(q2));
        EXPECT_EQ(0.0, e.positioning_[2].point.distance(transform * p1) + e.positioning_[2].plane_point.distance(q1));
        EXPECT_EQ(0.0, e.reserve_[0].point.distance(transform * p1));
        EXPECT_EQ(0.0, (e.locked_from_[0] - transform * lock_axis).length());
        EXPECT_EQ(nominal, e.standard_deviation_of_nominals(aside));
    }
}

TEST(PointsToPlanes, TurnsDirectionsOntoEachOther) {
    giVector3 const from = 3.0 * general_direction();
    giUnitVec3 const across = general_direction().any_normal();
    giPoint3 const origin(giOrigin);
    giXform3 matrix;
    for (double const degrees : {0.0, 1e-5, 0.57, 0.58, 90.0, 179.42, 179.43, 180.0}) {
        giAngle const angle(giAngleDegrees, degrees);
        giVector3 const to = 2.0 * (angle.cos() * general_direction() + angle.sin() * across);
        host::find_lock_matrix(from, to, matrix);
        EXPECT_NEAR(0.0, (matrix * from.unit() - to.unit()).length(), 1e-15);
        EXPECT_EQ(0.0, (matrix * origin).distance(origin));
        host::find_flip_matrix(to, matrix);
        EXPECT_NEAR(0.0, (matrix * to + to).length(), 1e-15);
        EXPECT_NEAR(-1.0, matrix.matrix()(0, 0) + matrix.matrix()(1, 1) + matrix.matrix()(2, 2), 1e-15);
    }
    for (giVector3 const & bad : {giVector3(), nowhere}) {
        host::find_lock_matrix(from, bad, matrix);
        EXPECT_TRUE(equal(unity, matrix, 0.0));
        host::find_flip_matrix(bad, matrix);
        EXPECT_TRUE(equal(unity, matrix, 0.0));
    }
}

}  // namespace
