#include "align3d/test_surfaces.h"

#include <datumfit/align3d/surf_projector_for_fitting3.h>
#include <datumfit/align3d/surface_bestfit.h>
#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <random>

using namespace align3d_tests;

namespace {

constexpr double unbounded = std::numeric_limits<double>::max(), no_foot = std::numeric_limits<double>::quiet_NaN();
constexpr double probe_radius = 0.8, size = 60.0;
constexpr double left_out_turn = 1e-7;  // a step does not carry out a smaller one
std::array<double, 3> const half_sizes = {30.0, 20.0, 12.0};

// Probe centres around the box, six a face, off the surface by the probe radius and form errors of up to `noise`.
std::vector<sqProbedPoint3> probe_centres(double noise) {
    std::mt19937_64 engine(7);
    std::vector<sqProbedPoint3> points;
    for (std::size_t k = 0; k < 36; ++k) {
        std::size_t const axis = k % 3;
        std::array<double, 3> p = {}, n = {};
        n.at(axis) = k % 2 ? 1.0 : -1.0;
        auto const uniform = [&] { return static_cast<double>(engine() >> 11) * 0x1p-52 - 1.0; };
        for (std::size_t c = 0; c < 3; ++c) p.at(c) = 0.9 * half_sizes.at(c) * uniform();
        p.at(axis) = n.at(axis) * (half_sizes.at(axis) + probe_radius + noise * uniform());
        points.emplace_back(giPoint3(p[0], p[1], p[2]), giUnitVec3(n[0], n[1], n[2]), probe_radius);
    }
    return points;
}

enum class Form { free, direction, plane, line, fixed, origin, shifts };

// A lock, by what it says of the nominal side, and the motion that the part should go through.
struct Lock {
    Form form;
    giXform3 truth;
    giVector3 axis = giVector3(0.1, -0.2, 1.0), d1 = giVector3(2.0, 1.0, 0.0), d2 = giVector3(-1.0, 2.0, 0.0);
    giPoint3 origin = giPoint3(3.0, -2.0, 5.0);

    explicit Lock(Form f) : form(f), truth(motion(giUnitVec3(1.0, 2.0, -1.5), 0.01, giVector3(0.2, -0.3, 0.25))) {
        if (form == Form::shifts) truth = giXform3(giXformTranslate, 0.1 * d1 + -0.2 * d2);
    }

    bool has_axis() const { return form >= Form::direction && form <= Form::fixed; }
    giXform3 back() const { return inverse(truth); }

    void set(sqSurfaceBestfit & fit) const {
        auto const type = static_cast<sqSurfaceBestfitLockedAxisType>(static_cast<int>(form) - 1);
        if (has_axis()) fit.lock_axis(type, 3.0 * (back() * axis), axis, back() * origin, origin);
        if (form == Form::origin) fit.lock_origin(back() * origin, origin);
        if (form == Form::shifts) fit.lock_rotations(d1, giVector3(), d2);
    }

    // The motions that the lock leaves free, of this size.
    std::vector<giXform3> free_motions(double h) const {
        std::vector<giVector3> shifts = {giAxisX, giAxisY, giAxisZ}, turns = shifts;
        giUnitVec3 const a(axis), across = a.any_normal();
        if (has_axis()) turns = {a};
        if (form == Form::plane) shifts = {across, a.cross(across)};
        if (form == Form::line) shifts = {a};
        if (form == Form::fixed || form == Form::origin) shifts.clear();
        if (form == Form::shifts) shifts = {d1, d2}, turns.clear();
        std::vector<giXform3> result;
        for (giVector3 const & s : shifts) result.emplace_back(giXformTranslate, h * s);
        for (giVector3 const & t : turns) {
            result.emplace_back(giXformRotate, origin, t, giAngle(giAngleRadians, h / size));
        }
        return result;
    }

    void expect_kept(giXform3 const & x) const {
        giVector3 const off = x * (form == Form::shifts ? origin : back() * origin) - origin;
        giUnitVec3 const a(axis);
        giVector3 lost(0.0, 0.0, 0.0);  // what should be null
        if (form == Form::plane) lost = a.dot(off) * a;
        if (form == Form::line) lost = a.project_normal(off);
        if (form == Form::fixed || form == Form::origin) lost = off;
        if (has_axis()) lost += a.cross(x * (back() * axis));
        EXPECT_NEAR(0.0, lost.length(), 1e-9);
        if (form != Form::shifts) return;
        EXPECT_NEAR(0.0, off.dot(d1.cross(d2)), 1e-9);
        EXPECT_TRUE(equal(x, giXform3(giXformTranslate, off), 1e-12));
    }
};

// Everything that a fit to the box needs, and what came out.
struct BoxFit {
    rectangles surface = box(half_sizes[0], half_sizes[1], half_sizes[2]);
    sqSurfProjectorForFitting3 projector{surface};
    sqSurfaceBestfit fit;
    giXform3 x;
    double largest = -1.0, positive = -1.0, negative = 1.0;
    int invalid = -1;

