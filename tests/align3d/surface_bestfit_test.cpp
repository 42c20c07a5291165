#include "align3d/test_surfaces.h"

#include <datumfit/align3d/surf_projector_for_fitting3.h>
#include <datumfit/align3d/surface_bestfit.h>
#include <gtest/gtest.h>

#include <limits>

using namespace align3d_tests;

namespace {

constexpr double unbounded = std::numeric_limits<double>::max(), no_foot = std::numeric_limits<double>::quiet_NaN();
constexpr double size = 60.0;
constexpr double left_out_turn = 1e-7;  // a step does not carry out a smaller one

struct Counting : sqSurfProjectorForFitting3 {
    using sqSurfProjectorForFitting3::sqSurfProjectorForFitting3;
    void project_batch(std::function<sqFitPoint3 const &(int)> const & point,
                       std::function<sqProjectedPoint3 &(int)> const & result, int count, int initial,
                       giXform3 const & x) const override {
        ++(initial ? initial_passes : passes);
        sqSurfProjectorForFitting3::project_batch(point, result, count, initial, x);
    }
    mutable int initial_passes = 0, passes = 0;
};

// Everything that a fit needs, and what came out.
struct Fit {
    rectangles surface;
    Counting projector{surface};
    sqSurfaceBestfit fit;
    giXform3 x;
    double largest = -1.0, positive = -1.0, negative = 1.0;
    int invalid = -1;

    explicit Fit(rectangles const & nominal = {}) : surface(nominal) { fit.set_projector(&projector); }

    // The points as they lie before the motion, the first of them with a band.
    void add(std::vector<sqProbedPoint3> const & points, giXform3 const & back, double lower = -unbounded,
             double upper = unbounded) {
        for (sqProbedPoint3 const & p : points) {
            sqFitPoint3coPrf const point =
                probed(back * p.measured_point(), back * giVector3(p.approximate_normal()), p.radius());
            fit.nb_points() == 0 ? fit.add_point(point, lower, upper, 1.0) : fit.add_point(point);
        }
    }
    void run(double tolerance) { fit.fit(tolerance, x, largest, positive, negative, invalid); }
};

enum class Form { free, direction, plane, line, fixed, origin, shifts };

// A lock, by what it says of the nominal side.
struct Lock {
    Form form;
    giVector3 axis = giVector3(0.1, -0.2, 1.0), d1 = giVector3(2.0, 1.0, 0.0), d2 = giVector3(-1.0, 2.0, 0.0);
    giPoint3 origin = giPoint3(3.0, -2.0, 5.0);
    giXform3 back = inverse(motion(giUnitVec3(1.0, 2.0, -1.5), 0.01, giVector3(0.2, -0.3, 0.25)));
    giXform3 back_of_lock;

    // With the measured side off, the points would have it otherwise.
    Lock(Form f, bool is_off) : form(f) {
        if (form == Form::shifts) back = giXform3(giXformTranslate, -0.1 * d1 + 0.2 * d2);
        giXform3 const off = motion(giUnitVec3(1.0, 0.0, 0.5), 0.004, giVector3(0.2, 0.1, 0.3));
        back_of_lock = is_off ? back * inverse(off) : back;
    }

    bool has_axis() const { return form >= Form::direction && form <= Form::fixed; }

    void set(sqSurfaceBestfit & fit) const {
        auto const type = static_cast<sqSurfaceBestfitLockedAxisType>(static_cast<int>(form) - 1);
        giPoint3 const from = back_of_lock * origin;
        if (has_axis()) fit.lock_axis(type, 3.0 * (back_of_lock * axis), axis, from, origin);
        if (form == Form::origin) fit.lock_origin(from, origin);
        if (form == Form::shifts) fit.lock_rotations(d1, giVector3(), d2);
    }

