#include "support/shapes.h"

#include <datumfit/curved/cylinder/cylinder_search.h>

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace datumfit::internal;

giUnitVec3 const no_direction;
giUnitVec3coDynArr const no_normals;

giAngle degrees(double x) {
    return giAngle(giAngleDegrees, x);
}

// A measured cylinder in general position: n points over an arc, in turns along its length.
struct tube {
    giPoint3 centre = general_point(0.0);
    giUnitVec3 axis = general_direction();
    double radius = 1.0, length = 3.0, arc = 6.28, noise = 0.0;

    giPoint3coDynArr points(int n, doublecoDynArr const * offsets = nullptr,
                            giUnitVec3coDynArr * normals = nullptr) const {
        giUnitVec3 const u = axis.any_normal(), v(axis.cross(u));
        giPoint3coDynArr all(n, 1);
        ::noise error;
        for (int i = 0; i < n; ++i) {
            double const t = arc * (0.618 * i - std::floor(0.618 * i)), height = length * ((i + 0.5) / n - 0.5);
            giVector3 const out = std::cos(t) * u + std::sin(t) * v;
            double const off = offsets != nullptr ? offsets->read(i) : 0.0;
            all.append(centre + height * axis + (radius + off + noise * error()) * out);
            if (normals != nullptr) normals->append(out);
        }
        return all;
    }
};

struct fit {
    giPoint3 point = giPoint3(7.0, 7.0, 7.0);
    giUnitVec3 axis = giUnitVec3(giAxisX);
    double radius = 7.0, deviation = 7.0;

    int of(giPoint3coDynArr const & points, int new_points = 0) {
        return sqLeastSquareEvaluator::evaluate_cylinder(points, point, axis, radius, deviation, no_direction,
                                                         degrees(10.0), new_points);
    }
    double off(tube const & t) const { return axis.cross(t.centre - point).length().value(); }
};

class CylinderSearch : public testing::TestWithParam<placement> {};

TEST_P(CylinderSearch, FindsTheCylinderThatThePointsLieOn) {
    placement const & at = GetParam();
    for (double const arc : {6.28, 3.1, 1.0, 0.35}) {
        for (double const length : {0.1, 3.0, 20.0}) {
            tube t;
            t.centre = general_point(at.offset);
            t.radius = at.size;
            t.length = length * at.size;
            t.arc = arc;
            fit f;
            ASSERT_EQ(1, f.of(t.points(40)));
            // A short arc leaves the radius, and a short tube the direction, to what is left of the rounding.
            double const gain = 10.0 + 30.0 / (arc * arc * std::min(length, 1.0));
            EXPECT_LT(f.deviation, 4.0 * rounding_at(at));
            EXPECT_NEAR(t.radius, f.radius, gain * rounding_at(at));
            EXPECT_LT(f.off(t), gain * rounding_at(at));
            EXPECT_LT(angle_between(f.axis, t.axis) * t.length, 4.0 * gain * rounding_at(at));
        }
    }
}

TEST_P(CylinderSearch, FindsTheSurfaceThatProbesTouched) {
    placement const & at = GetParam();
    for (int const inside : {0, 1}) {
        tube t;
        t.centre = general_point(at.offset);
        t.radius = at.size;
        t.length = 2.0 * at.size;
        doublecoDynArr radii(30, 1), offsets(30, 1);
        for (int i = 0; i < 30; ++i) {
            radii.append(at.size * (0.05 + 0.1 * (i % 3)));
            offsets.append(inside != 0 ? -radii[i] : radii[i]);
        }
        fit f;
        ASSERT_EQ(
            1, sqLeastSquareEvaluator::evaluate_probed_cylinder(t.points(30, &offsets), radii, inside, f.point, f.axis,
                                                                f.radius, f.deviation, no_direction, degrees(10.0), 0));
        EXPECT_NEAR(t.radius, f.radius, 20.0 * rounding_at(at));
        EXPECT_LT(f.off(t), 20.0 * rounding_at(at));
    }
}

INSTANTIATE_TEST_SUITE_P(Placements, CylinderSearch, testing::ValuesIn(placements),
                         [](auto const & p) { return p.param.name; });