    BoxFit() { fit.set_projector(&projector); }

    // The points as they lie before the motion, the first of them with a band.
    void add(std::vector<sqProbedPoint3> const & points, giXform3 const & back, double lower, double upper) {
        fit.reserve_points(static_cast<int>(points.size()));
        for (sqProbedPoint3 const & p : points) {
            giVector3 const & normal = p.approximate_normal();
            bool const banded = fit.nb_points() == 0;
            fit.add_point(probed(back * p.measured_point(), back * normal, p.radius()), banded ? lower : -unbounded,
                          banded ? upper : unbounded, 1.0);
        }
    }
    void run(double tolerance) { fit.fit(tolerance, x, largest, positive, negative, invalid); }
    double deviation(int i) const { return fit.get_pointcloud()[i].signed_distance(); }
    double sum_of_squares(giXform3 at) const {
        sqProjectedPoint3coDynArr cloud;
        fit.reproject_all_points(at, cloud);
        double sum = 0.0;
        for (int i = 0; i < cloud.size(); ++i) sum += cloud[i].distance().squared();
        return sum;
    }
};

// On the plane z = its nominal height, which changes from pass to pass; it starts at height 0.
struct Scripted : sqFitPoint3 {
    explicit Scripted(std::vector<double> nominal_heights) : heights(std::move(nominal_heights)) {}
    void initial_projection(sqProjectedPoint3 & r, sqFitPointProjector3 const * projector) const override {
        ++initial_projections;
        project_from_position(giXformIdentity, r, projector);
    }
    void project_from_position(giXform3 const & x, sqProjectedPoint3 & r, sqFitPointProjector3 const *) const override {
        double const h = heights.at(std::min(pass++, heights.size() - 1));
        giPoint3 const p = x * giPoint3(giOrigin);
        r = std::isnan(h) ? sqProjectedPoint3() : sqProjectedPoint3(p, giPoint3(p.x(), p.y(), h), giAxisZ);
    }
    std::vector<double> heights;
    mutable std::size_t pass = 0;
    mutable int initial_projections = 0;
};

// Points that only move up and down.
struct Lift {
    struct Point {
        std::vector<double> nominal_heights;  // one a pass
        double lower, upper, weight = 1.0;
    };
    sqFitPointProjector3 projector;
    sqSurfaceBestfit fit;
    giXform3 x;

    explicit Lift(std::vector<Point> const & points) {
        fit.set_projector(&projector);
        fit.lock_rotations(giAxisZ, giVector3(), giVector3());
        for (Point const & p : points) fit.add_point(new Scripted(p.nominal_heights), p.lower, p.upper, p.weight);
        double largest = 0.0, positive = 0.0, negative = 0.0;
        int invalid = 0;
        fit.fit(1e-9, x, largest, positive, negative, invalid);
    }
    double height() const { return (x * giPoint3(giOrigin)).z(); }
    std::vector<int> given_up() const {
        intcoDynArr const & list = fit.overdetermined_constraints();
        return std::vector<int>(list.data(), list.data() + list.size());
    }
};

using Numbers = std::vector<int>;

class SurfaceBestfitLock : public testing::TestWithParam<Form> {};

}  // namespace

TEST_P(SurfaceBestfitLock, BringsAnExactPartBack) {
    Lock const lock(GetParam());
    std::vector<sqProbedPoint3> const points = probe_centres(0.0);
    BoxFit box;
    box.add(points, lock.back(), -unbounded, unbounded);
    lock.set(box.fit);
    box.run(1e-9);
    EXPECT_EQ(0, box.invalid);
    double worst = box.largest;
    for (sqProbedPoint3 const & p : points) {
        worst = std::max(worst, p.measured_point().distance(box.x * (lock.back() * p.measured_point())).value());
    }
    EXPECT_LT(worst, left_out_turn * size);
}

TEST_P(SurfaceBestfitLock, FindsTheLeastSquaresThatTheLockAllows) {
    Lock lock(GetParam());
    BoxFit box;
    box.add(probe_centres(0.05), lock.back(), -unbounded, unbounded);
    // The measured side of the lock is off, so that the points would have it otherwise.
    if (lock.form != Form::shifts)
        lock.truth = motion(giUnitVec3(1.0, 0.0, 0.5), 0.004, giVector3(0.2, 0.1, 0.3)) * lock.truth;
    lock.set(box.fit);
    box.run(1e-12);
    lock.expect_kept(box.x);
    EXPECT_EQ(0, box.invalid);
    double const least = box.sum_of_squares(box.x);
    for (double const h : {1e-4, -1e-4}) {
        for (giXform3 const & move : lock.free_motions(h)) EXPECT_GT(box.sum_of_squares(move * box.x), least);
    }
}

