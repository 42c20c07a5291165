#include "align3d/engine_host.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>

namespace {

using namespace align3d_tests;

// Points and planes that hold a part: three on its base, two on a side, one on an end; with `deep` further points all
// around it, and the pose in which it was measured.
struct reference_system {
    giVector3 normals[6] = {giAxisZ, giAxisZ, giAxisZ, giAxisY, giAxisY, giAxisX};
    giPoint3 places[6] = {{-40, -30, 0}, {40, -30, 0}, {0, 35, 0}, {-45, -40, 10}, {45, -40, 12}, {-50, 0, 8}};
    giXform3 measured;

    explicit reference_system(noise & random, double size = 1.0) {
        for (giPoint3 & p : places) p = giPoint3(size * p.x(), size * p.y(), size * p.z());
        measured = giXform3(giXformRotate, general_point(0.0), giUnitVec3(random.vector(1.0)),
                            giAngle(giAngleRadians, 2.0 * random()));
        measured.premultiply(giXform3(giXformTranslate, random.vector(100.0 * size)));
    }
    void add_to(sqPointsToPlanes & e, int n = 6) const {
        for (int i = 0; i < n; ++i) e.add_positioning(measured * places[i], places[i], normals[i], 1);
    }
    double distance_left(giXform3 const & x) const {
        double worst = 0.0;
        for (giPoint3 const & p : places) worst = std::max<double>(worst, p.distance(x * (measured * p)));
        return worst;
    }
};

TEST(GlobalSearch, BringsAPartHomeFromAnyPose) {
    noise random;
    for (double const size : {1e-2, 1.0, 1e3}) {
        for (int pose = 0; pose < 8; ++pose) {
            reference_system const part(random, size);
            engine_host e;
            part.add_to(e);
            giXform3 x;
            double deviation = -1.0;
            EXPECT_EQ(e.fit(x, 0.01 * size, &deviation), deviation);
            EXPECT_LT(deviation, 1e-5 * size);
            EXPECT_LT(part.distance_left(x), 1e-4 * size) << size << " " << pose;
        }
    }
}

// Five points leave a shift along x, which the mass of points then decides; half of the pulls cancel in a balance.
TEST(GlobalSearch, LetsBestfitRecordsDecideWhatPositioningLeaves) {
    noise random;
    reference_system const part(random);
    engine_host e;
    part.add_to(e, 5);
    for (int i = 0; i < 60; ++i) {
        giPoint3 const q = giPoint3(giOrigin) + random.vector(30.0);
        giPoint3 const p = part.measured * (q + giVector3(i % 2 ? 0.1 : 0.3, 0.0, 0.0));
        if (i % 2) {
            e.add_bestfit(p, q, giAxisX, -DBL_MAX, DBL_MAX, 1.0);
        } else {
            e.add_balance(p, q, giAxisX, 0.5, p, q, giAxisX, 0.5, 1.0);
        }
    }
    giXform3 x;
    double positioning;
    EXPECT_NEAR(e.fit(x, 0.01, &positioning), 0.1, 1e-6);
    EXPECT_LT(positioning, 1e-6);
    EXPECT_NEAR(part.distance_left(x), 0.2, 1e-6);

    // One of the points may not be off by more than its band.
    giPoint3 const q(10.0, 5.0, -3.0);
    e.add_bestfit(part.measured * (q + giVector3(0.3, 0.0, 0.0)), q, giAxisX, -DBL_MAX, 0.05, 1.0);
    e.fit(x, 0.01, &positioning);
    EXPECT_LT(positioning, 1e-4);
    EXPECT_NEAR(part.distance_left(x), 0.25, 1e-3);
}

TEST(GlobalSearch, TurnsALockedDirectionRoundOnlyWhenNothingElseFits) {
    noise random;
    for (bool const reversed : {false, true}) {
        for (int const flip_allowed : {0, 1}) {
            reference_system const part(random);
            engine_host e;
            part.add_to(e);
            e.lock_direction(part.measured * ((reversed ? -1.0 : 1.0) * giVector3(giAxisZ)), giAxisZ, flip_allowed);
            giXform3 x;
            EXPECT_LT(e.fit(x, 0.01, nullptr), 1e-5);  // upside down the points lie on their planes as well
            EXPECT_EQ(part.distance_left(x) < 1e-4, !reversed || flip_allowed);
        }
    }
}

TEST(GlobalSearch, ShiftsAtOnceWhenRotationsAreLocked) {
    engine_host e;
    e.lock_rotations(giAxisX, giAxisZ, giVector3());
    giPoint3 const q(1.0, 2.0, 3.0);
    for (gi_Axis const n : {giAxisX, giAxisY, giAxisZ}) e.add_unbanded(q + giVector3(0.5, 0.25, -2.0), q, n);
    giXform3 x;
    EXPECT_NEAR(e.fit(x, 1e-9, nullptr), 0.25, 1e-15);
    EXPECT_TRUE(equal(x, giXform3(giXformTranslate, giVector3(-0.5, 0.0, 2.0)), 1e-14));
}

TEST(GlobalSearch, SaysNothingOfNoRecords) {
    engine_host e;
    e.lock_direction(giAxisX, giAxisY, 0);
    giXform3 x;
    double untouched = 4.5;
    EXPECT_EQ(e.fit(x, 0.01, &untouched), 0.0);
    EXPECT_TRUE(x.identity());
    EXPECT_EQ(untouched, 4.5);
}

// A search that begins at the identity takes the nearest solution; one at random finds the pose as well from any other,
// and on every call the same bits.
TEST(GlobalSearch, RepeatsItself) {
    noise random;
    reference_system const part(random);
    engine_host e, patient;
    part.add_to(e);
    part.add_to(patient);
    giXform3 x, again, slow;
    e.fit(x, 0.01, nullptr);
    e.fit(again, 0.01, nullptr);
    patient.increase_num_guesses();
    patient.fit(slow, 0.01, nullptr);
    EXPECT_TRUE(equal(x, again, 0.0));
    EXPECT_TRUE(equal(x, slow, 0.0));
}

TEST(GlobalSearch, NumbersPartnersBehindPositioningRecords) {
    engine_host e;
    giPoint3 const p(1.0, 2.0, 3.0);
    e.add_unbanded(p, p, giAxisX);
    e.add_balance(p, p, giAxisX, 0.25, p, p, giAxisY, 0.75, 2.0);
    e.add_positioning(p, p, giAxisZ, 1);
    e.add_positioning(p, giWorkplane3(giOrigin, giAxisY, giAxisZ), p, sqPointsToPlanes::PLANE_IGNORED,
                      sqPointsToPlanes::PLANE_IGNORED, sqPointsToPlanes::PLANE_WEAK, 1);
    sqPlaneAndPointcoDynArr pairs;
    std::vector<std::pair<int, double>> balance;
    e.data_for_downhill(pairs, balance, 0, 1);
    std::vector<std::pair<int, double>> const expected = {{-1, 0.0}, {-1, 0.0}, {-1, 0.0}, {4, 0.25}, {3, 0.75}};
    EXPECT_EQ(balance, expected);
    ASSERT_EQ(pairs.size(), 5);
    EXPECT_EQ(pairs[0].normal.length(), 1000.0);
    EXPECT_NEAR(pairs[1].normal.length(), 1.0, 1e-15);
    EXPECT_EQ(pairs[1].weight, 0.001);
    EXPECT_EQ(pairs[0].located + pairs[1].located, 0);
    EXPECT_EQ(pairs[2].located, 1);

    balance.clear();
    e.data_for_downhill(pairs, balance, 1, 0);
    EXPECT_EQ(pairs.size(), 2);
    EXPECT_TRUE(balance.empty());
}

}  // namespace