// Clouds of all kinds: noise, arcs, few points, and what is no cylinder at all.
giPoint3coDynArr cloud(int kind) {
    tube t;
    t.noise = kind % 3 == 0 ? 0.02 : kind % 3 == 1 ? 1e-4 : 0.0;
    t.arc = kind % 4 == 3 ? 0.5 : 6.28;
    t.length = kind % 5 == 4 ? 0.2 : 3.0;
    t.radius = kind % 2 == 0 ? 0.04 : 5.0;  // so small that the scan ends at once, or not
    if (kind == 8) return rectangle(t.centre, 3.0, 2.0, 25, 0.01);
    if (kind == 9) return sphere_cap(t.centre, 3.0, 3.0, 25, 0.01);
    return t.points(kind % 7 == 6 ? 6 : 25);
}

TEST(CylinderSearches, FindTheSameWithoutTheBoundsThatSpareThemCircles) {
    doublecoDynArr radii(25, 1);
    for (int i = 0; i < 25; ++i) radii.append(0.01 + 0.02 * (i % 2));
    search_counts fewer, all;
    for (int kind = 0; kind < 10; ++kind) {
        giPoint3coDynArr const points = cloud(kind);
        for (doublecoDynArr const * const probes :
             {static_cast<doublecoDynArr const *>(nullptr), &std::as_const(radii)}) {
            if (probes != nullptr && kind % 3 != 0) continue;  // ten fits a circle take their time
            sqLeastSquareProbedCylinder problem(points, probes != nullptr ? radii : filled(25, 0.0), 1);
            cylinder_search quick(problem, {points, probes, 1, true, &fewer}, no_direction, degrees(10.0), no_normals);
            cylinder_search plain(problem, {points, probes, 1, false, &all}, no_direction, degrees(10.0), no_normals);
            cylinder_solution const a = quick.run(), b = plain.run();
            EXPECT_EQ(b.square, a.square) << kind;
            for (int k = 0; k < 7; ++k) EXPECT_EQ(b.parameters.read(k), a.parameters.read(k)) << kind;
        }
    }
    EXPECT_LT(2 * fewer.circle_fits, all.circle_fits);
}

TEST(CircleBounds, AreNeverAboveTheSumAndOftenNear) {
    mlRandom random(3);
    int near = 0, tried = 0;
    for (int kind = 0; kind < 10; ++kind) {
        giPoint3coDynArr const points = cloud(kind);
        doublecoDynArr radii(25, 1);
        for (int i = 0; i < 25; ++i) radii.append(0.01 + 0.02 * (i % 2) + 0.3 * (i % 5));
        circles_along_axes circles({points, kind % 2 != 0 ? &radii : nullptr, kind % 4 / 2});
        for (int i = 0; i < 50; ++i, ++tried) {
            double const x = random.minus_one_one(), y = random.minus_one_one();
            giUnitVec3 const axis = i == 0 ? general_direction() : giUnitVec3(x, y, random.minus_one_one());
            double const bound = circles.bound(axis);
            ASSERT_TRUE(circles.fit(axis));
            EXPECT_LE(bound, circles.sum_of_squares()) << kind;
            if (bound > 0.3 * circles.sum_of_squares()) ++near;
        }
    }
    EXPECT_GT(near, tried / 4);
}

TEST(CylinderSearches, PreferADirectionUntilItCostsTooMuch) {
    // A flat panel takes any direction within it; a tube knows its own, here 20 degrees off.
    tube t;
    t.noise = 1e-3;
    for (bool const panel : {true, false}) {
        giPoint3coDynArr const points = panel ? rectangle(t.centre, 3.0, 2.0, 40) : t.points(40);
        giUnitVec3 const across = t.axis.any_normal();
        giUnitVec3 const preferred(panel ? 0.7 * across + t.axis.cross(across) : t.axis + 0.36 * across);
        fit free, f;
        free.of(points);
        ASSERT_EQ(1, sqLeastSquareEvaluator::evaluate_cylinder(points, f.point, f.axis, f.radius, f.deviation,
                                                               preferred, degrees(5.0), 0));
        EXPECT_LE(f.deviation - free.deviation, 0.001 * sqLeastSquareCylinder(points).range());
        EXPECT_EQ(panel, angle_between(f.axis, preferred) < degrees(5.0).sin());
    }
}

