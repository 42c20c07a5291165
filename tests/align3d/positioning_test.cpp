#include "align3d/engine_host.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace align3d_tests;
using engine = sqPointsToPlanes;

struct record {
    giPoint3 place;
    giVector3 normal;
};

giVector3 const x_dir(giAxisX), y_dir(giAxisY), z_dir(giAxisZ);
giPoint3 const a(0, 0, 0), b(50, 5, 0), c(10, 40, 3);
giXform3 const pose =
    giXform3(giXformTranslate, giVector3(70, -20, 35))
        .postmultiply(giXform3(giXformRotate, c, giUnitVec3(1, -2, 0.5), giAngle(giAngleDegrees, 130)));

void add(engine_host & e, std::vector<record> const & records) {
    for (record const & r : records) e.add_positioning(pose * r.place, r.place, r.normal, 1);
}

// The classical pattern of three, two and one point.
std::vector<record> const consistent = {{a, z_dir}, {b, z_dir}, {c, z_dir}, {a, y_dir}, {b, y_dir}, {a, x_dir}};

constexpr auto under = engine::POSITIONING_UNDETERMINED, determined = engine::POSITIONING_DETERMINED,
               over = engine::POSITIONING_OVERDETERMINED;

// A reference system of random points and of planes along three random directions, each met in a random pose.
struct random_system {
    std::vector<record> records;
    giXform3 measured;
    int contradiction = -1;  // which record has none to go with

    random_system(int pattern, noise & random) {
        giUnitVec3 const u(random.vector(1.0)), v = u.any_normal(), w(u.cross(v));
        auto const point = [&] { return giPoint3(giOrigin) + random.vector(30.0); };
        auto const pin = [&](giPoint3 const & p, std::vector<giVector3> const & normals) {
            for (giVector3 const & n : normals) records.push_back({p, n});
        };
        giPoint3 const p = point(), q = point(), r = point();
        if (pattern <= 1) {
            auto const at = [&](double along_u, double along_v, double along_w) {
                giVector3 const &du = u, &dv = v, &dw = w;
                return p + (along_u * du + along_v * dv + along_w * dw);
            };
            for (giPoint3 const & base : {at(-40, -30, 0), at(40, -30, 0), at(0, 35, 0)}) pin(base, {w});
            if (pattern == 0) {
                pin(at(-45, -40, 10), {v});
                pin(at(45, -40, 12), {v});
                pin(at(-50, 0, 8), {u});
            }
        } else if (pattern == 2) {
            pin(p, {w, v});
            pin(q, {w, v});
            pin(r, {w});
        } else if (pattern == 3) {
            pin(p, {u, v, w});
        } else if (pattern == 4) {
            pin(p, {u, v, w});
            pin(q, {u, v, w});
        } else if (pattern == 5) {
            for (double const t : {0.0, 0.4, 1.0}) pin(p.interpolate(q, t), {u, v, w});
        } else {
            for (giPoint3 const & at : {p, q, r}) pin(at, {u, v, w});
            if (pattern == 7) contradiction = 8;
        }
        measured = giXform3(giXformTranslate, random.vector(50.0))
                       .postmultiply(giXform3(giXformRotate, giOrigin, giUnitVec3(random.vector(1.0)),
                                              giAngle(giAngleRadians, 2.0 * random())));
    }
    void add_to(sqPointsToPlanes & e) const {
        for (int i = 0; i < static_cast<int>(records.size()); ++i) {
            record const & r = records[static_cast<std::size_t>(i)];
            giPoint3 const p = i == contradiction ? r.place + 1.5 * r.normal : r.place;
            e.add_positioning(measured * p, r.place, r.normal, 1);
        }
    }
    // How many of the freedoms that a lock of that direction leaves, all of them when it is null, the planes take.
    int freedoms_taken(giVector3 const * axis) const {
        int const n = axis ? 4 : 6;
        mlMatrix rows(mlMatrixZero, static_cast<int>(records.size()) + n, n);
        for (int i = 0; i < static_cast<int>(records.size()); ++i) {
            record const & r = records[static_cast<std::size_t>(i)];
            giVector3 const arm = (1.0 / 30.0) * r.place.release().cross(r.normal);
            double const turn = axis ? arm.dot(*axis) : arm.x();
            double const row[] = {r.normal.x(), r.normal.y(), r.normal.z(), turn, arm.y(), arm.z()};
            for (int k = 0; k < n; ++k) rows(i, k) = row[k];
        }
        mlSingularValueDecomposition const svd(rows);
        return static_cast<int>(
            std::count_if(svd.diagonal().data(), svd.diagonal().data() + n, [](double x) { return x > 1e-6; }));
    }
};

TEST(Positioning, AgreesWithTheRankOfItsPlanes) {
    noise random;
    for (int i = 0; i < 120; ++i) {
        int const pattern = i % 8;
        SCOPED_TRACE(testing::Message() << i << ", pattern " << pattern);
        random_system const system(pattern, random);
        engine_host free, axis, shifts;
        for (engine_host * e : {&free, &axis}) system.add_to(*e);
        giVector3 const locked = i / 8 % 2 ? system.records[0].normal : giVector3(giUnitVec3(random.vector(1.0)));
        axis.lock_direction(system.measured * locked, locked, 0);
        auto const expected = [&](giVector3 const * lock) {
            return system.contradiction >= 0                       ? over
                   : system.freedoms_taken(lock) == (lock ? 4 : 6) ? determined
                                                                   : under;
        };
        giXform3 x;
        EXPECT_EQ(free.test_positioning(1, x), expected(nullptr));
        EXPECT_EQ(x.invalid(), system.contradiction >= 0);
        EXPECT_EQ(axis.test_positioning(1, x), expected(&locked));

        // Where only shifts are allowed, three points that are not on a line are enough, whatever their planes.
        random_system unturned = system;
        unturned.measured = aside;
        unturned.add_to(shifts);
        shifts.lock_rotations(giAxisX, giAxisY, giAxisZ);
        bool const enough = pattern <= 2 || pattern >= 6;
        EXPECT_EQ(shifts.test_positioning(1, x), system.contradiction >= 0 ? over : enough ? determined : under);
    }
    giXform3 untouched;
    EXPECT_EQ(engine().test_positioning(1, untouched), under);
    EXPECT_TRUE(untouched.invalid());
}

// The line of two points along a locked direction is that of the measured points too.
TEST(Positioning, SeesTheTurnAboutALockedLine) {
    for (giXform3 const & measured : {unity, pose}) {
        engine_host e;
        e.lock_direction(measured * z_dir, z_dir, 0);
        for (giPoint3 const & p : {a, a + 9.0 * z_dir}) {
            for (giVector3 const & n : {x_dir, y_dir, z_dir}) e.add_positioning(measured * p, p, n, 1);
        }
        giXform3 x;
        EXPECT_EQ(e.test_positioning(1, x), under);
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
