#include "align3d/engine_host.h"

#include <gtest/gtest.h>

namespace {

using namespace align3d_tests;
using engine = sqPointsToPlanes;

struct record {
    giPoint3 place;
    giVector3 normal;
};

giVector3 const x_dir(giAxisX), y_dir(giAxisY), z_dir(giAxisZ);
giPoint3 const a(0, 0, 0), b(50, 5, 0), c(10, 40, 3), between(25, 2.5, 0);
giXform3 const pose =
    giXform3(giXformTranslate, giVector3(70, -20, 35))
        .postmultiply(giXform3(giXformRotate, c, giUnitVec3(1, -2, 0.5), giAngle(giAngleDegrees, 130)));

void add(engine_host & e, std::vector<record> const & records) {
    for (record const & r : records) e.add_positioning(pose * r.place, r.place, r.normal, 1);
}

// The classical pattern of three, two and one point.
std::vector<record> const consistent = {{a, z_dir}, {b, z_dir}, {c, z_dir}, {a, y_dir}, {b, y_dir}, {a, x_dir}};

struct system_case {
    char const * name;
    std::vector<record> records;
    engine::POSITIONING_STATE free, locked;  // without a lock, and with z locked
};

class ReferenceSystems : public testing::TestWithParam<system_case> {};

constexpr auto under = engine::POSITIONING_UNDETERMINED, determined = engine::POSITIONING_DETERMINED,
               over = engine::POSITIONING_OVERDETERMINED;

INSTANTIATE_TEST_SUITE_P(
    Kinds, ReferenceSystems,
    testing::Values(
        system_case{"none", {}, under, under},
        system_case{"one_point", {{a, x_dir}, {a, y_dir}, {a, z_dir}}, under, under},
        system_case{"two_points", {{a, x_dir}, {a, y_dir}, {a, z_dir}, {b, y_dir}, {b, z_dir}}, under, determined},
        system_case{"two_on_the_locked_line",
                    {{a, x_dir}, {a, y_dir}, {a, z_dir}, {giPoint3(0, 0, 9), x_dir}, {giPoint3(0, 0, 9), y_dir}},
                    under,
                    under},
        system_case{"on_a_line",
                    {{a, x_dir}, {a, y_dir}, {a, z_dir}, {b, y_dir}, {b, z_dir}, {between, z_dir}},
                    under,
                    determined},
        system_case{"one_two_three",
                    {{a, z_dir}, {b, z_dir}, {c, z_dir}, {a, y_dir}, {b, y_dir}, {a, x_dir}},
                    determined,
                    determined},
        system_case{"parallel", {{a, z_dir}, {b, z_dir}, {c, z_dir}}, under, under},
        system_case{"contradictory", {{a, z_dir}, {b, z_dir}, {c, z_dir}, {a + z_dir, z_dir}}, under, under}),
    [](auto const & kind) { return kind.param.name; });

TEST_P(ReferenceSystems, AreClassified) {
    system_case const & s = GetParam();
    engine_host e, locked;
    add(e, s.records);
    add(locked, s.records);
    locked.lock_direction(pose * z_dir, z_dir, 0);
    giXform3 x, y;
    EXPECT_EQ(e.test_positioning(1, x), s.free);
    EXPECT_EQ(locked.test_positioning(1, y), s.locked);
    EXPECT_EQ(x.invalid(), s.free == over || s.records.empty());
    for (int i = 0; i < e.positioning_.size() && s.free != over; ++i) {
        sqPlaneAndPoint const & r = e.positioning_[i];
        EXPECT_NEAR((x * r.point - r.plane_point).dot(r.normal), 0.0, 1e-5);
    }
}

// Turned upside down the part meets its planes as well, unless its points are told to lie where they belong.
TEST(Positioning, NeedsPlacesOfPointsToTellSides) {
    engine_host e;
    add(e, consistent);
    giXform3 x;
    EXPECT_EQ(e.test_positioning(1, x), determined);
    EXPECT_EQ(e.test_positioning(0, x), under);
}

// The base points, then a record that contradicts the first, then others that go with it.
engine_host contradictory_system() {
    engine_host e;
    add(e, {consistent[0], consistent[1], consistent[2]});
    e.add_positioning(pose * a, a + 0.5 * z_dir, z_dir, 1);
    add(e, {consistent[3], consistent[4], consistent[5]});
    e.add_unbanded(a, b, z_dir);
    return e;
}

TEST(Positioning, DropsOnlyWhatContradicts) {
    for (bool const with_sources : {false, true}) {
        engine_host e = contradictory_system();
        if (with_sources) e.transform_rps_data(unity);
        giXform3 x, untouched;
        EXPECT_EQ(e.test_positioning(1, untouched), over);
        EXPECT_TRUE(untouched.invalid());

        e.fix_overdetermined_positioning(x);
        ASSERT_EQ(e.positioning_.size(), 6);
        for (int i = 0; i < 6; ++i) {
            record const & r = consistent[i];  // those behind the culprit come back in their order
            EXPECT_LT(e.positioning_[i].plane_point.distance(r.place) + (e.positioning_[i].normal - r.normal).length(),
                      1e-12)
                << i;
        }
        for (giPoint3 const & p : {a, b, c}) EXPECT_LT(p.distance(x * (pose * p)), 1e-4);
        EXPECT_EQ(e.bestfit_.size(), 1);
        EXPECT_EQ(e.test_positioning(1, x), determined);
        if (with_sources) {
            e.transform_rps_data(aside);
            for (int i = 0; i < 6; ++i) {
                EXPECT_LT(e.positioning_[i].point.distance(aside * (pose * e.positioning_[i].plane_point)), 1e-12);
            }
        }
    }
}

TEST(Positioning, TakesReserveRecordsThatNarrowIt) {
    engine_host e;
    auto const reserve = [&](giPoint3 const & place, giPoint3 const & plane_point, giVector3 const & n) {
        giWorkplane3 const plane(place, giUnitVec3(n).any_normal(), n);
        e.add_positioning(pose * place, plane, plane_point, engine::PLANE_IGNORED, engine::PLANE_IGNORED,
                          engine::PLANE_RESERVE, 1);
    };
    add(e, {consistent[0], consistent[1], consistent[2]});
    reserve(a, a + z_dir, z_dir);
    reserve(a, a, y_dir);
    reserve(b, b, y_dir);
    giXform3 x;
    EXPECT_EQ(e.fix_undetermined_positioning(x), 0);
    EXPECT_EQ(e.positioning_.size(), 5);  // the contradictory one stays in reserve
    EXPECT_EQ(e.reserve_.size(), 1);

    reserve(a, a, x_dir);
    reserve(b, b, x_dir);
    EXPECT_EQ(e.fix_undetermined_positioning(x), 1);
    EXPECT_EQ(e.positioning_.size(), 6);
    EXPECT_EQ(e.reserve_.size(), 2);
    for (giPoint3 const & p : {a, b, c}) EXPECT_LT(p.distance(x * (pose * p)), 1e-4);
}

TEST(Positioning, SetsRecordsAsideWithTheirSources) {
    engine_host e;
    sqRPSData taken;
    e.pop_back_rps(taken);
    EXPECT_TRUE(taken.point.invalid());

    add(e, {consistent[0], consistent[4]});
    e.transform_rps_data(aside);
    e.pop_back_rps(taken);
    EXPECT_EQ(e.positioning_.size(), 1);
    EXPECT_LT(taken.source_point.distance(pose * b), 1e-12);
    EXPECT_LT(taken.point.distance(aside * (pose * b)), 1e-12);
    e.undo_pop_back_rps(taken);
    e.transform_rps_data(unity);
    ASSERT_EQ(e.positioning_.size(), 2);
    EXPECT_LT(e.positioning_[1].point.distance(pose * b), 1e-12);
}

}  // namespace