TEST(CylinderSearches, TakeNormalsAllOneWay) {
    tube t;
    giUnitVec3coDynArr out(24, 1);
    giPoint3coDynArr const points = t.points(24, nullptr, &out);
    giUnitVec3coDynArr in(24, 1), mixed(24, 1);
    for (int i = 0; i < 24; ++i) {
        in.append(-out[i]);
        mixed.append(i == 20 ? -out[i] : out[i]);
    }
    double const p[] = {t.centre.x(), t.centre.y(), t.centre.z(), t.axis.x(), t.axis.y(), t.axis.z(), 1.0};
    mlVector parameters(utConvert, p, 7);
    auto const within = [&](giUnitVec3coDynArr const & normals, giUnitVec3 const & preferred) {
        return sqLeastSquareCylinder::are_normals_in_limit(points, degrees(1.0), preferred, normals, parameters);
    };
    EXPECT_EQ(1, within(out, no_direction));
    EXPECT_EQ(1, within(in, -t.axis));
    EXPECT_EQ(0, within(mixed, no_direction));
    EXPECT_EQ(1, within(no_normals, t.axis));
    EXPECT_EQ(0, within(out, giUnitVec3(t.axis + 0.02 * t.axis.any_normal())));
    for (giUnitVec3coDynArr const * normals : {&out, &in, &mixed}) {  // a preference only
        fit f;
        EXPECT_EQ(1, sqLeastSquareEvaluator::evaluate_cylinder(points, *normals, degrees(1.0), f.point, f.axis,
                                                               f.radius, f.deviation, 0));
        EXPECT_NEAR(1.0, f.radius, 1e-13);
    }
}

// An earlier fit stands only where the points leave it: the answer tells by the sense of the axis, which a continued
// fit keeps and a search does not know.
TEST(CylinderSearches, ContinueFromAnEarlierFit) {
    auto const continued = [](int n, int new_points, double off_old, double off_new) {
        tube t;
        t.noise = 1e-6;
        giUnitVec3coDynArr out(n, 1);
        giPoint3coDynArr points = t.points(n, nullptr, &out);
        points[0] = points[0] + off_old * out[0];
        points[n - 1] = points[n - 1] + off_new * out[n - 1];
        fit f, there, back;
        f.of(t.points(n));
        there = back = f;
        back.axis = -f.axis;
        EXPECT_EQ(1, there.of(points, new_points));
        EXPECT_EQ(1, back.of(points, new_points));
        EXPECT_NEAR(there.deviation, back.deviation, 1e-12);
        return there.axis.dot(back.axis) < 0.0;
    };
    EXPECT_TRUE(continued(30, 5, 0.0, 0.0));
    EXPECT_TRUE(continued(30, -1, 0.0, 0.5));   // negative: without a test
    EXPECT_FALSE(continued(30, 5, 0.0, 0.5));   // the new point lies far off
    EXPECT_FALSE(continued(30, 26, 0.0, 0.0));  // 4 old points
    EXPECT_TRUE(continued(30, 25, 0.0, 0.0));
    // One old point off by 0.1: with 21 points that allows new ones ten times as far; with 20 it is left out.
    EXPECT_TRUE(continued(21, 2, 0.1, 0.05));
    EXPECT_FALSE(continued(20, 2, 0.1, 0.05));
}

TEST(CylinderSearches, FindSeveralInOneCloud) {
    // The corners of a cube lie on a cylinder about each of its axes.
    giPoint3coDynArr corners(8, 1);
    for (int i = 0; i < 8; ++i) corners.append(giPoint3(i % 2 * 2 - 1, i / 2 % 2 * 2 - 1, i / 4 * 2 - 1));
    sqFittedCylindercoDynArr found;
    giUnitVec3coDynArr const guesses = {giUnitVec3(0.1, 1.0, 0.0), giUnitVec3(giAxisX)};
    auto const look = [&](giUnitVec3coDynArr const & dirs, int wanted) {
        return sqLeastSquareEvaluator::evaluate_multiple_cylinders(corners, dirs, 1e-6, degrees(1.0), wanted, found);
    };
    EXPECT_EQ(0, look(guesses, 0));
    EXPECT_EQ(2, look(guesses, 2));
    EXPECT_NEAR(1.0, std::abs(found[0].axis_dir().y()), 1e-12);
    EXPECT_NEAR(1.0, std::abs(found[1].axis_dir().x()), 1e-12);
    EXPECT_EQ(3, look(giUnitVec3coDynArr(), 3));  // those found before stand
    EXPECT_NEAR(1.0, std::abs(found[2].axis_dir().z()), 1e-12);
    EXPECT_NEAR(std::sqrt(2.0), found[2].radius(), 1e-12);
    corners.shrink(4, 0);
    EXPECT_EQ(0, look(guesses, 3));
}