TEST_P(SurfaceBestfitLock, KeepsABandThatBinds) {
    Lock const lock(GetParam());
    BoxFit open;
    open.add(probe_centres(0.05), lock.back(), -unbounded, unbounded);
    lock.set(open.fit);
    open.run(1e-12);
    double const free = open.deviation(0), end = 0.5 * free;
    BoxFit box;
    box.add(probe_centres(0.05), lock.back(), free > 0.0 ? -unbounded : end, free > 0.0 ? end : unbounded);
    lock.set(box.fit);
    box.run(1e-12);
    EXPECT_GT(std::abs(free), 1e-3);
    EXPECT_NEAR(end, box.deviation(0), lock.form == Form::shifts ? 1e-12 : left_out_turn * size);
    EXPECT_EQ(0, box.fit.overdetermined_constraints().size());
    lock.expect_kept(box.x);
    EXPECT_GT(box.sum_of_squares(box.x), box.sum_of_squares(open.x));
}

INSTANTIATE_TEST_SUITE_P(Forms, SurfaceBestfitLock,
                         testing::Values(Form::free, Form::direction, Form::plane, Form::line, Form::fixed,
                                         Form::origin, Form::shifts));

// Three walls of a corner, far from the origin: a turn about that, linearised, would throw the part away.
TEST(SurfaceBestfit, BringsAPartHomeFarFromTheOrigin) {
    for (double const distance : {0.0, 1e3, 1e6}) {
        SCOPED_TRACE(distance);
        giPoint3 const corner(distance, -0.7 * distance, 0.4 * distance);
        BoxFit f;
        f.surface = rectangles();
        giXform3 const back =
            inverse(giXform3(giXformTranslate, giVector3(0.3, -0.2, 0.4)) *
                    giXform3(giXformRotate, corner, giUnitVec3(1.0, 2.0, -1.5), giAngle(giAngleRadians, 0.2)));
        std::vector<sqProbedPoint3> points;
        for (int axis = 0; axis < 3; ++axis) {
            giUnitVec3 const w(static_cast<gi_Axis>(axis)), v(static_cast<gi_Axis>((axis + 1) % 3));
            giVector3 const u = v.cross(w);
            f.surface.add(corner, v, w, size, size);
            for (int k = 0; k < 6; ++k) {
                points.emplace_back(corner + (5.0 + 3.0 * (k % 3)) * u + (4.0 + 9.0 * (k / 3)) * v, w, 0.0);
            }
        }
        f.add(points, back, -unbounded, unbounded);
        f.run(1e-9);
        EXPECT_EQ(0, f.invalid);
        for (sqProbedPoint3 const & p : points) {
            giPoint3 const home = f.x * (back * p.measured_point());
            EXPECT_LE(home.distance(p.measured_point()), left_out_turn * size + 1e-14 * distance);
        }
    }
}

TEST(SurfaceBestfit, GivesUpOneOfTwoBandsThatContradictEachOther) {
    std::vector<double> const level = {0.0};
    // Numbers 0 to 3. Of equal weights the later end goes.
    Lift const equal_weights({{level, 1.0, 1.1}, {level, -1.1, -1.0}});
    EXPECT_EQ(Numbers{3}, equal_weights.given_up());
    EXPECT_NEAR(1.0, equal_weights.height(), 1e-9);
    Lift const heavy_second({{level, 1.0, 1.1, 1.0}, {level, -1.1, -1.0, 2.0}});
    EXPECT_EQ(Numbers{0}, heavy_second.given_up());
    EXPECT_NEAR(-1.0, heavy_second.height(), 1e-9);
}

TEST(SurfaceBestfit, NumbersBandsThroughPointsWithoutProjection) {
    std::vector<double> const level = {0.0}, late = {no_foot, 0.0}, early = {0.0, no_foot};
    // The first point, with numbers 0 and 1, comes only after the conflict between the others.
    EXPECT_EQ(Numbers{5}, Lift({{late, 0.5, 5.0}, {level, 1.0, 1.1}, {level, -1.1, -1.0}}).given_up());
    // Then it is itself in conflict.
    Lift const twice({{late, 3.0, 4.0}, {level, 1.0, 1.1}, {level, -1.1, -1.0}});
    EXPECT_EQ((Numbers{3, 5}), twice.given_up());
    EXPECT_NEAR(3.0, twice.height(), 1e-9);
    // A point that is lost lies between an end given up before and one given up after; open ends have no number.
    Lift const lost({{level, 1.0, 1.1},
                     {level, -1.1, -1.0},
                     {early, 0.9, unbounded},
                     {level, -unbounded, unbounded},
                     {level, -unbounded, 1.1},
                     {{2.0, 0.0}, -1.1, -1.0}});
    EXPECT_EQ((Numbers{3, 7}), lost.given_up());
}