    void expect_kept(giXform3 const & x) const {
        giVector3 const off = x * (form == Form::shifts ? origin : back_of_lock * origin) - origin;
        giUnitVec3 const a(axis);
        giVector3 lost(0.0, 0.0, 0.0);  // what should be null
        if (form == Form::plane) lost = a.dot(off) * a;
        if (form == Form::line) lost = a.project_normal(off);
        if (form == Form::fixed || form == Form::origin) lost = off;
        if (has_axis()) lost += a.cross(x * (back_of_lock * axis));
        EXPECT_NEAR(0.0, lost.length(), 1e-9);
        if (form != Form::shifts) return;
        EXPECT_NEAR(0.0, off.dot(d1.cross(d2)), 1e-9);
        EXPECT_TRUE(equal(x, giXform3(giXformTranslate, off), 1e-12));
    }
};

// On the plane z = its nominal height, which changes from pass to pass; it starts at height 0.
struct Scripted : sqFitPoint3 {
    explicit Scripted(std::vector<double> nominal_heights) : heights(std::move(nominal_heights)) {}
    void initial_projection(sqProjectedPoint3 & r, sqFitPointProjector3 const * projector) const override {
        project_from_position(giXformIdentity, r, projector);
    }
    void project_from_position(giXform3 const & x, sqProjectedPoint3 & r, sqFitPointProjector3 const *) const override {
        double const h = heights.at(std::min(pass++, heights.size() - 1));
        giPoint3 const p = x * giPoint3(giOrigin);
        r = std::isnan(h) ? sqProjectedPoint3() : sqProjectedPoint3(p, giPoint3(p.x(), p.y(), h), giAxisZ);
    }
    std::vector<double> heights;
    mutable std::size_t pass = 0;
};

// Points that only move up and down.
struct Lift : Fit {
    struct Point {
        std::vector<double> nominal_heights;  // one a pass
        double lower, upper, weight = 1.0;
    };
    explicit Lift(std::vector<Point> const & points) {
        fit.lock_rotations(giAxisZ, giVector3(), giVector3());
        for (Point const & p : points) fit.add_point(new Scripted(p.nominal_heights), p.lower, p.upper, p.weight);
        run(1e-9);
    }
    double height() const { return (x * giPoint3(giOrigin)).z(); }
};

class SurfaceBestfitLock : public testing::TestWithParam<Form> {};

}  // namespace

TEST_P(SurfaceBestfitLock, BringsAnExactPartBackAndKeepsABandThatBinds) {
    std::vector<sqProbedPoint3> const points = box_probes(36, 0.8, 0.0);
    for (double const lower : {-unbounded, 0.02}) {
        Lock const lock(GetParam(), false);
        Fit f(box());
        f.add(points, lock.back, lower);
        lock.set(f.fit);
        f.run(1e-12);
        lock.expect_kept(f.x);
        EXPECT_TRUE(f.invalid == 0 && f.fit.overdetermined_constraints().size() == 0);
        EXPECT_NEAR(std::max(lower, 0.0), f.fit.get_pointcloud()[0].signed_distance(), left_out_turn * size);
        for (sqProbedPoint3 const & p : points) {
            giPoint3 const home = f.x * (lock.back * p.measured_point());
            EXPECT_LT(p.measured_point().distance(home), lower < 0.0 ? left_out_turn * size : 1.0);
        }
    }
    Lock const off(GetParam(), true);
    Fit f(box());
    f.add(points, off.back);
    off.set(f.fit);
    f.run(1e-12);
    off.expect_kept(f.x);
}

INSTANTIATE_TEST_SUITE_P(Forms, SurfaceBestfitLock,
                         testing::Values(Form::free, Form::direction, Form::plane, Form::line, Form::fixed,
                                         Form::origin, Form::shifts));

// A turn about an origin that is far away, linearised, would throw the part away.
TEST(SurfaceBestfit, BringsAPartHomeFarFromTheOrigin) {
    for (double const distance : {0.0, 1e3, 1e6}) {
        SCOPED_TRACE(distance);
        giXform3 const place(giXformTranslate, distance * giVector3(1.0, -0.7, 0.4));
        giXform3 const back = place * inverse(motion(giUnitVec3(1.0, 2.0, -1.5), 0.02, giVector3(0.3, -0.2, 0.4)));
        std::vector<sqProbedPoint3> const points = box_probes(36, 0.8, 0.0);
        Fit f(box());
        f.surface.apply(place);
        f.add(points, back);
        f.run(1e-9);
        EXPECT_EQ(0, f.invalid);
        for (sqProbedPoint3 const & p : points) {
            giPoint3 const home = place * p.measured_point();
            EXPECT_LE(home.distance(f.x * (back * p.measured_point())), left_out_turn * size + 1e-14 * distance);
        }
    }
}