TEST(CylinderSearches, RefuseTooFewPoints) {
    for (int n = 0; n <= 4; ++n) {
        giPoint3coDynArr const points = tube().points(n);
        fit f;
        EXPECT_EQ(0, f.of(points));
        EXPECT_EQ(n == 4, f.axis.invalid());
        EXPECT_EQ(7.0, f.radius);
        fit p;
        EXPECT_EQ(0,
                  sqLeastSquareEvaluator::evaluate_probed_cylinder(points, filled(n, 1.0), 1, p.point, p.axis, p.radius,
                                                                   p.deviation, no_direction, degrees(10.0), 0));
        EXPECT_FALSE(p.axis.invalid());
    }
}

TEST(CylinderSearches, AreCalmAboutWhatIsNoCylinder) {
    giPoint3coDynArr line(9, 1), place(9, 1), square(9, 1);
    for (int i = 0; i < 9; ++i) {
        line.append(giPoint3(1.0, 2.0, 3.0) + i * giVector3(1.0, -2.0, 0.5));
        place.append(giPoint3(1.0, 2.0, 3.0));
        square.append(giPoint3(i % 3, i / 3, 4.0));
    }
    for (giPoint3coDynArr const & points : {line, place, square, sphere_cap(general_point(0.0), 2.0, 3.0, 30)}) {
        fit f;
        ASSERT_EQ(1, f.of(points));
        EXPECT_TRUE(std::isfinite(f.radius + f.deviation + f.point.x() + f.point.y() + f.point.z()));
        EXPECT_NEAR(1.0, f.axis.dot(f.axis), 1e-15);
    }
}

TEST(CylinderStarts, TakeTwoRingsOfThreeOrScan) {
    tube t;
    for (double const second : {1.0, 1.9, 2.2}) {  // radii that differ by more than 1 are no two rings
        giUnitVec3 const u = t.axis.any_normal(), v(t.axis.cross(u));
        giPoint3coDynArr points(6, 1);
        for (int i = 0; i < 6; ++i) {
            double const a = 2.1 * i, r = i < 3 ? 1.0 : second;
            points.append(t.centre + r * (std::cos(a) * u + std::sin(a) * v) + (i / 3) * t.axis);
        }
        for (bool const probed : {false, true}) {
            giVector3 axis;
            EXPECT_EQ(1, probed ? sqCylinder_InitialSolutionProbed(points, filled(6, 0.1), 1, axis)
                                : sqCylinder_InitialSolution(points, axis));
            EXPECT_EQ(second < 2.0, angle_between(giUnitVec3(axis), t.axis) < 1e-12);
        }
    }
}

TEST(FittedCylinder, KnowsItselfAgain) {
    giPoint3 const q = general_point(0.0);
    giUnitVec3 const a = general_direction();
    sqFittedCylinder const c(q, a, 2.0, 0.0);
    auto const same = [&](giPoint3 const & point, giUnitVec3 const & dir, double radius) {
        return c.coincident(sqFittedCylinder(point, dir, radius, 0.0), 0.1, degrees(1.0));
    };
    EXPECT_EQ(0, c.invalid());
    EXPECT_EQ(1, sqFittedCylinder().invalid());
    EXPECT_EQ(1, sqFittedCylinder(q, a, 0.0, 0.0).invalid());
    EXPECT_EQ(1, sqFittedCylinder(q, a, 2.0, -1e-9).invalid());
    EXPECT_EQ(1, same(q + 50.0 * a, -a, 2.0));
    EXPECT_EQ(0, same(q + 0.11 * a.any_normal(), a, 2.0));
    EXPECT_EQ(1, same(q + 0.09 * a.any_normal(), a, 2.0));
    EXPECT_EQ(0, same(q, a, 2.11));
    EXPECT_EQ(0, same(q, giUnitVec3(a + 0.02 * a.any_normal()), 2.0));
    EXPECT_EQ(0, c.coincident(c, -1e-9, degrees(1.0)));
    EXPECT_EQ(0, c.coincident(sqFittedCylinder(), 0.1, degrees(1.0)));
}

}  // namespace
