#include "engine_host.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using host = sqPointsToPlanes;

giPoint3 const p1(1.0, 2.0, 3.0), p2(-2.0, 0.5, 1.0), q1(1.5, 2.5, 1.0), q2(0.0, 1.0, 2.0);

TEST(PointsToPlanes, LeavesOutRecordsWithoutWeight) {
    engine_host e;
    EXPECT_EQ(0, e.have_enough_data());
    e.add_bestfit(p1, q1, giAxisX, 0.0, 1.0, 0.0);
    e.add_balance(p1, q1, giAxisX, 1.0, p2, q2, giAxisX, 1.0, 0.0);
    EXPECT_TRUE(e.bestfit_.size() == 0 && e.balance_.empty() && e.has_bands_ == 0 && e.have_enough_data() == 0);
    e.add_unbanded(p1, q1, giAxisX);
    EXPECT_TRUE(e.has_bands_ == 0 && e.have_enough_data() == 1 && e.have_constraints() == 0);
    e.add_bestfit(p1, q1, giAxisX, -DBL_MAX, 1.0, 1.0);
    EXPECT_EQ(1, e.has_bands_);
    engine_host other;
    other.add_bestfit(p1, q1, giAxisX, 0.0, DBL_MAX, 1.0);
    EXPECT_EQ(1, other.has_bands_);
    engine_host locked;
    locked.lock_direction(giAxisX, giAxisY, 0);
    EXPECT_TRUE(locked.have_constraints() == 1 && locked.have_enough_data() == 1);
}

TEST(PointsToPlanes, PairsBalanceRecords) {
    engine_host e;
    e.add_unbanded(p1, q1, giAxisY);
    e.add_balance(p1, q1, giAxisX, 0.25, p2, q2, giAxisZ, 4.0, 2.0);
    e.add_unbanded(p2, q2, giAxisZ, 3.0);
    std::vector<std::pair<int, double>> const expected = {{-1, 0.0}, {2, 0.25}, {1, 4.0}};
    EXPECT_EQ(expected, e.balance_);
    EXPECT_TRUE(e.bestfit_.size() == 4 && e.bestfit_[2].located == 1 && e.bestfit_[2].upper == DBL_MAX);
    // Under a shift, without the weights: -0.5 + 0.1, the pair (-0.5 + 0.2) / 4 + 4 (-1 + 0.5), and -1 + 0.5.
    giXform3 const x(giXformTranslate, giVector3(0.2, 0.1, 0.5));
    EXPECT_NEAR(0.16 + 2.075 * 2.075 + 0.25, e.best_fit_deviation_with_transform(x), 1e-14);
    e.add_balance(p1, q1, giAxisX, 1.0, p1, q1, giAxisX, -1.0, -2.0);
    EXPECT_EQ((std::pair<int, double>(5, 1.0)), e.balance_[4]);
    EXPECT_NEAR(0.16 + 2.075 * 2.075 + 0.25, e.best_fit_deviation_with_transform(x), 1e-14);
    e.clear_bestfit_data();
    EXPECT_TRUE(e.bestfit_.size() == 0 && e.balance_.empty());
}

TEST(PointsToPlanes, TakesPlanesOfAWorkplaneByTheirStates) {
    engine_host e;
    giWorkplane3 const frame(giPoint3(giOrigin), giAxisZ, giAxisX);  // u is y
    e.add_positioning(p1, frame, q1, host::PLANE_IGNORED, host::PLANE_IGNORED, host::PLANE_IGNORED, 1);
    EXPECT_EQ(0, e.have_constraints());
    e.add_positioning(p1, frame, q1, host::PLANE_LOCKED, host::PLANE_WEAK, host::PLANE_RESERVE, 1);
    ASSERT_TRUE(e.positioning_.size() == 2 && e.reserve_.size() == 1);
    EXPECT_EQ(0.0, (e.positioning_[0].normal - giVector3(0.0, 1.0, 0.0)).length());
    EXPECT_EQ(0.0, (e.positioning_[1].normal - giVector3(0.0, 0.0, 0.001)).length());
    EXPECT_EQ(0.0, (e.reserve_[0].normal - giVector3(1.0, 0.0, 0.0)).length());
    EXPECT_TRUE(e.positioning_[1].weight == 0.001 && e.reserve_[0].weight == 1.0 && e.reserve_[0].located == 1);
    EXPECT_EQ(0.0, e.reserve_[0].point.distance(p1) + e.positioning_[1].plane_point.distance(q1));
    EXPECT_EQ(1, e.have_constraints());
}