TEST(SurfaceBestfit, FallsBackWhenBandsCannotBeKeptAnyMore) {
    // The second point needs more height than the first allows, from the second or the third pass on.
    std::vector<double> const level = {0.0};
    Lift const at_once({{level, 1.0, 1.1}, {{0.0, 3.0}, -0.5, 5.0}});
    EXPECT_EQ(Numbers{2}, at_once.given_up());
    EXPECT_EQ(0.0, at_once.height());
    EXPECT_EQ(2, static_cast<Scripted const *>(at_once.fit.point(1))->initial_projections);
    Lift const later({{{0.0, 0.5}, 1.0, 1.1}, {{0.0, 0.0, 3.0}, -0.5, 5.0}});
    EXPECT_EQ(Numbers{2}, later.given_up());
    EXPECT_NEAR(1.0, later.height(), 1e-9);
    EXPECT_EQ(1, static_cast<Scripted const *>(later.fit.point(1))->initial_projections);
    EXPECT_NEAR(1.0, later.fit.get_pointcloud()[0].measured_point().z(), 1e-9);
}

TEST(SurfaceBestfit, FindsPointsAgainThatALockBringsBack) {
    rectangles patch;
    patch.add(giOrigin, giAxisY, giAxisZ, 10.0, 1.0);  // long along x
    sqSurfProjectorForFitting3 const projector(patch);
    sqSurfaceBestfit fit;
    fit.set_projector(&projector);
    for (double const y : {-8.0, -3.0, 4.0, 9.0}) fit.add_point(probed(giPoint3(0.3, y, 0.2), giAxisZ, 0.0));
    giXform3 x;
    double largest = 0.0, positive = 0.0, negative = 0.0;
    int invalid = -1;
    fit.fit(1e-9, x, largest, positive, negative, invalid);
    EXPECT_EQ(4, invalid);
    EXPECT_TRUE(equal(x, giXformIdentity, 0.0));

    fit.lock_axis(sqLOCKED_AXIS_DIRECTION, giAxisY, giAxisX, giPoint3(), giPoint3());
    fit.fit(1e-9, x, largest, positive, negative, invalid);
    EXPECT_EQ(0, invalid);
    EXPECT_LT(largest, 1e-9);
    EXPECT_NEAR(1.0, (x * giVector3(giAxisY)).x(), 1e-12);
}

TEST(SurfaceBestfit, CountsItsPasses) {
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
    BoxFit box;
    Counting const projector(box.surface);
    box.fit.set_projector(&projector);
    Lock const lock(Form::free);
    box.run(0.0);
    EXPECT_EQ(-1, box.invalid);  // without points no result is touched
    EXPECT_TRUE(box.x.invalid());
    box.fit.add_point(probed(giOrigin, giAxisX, 1.0), 0.0, 1.0, 0.0);
    box.fit.add_point(sqFitPoint3coPrf());
    EXPECT_EQ(0, box.fit.nb_points());

    box.add(probe_centres(0.05), lock.back(), -unbounded, unbounded);
    box.run(1e-9);
    giXform3 const first = box.x;
    EXPECT_LT(projector.passes, 15);
    projector.passes = 0;
    box.run(0.0);
    EXPECT_EQ(1 + 50, projector.passes);
    EXPECT_EQ(1, projector.initial_passes);
    EXPECT_TRUE(equal(first, box.x, 1e-9));
    // A fit from the same start goes the same way, to the last bit.
    giXform3 const second = box.x;
    box.run(0.0);
    EXPECT_TRUE(equal(second, box.x, 0.0));
    // Without a projector nothing has a place.
    box.fit.set_projector(nullptr);
    box.run(1e-9);
    EXPECT_EQ(36, box.invalid);
    EXPECT_EQ(0.0, box.largest);
}

TEST(SurfaceBestfit, WeighsPointsByTheirRatio) {
    for (double const scale : {1.0, 1e9, 1e-9}) {
        Lift const lift({{{0.0}, -unbounded, unbounded, -1.0 * scale}, {{3.0}, -unbounded, unbounded, 2.0 * scale}});
        // Squares of 1 and 4, beside the share of 0.01 for each point that is not weighted; the mean weight is 1.
        EXPECT_NEAR(3.0 * (16.0 / 9.0 + 0.01) / (20.0 / 9.0 + 0.02), lift.height(), 1e-12);
    }
}