TEST(SurfaceBestfit, NumbersTheBandsThatItGivesUp) {
    std::vector<double> const level = {0.0}, late = {no_foot, 0.0}, early = {0.0, no_foot};
    struct {
        char const * what;
        std::vector<Lift::Point> points;
        numbers given_up;
        double height;
        int initial_passes = 1;
    } const cases[] = {
        {"of equal weights the later end goes", {{level, 1.0, 1.1}, {level, -1.1, -1.0}}, {3}, 1.0},
        {"heavy second", {{level, 1.0, 1.1, 1.0}, {level, -1.1, -1.0, 2.0}}, {0}, -1.0},
        {"a first point that comes after a conflict",
         {{late, 0.5, 5.0}, {level, 1.0, 1.1}, {level, -1.1, -1.0}},
         {5},
         1.0},
        {"and is in conflict then", {{late, 3.0, 4.0}, {level, 1.0, 1.1}, {level, -1.1, -1.0}}, {3, 5}, 3.0},
        {"a lost point between ends given up before and after, and open ends without a number",
         {{level, 1.0, 1.1},
          {level, -1.1, -1.0},
          {early, 0.9, unbounded},
          {level, -unbounded, unbounded},
          {level, -unbounded, 1.1},
          {{2.0, 0.0}, -1.1, -1.0}},
         {3, 7},
         1.0},
        // The second point needs more height than the first allows: back to the last place where all were kept.
        {"from the second pass on", {{level, 1.0, 1.1}, {{0.0, 3.0}, -0.5, 5.0}}, {2}, 0.0, 2},
        {"from the third pass on", {{{0.0, 0.5}, 1.0, 1.1}, {{0.0, 0.0, 3.0}, -0.5, 5.0}}, {2}, 1.0}};
    for (auto const & c : cases) {
        SCOPED_TRACE(c.what);
        Lift const lift(c.points);
        EXPECT_EQ(c.given_up, numbers_in(lift.fit.overdetermined_constraints()));
        EXPECT_NEAR(c.height, lift.height(), c.height == 0.0 ? 0.0 : 1e-9);
        EXPECT_NEAR(c.height, lift.fit.get_pointcloud()[1].measured_point().z(), 1e-9);
        EXPECT_EQ(c.initial_passes, lift.projector.initial_passes);
    }
}

TEST(SurfaceBestfit, FindsPointsAgainThatALockBringsBack) {
    Fit f;
    f.surface.add(giOrigin, giAxisY, giAxisZ, 10.0, 1.0);  // long along x
    for (double const y : {-8.0, -3.0, 4.0, 9.0}) f.fit.add_point(probed(giPoint3(0.3, y, 0.2), giAxisZ, 0.0));
    f.run(1e-9);
    EXPECT_EQ(4, f.invalid);
    EXPECT_TRUE(equal(f.x, giXformIdentity, 0.0));
    f.fit.lock_axis(sqLOCKED_AXIS_DIRECTION, giAxisY, giAxisX, giPoint3(), giPoint3());
    f.run(1e-9);
    EXPECT_EQ(0, f.invalid);
    EXPECT_LT(f.largest, 1e-9);
    EXPECT_NEAR(1.0, (f.x * giVector3(giAxisY)).x(), 1e-12);
}

TEST(SurfaceBestfit, CountsItsPasses) {
    Fit f(box());
    f.fit.add_point(probed(giOrigin, giAxisX, 1.0), 0.0, 1.0, 0.0);
    f.fit.add_point(sqFitPoint3coPrf());
    f.run(0.0);
    EXPECT_TRUE(f.fit.nb_points() == 0 && f.invalid == -1 && f.x.invalid());  // without points no result is touched

    f.add(box_probes(36, 0.8, 0.05), Lock(Form::free, false).back);
    f.run(1e-9);
    giXform3 const first = f.x;
    EXPECT_LT(f.projector.passes, 15);
    f.projector.passes = 0;
    f.run(0.0);
    EXPECT_EQ(1 + 50, f.projector.passes);
    EXPECT_EQ(1, f.projector.initial_passes);
    EXPECT_TRUE(equal(first, f.x, 1e-9));
    // A fit from the same start goes the same way, to the last bit.
    giXform3 const second = f.x;
    f.run(0.0);
    EXPECT_TRUE(equal(second, f.x, 0.0));
    // Without a projector nothing has a place.
    f.fit.set_projector(nullptr);
    f.run(1e-9);
    EXPECT_TRUE(f.invalid == 36 && f.largest == 0.0);
}

TEST(SurfaceBestfit, WeighsPointsByTheirRatio) {
    for (double const scale : {1.0, 1e9, 1e-9}) {
        Lift const lift({{{0.0}, -unbounded, unbounded, -1.0 * scale}, {{3.0}, -unbounded, unbounded, 2.0 * scale}});
        // Squares of 1 and 4, beside the share of 0.01 for each point that is not weighted; the mean weight is 1.
        EXPECT_NEAR(3.0 * (16.0 / 9.0 + 0.01) / (20.0 / 9.0 + 0.02), lift.height(), 1e-12);
    }
}