TEST(PointsToPlanes, LocksUnitDirectionsThatAreGiven) {
    engine_host e;
    e.lock_rotations(giVector3(0.0, 3.0, 4.0), giVector3(), giVector3(-2.0, 0.0, 0.0));
    ASSERT_EQ(2, e.shift_directions_.size());
    EXPECT_NEAR(0.0, (e.shift_directions_[0] - giVector3(0.0, 0.6, 0.8)).length(), 1e-16);
    EXPECT_EQ(-1.0, e.shift_directions_[1].x());
    e.lock_rotations(giVector3(), giVector3(), giVector3());
    EXPECT_EQ(0.0, e.shift_directions_[2].length());
}

// A part that is turned twice, always from where it was at first.
TEST(PointsToPlanes, TransformsReferencePointsFromTheirSources) {
    engine_host e;
    e.add_positioning(p1, q1, giAxisX, 1);
    giWorkplane3 const frame(giPoint3(giOrigin), giAxisY, giAxisZ);
    e.add_positioning(p2, frame, q2, host::PLANE_RESERVE, host::PLANE_WEAK, host::PLANE_IGNORED, 0);
    e.lock_direction(lock_axis, giAxisX, 1);
    giXform3 const x(giXformRotate, p2, general_direction(), giAngle(giAngleDegrees, 40.0));
    giXform3 const y(giXformTranslate, giVector3(1.0, 2.0, 3.0));
    double const nominal = e.standard_deviation_of_nominals(y);
    EXPECT_NEAR(std::sqrt((0.5 * 0.5 + 1.5 * 1.5) / 2.0), nominal, 1e-15);
    for (giXform3 const & transform : {x, y, x}) {
        e.transform_rps_data(transform);
        EXPECT_EQ(0.0, e.positioning_[0].point.distance(transform * p1));
        EXPECT_EQ(0.0, e.positioning_[1].point.distance(transform * p2));
        EXPECT_EQ(0.0, e.reserve_[0].point.distance(transform * p2));
        EXPECT_EQ(0.0, (e.locked_from_[0] - transform * lock_axis).length());
        EXPECT_EQ(nominal, e.standard_deviation_of_nominals(y));
    }
    EXPECT_EQ(0.0, e.positioning_[0].plane_point.distance(q1));
    EXPECT_EQ(0.0, host().standard_deviation_of_nominals(y));
}

TEST(PointsToPlanes, TurnsDirectionsOntoEachOther) {
    giVector3 const from = 3.0 * general_direction();
    giUnitVec3 const across = general_direction().any_normal();
    giXform3 matrix;
    for (double const degrees : {0.0, 1e-5, 0.57, 0.58, 90.0, 179.42, 179.43, 180.0}) {
        giAngle const angle(giAngleDegrees, degrees);
        giVector3 const to = 2.0 * (angle.cos() * general_direction() + angle.sin() * across);
        host::find_lock_matrix(from, to, matrix);
        EXPECT_NEAR(0.0, (matrix * from.unit() - to.unit()).length(), 1e-15);
        EXPECT_EQ(0.0, (matrix * giPoint3(giOrigin)).distance(giPoint3(giOrigin)));
        host::find_flip_matrix(to, matrix);
        EXPECT_NEAR(0.0, (matrix * to + to).length(), 1e-15);
        EXPECT_NEAR(-1.0, matrix.matrix()(0, 0) + matrix.matrix()(1, 1) + matrix.matrix()(2, 2), 1e-15);
    }
    for (giVector3 const & bad : {giVector3(), giVector3(0.0, 0.0, 0.0)}) {
        host::find_lock_matrix(from, bad, matrix);
        EXPECT_TRUE(equal(giXform3(giXformIdentity), matrix, 0.0));
        host::find_flip_matrix(bad, matrix);
        EXPECT_TRUE(equal(giXform3(giXformIdentity), matrix, 0.0));
    }
}

}  // namespace
