#include "support/shapes.h"

#include <gtest/gtest.h>

namespace {

using datumfit::internal::orthogonal_pair;

double const turn = 2.0 * utMath::pi();
doublecoDynArr const no_radii;

struct torus {
    giPoint3 centre;
    giUnitVec3 axis;
    double major = 0.0, minor = 0.0, deviation = 7.0;

    torus() = default;
    explicit torus(placement const & at)
        : centre(general_point(at.offset)), axis(general_direction()), major(at.size), minor(0.4 * at.size) {}
    mlVector parameters() const {
        double const p[] = {centre.x(), centre.y(), centre.z(), axis.x(), axis.y(), axis.z(), major, minor};
        return mlVector(utConvert, p, 8);
    }
    int fit(giPoint3coDynArr const & points) {
        return sqLeastSquareEvaluator::evaluate_torus(points, centre, axis, major, minor, deviation);
    }
    int fit_near(giPoint3coDynArr const & points) {
        return sqLeastSquareEvaluator::evaluate_torus_with_guess(points, centre, axis, major, minor, deviation);
    }
    int fit(giPoint3coDynArr const & points, doublecoDynArr const & radii, int inside) {
        return sqLeastSquareEvaluator::evaluate_probed_torus(points, radii, inside, centre, axis, major, minor,
                                                             deviation);
    }
};

// n points of a part of a torus: so much of the ring, and of the tube from its upper side outwards.
giPoint3coDynArr part(torus const & t, double ring, double tube, int n, double error = 0.0) {
    giUnitVec3 const u = t.axis.any_normal(), v(t.axis.cross(u));
    giPoint3coDynArr points(n, 1);
    noise off;
    for (int i = 0; i < n; ++i) {
        double const a = ring * (0.618034 * i - std::floor(0.618034 * i)), b = 1.2 - tube * (i + 0.5) / n;
        giVector3 const away = std::cos(a) * u + std::sin(a) * v;
        double const r = t.minor + error * off();
        points.append(t.centre + ((t.major + r * std::cos(b)) * away + r * std::sin(b) * t.axis));
    }
    return points;
}

void expect_torus(torus const & expected, torus const & found, double tolerance) {
    EXPECT_NEAR(0.0, found.centre.distance(expected.centre).value(), tolerance);
    EXPECT_NEAR(0.0, angle_between(expected.axis, found.axis), tolerance / expected.major);
    EXPECT_NEAR(1.0, giVector3(found.axis).dot(found.axis), 1e-15);
    EXPECT_NEAR(expected.major, found.major, tolerance);
    EXPECT_NEAR(expected.minor, found.minor, tolerance);
}

TEST(TorusModel, TakesTheEndsOfItsCases) {
    giPoint3coDynArr const points = {giPoint3(0.0, 3.0, 0.0), giPoint3(0.0, 3.0, 1e-7), giPoint3(0.0, 3.0, 1.1e-7)};
    sqLeastSquareTorus problem(points, no_radii, 0);
    double const at[] = {0.0, 0.0, 0.0, 0.0, 0.0, 1.0, 3.0, 0.5};
    problem.set_parameters(mlVector(utConvert, at, 8));
    double d;
    mlVector g;
    for (int i = 0; i < 3; ++i) {  // on the tube's centre circle, as near as counts for it, and off it
        problem.get_distance_and_gradient(d, g, i);
        EXPECT_NEAR(-0.5, d, 1.2e-7);
        EXPECT_EQ(i < 2 ? 0.0 : -1.0, g[2]);
        EXPECT_EQ(i < 2 ? -1.0 : 0.0, g[6]);
        EXPECT_EQ(-1.0, g[7]);
    }
    for (double const l : {0.0, 1e-200, 5.0}) {
        double const q[] = {1.0, 2.0, 3.0, 0.0, -0.6 * l, 0.8 * l, -4.0, -0.5};
        double const axis[] = {l > 0.0 ? 0.0 : 1.0, l > 0.0 ? -0.6 : 0.0, l > 0.0 ? 0.8 : 0.0};
        mlVector p(utConvert, q, 8);
        problem.normalize_parameters(p);
        for (int k = 0; k < 8; ++k) EXPECT_DOUBLE_EQ(k < 3 || k > 5 ? q[k] : axis[k - 3], p[k]) << k;
    }
    EXPECT_EQ(7, problem.n_independent_parameters());
}

// The passes of the solver, the radii of either side among them, against the points one by one.
TEST(TorusModel, MeasuresAllPointsAsItMeasuresEach) {
    torus const t(placements[0]);
    giPoint3coDynArr const points = part(t, turn, turn, 40, 0.1);
    doublecoDynArr radii(40, 1);
    for (int i = 0; i < 40; ++i) radii.append(0.01 * i);
    mlVector p(t.parameters()), each, scales;
    for (int const inside : {0, 1}) {
        sqLeastSquareTorus problem(points, radii, inside), bare(points, no_radii, inside);
        problem.distances(p, each);
        bare.set_parameters(p);
        for (int i = 0; i < 40; ++i) {
            double d, without;
            problem.get_distance(d, i);
            bare.get_distance(without, i);
            EXPECT_NEAR(d, each[i], 1e-14);
            EXPECT_NEAR(without + (inside != 0 ? radii[i] : -radii[i]), d, 1e-15);
        }
        problem.parameter_scales(scales);
        for (int k = 0; k < 8; ++k) EXPECT_NEAR(k < 3 || k > 5 ? 1.0 : std::sqrt(1.32), scales[k], 1e-15);
    }
}

class TorusFit : public testing::TestWithParam<placement> {};

TEST_P(TorusFit, ReachesEachAxisByFourVariables) {
    placement const at = GetParam();
    torus const t(at);
    double const size = at.size, rounding = rounding_at(at);
    giPoint3coDynArr const points = part(t, turn, turn, 400);
    giVector3 const start_axis = giUnitVec3(0.1, -0.7, 0.6);
    giPoint3 const start = t.centre + giVector3(0.3 * size, -0.1 * size, 0.2 * size);
    sqDistanceFromTorus objective(points, no_radii, 1, start, start_axis);
    giVector3 u, v;
    orthogonal_pair(u, v, start_axis);
    EXPECT_NEAR(0.0, (objective.torus_axis(0.0, 0.0) - start_axis).length().value(), 1e-15);
    EXPECT_NEAR(std::sin(0.3), objective.torus_axis(0.3, 0.0).dot(u), 1e-15);
    EXPECT_NEAR(std::sin(0.3), objective.torus_axis(0.9, 0.3).dot(v), 1e-15);

    mlVector x(mlVectorZero, 4);
    torus found;
    giVector3 axis;
    objective.get_variables(t.centre + 2.0 * size * t.axis, t.axis, x);
    ASSERT_EQ(1, objective.torus_data(x, found.centre, axis, found.major, found.minor, found.deviation));
    found.axis = giUnitVec3(axis);
    expect_torus(t, found, 8.0 * rounding);
    EXPECT_NEAR(0.0, objective.function(x), 2.0 * rounding);
    // The 400 corners of a polygon in the circle; about another axis the section is wider.
    double const circle = 0.5 * 400 * std::sin(turn / 400) * t.minor * t.minor;
    EXPECT_NEAR(circle, sqRotationalProjectionHullArea(objective).function(x), 16.0 * rounding * size);
    EXPECT_GT(objective.projection_hull_area(mlVector(mlVectorZero, 4)), 1.5 * circle);
}

TEST_P(TorusFit, FindsTheTorusThatThePointsLieOn) {
    torus const t(GetParam());
    double const rounding = rounding_at(GetParam());
    double const extents[][2] = {{turn, turn}, {turn / 9, turn}, {turn, turn / 6}};
    for (auto const & extent : extents) {
        SCOPED_TRACE(testing::Message() << "ring " << extent[0] << " tube " << extent[1]);
        torus found;
        ASSERT_EQ(1, found.fit(part(t, extent[0], extent[1], 40)));
        expect_torus(t, found, 200.0 * rounding);
        EXPECT_LE(found.deviation, 4.0 * rounding);
    }
}

// The gradient of the sum of squares, by the slots; with a probe, outside, at the first place.
TEST_P(TorusFit, LeavesNothingToGain) {
    torus const t(GetParam());
    double const size = GetParam().size, rounding = rounding_at(GetParam());
    double const probe = GetParam().offset > 0.0 ? 0.0 : 0.1;
    doublecoDynArr const radii = filled(probe > 0.0 ? 16 : 0, probe);
    giPoint3coDynArr const points = part(t, 4.0, turn, 16, 1e-3 * size);
    torus found;
    ASSERT_EQ(1, found.fit(points, radii, 0));
    EXPECT_NEAR(t.minor - probe, found.minor, 2e-3 * size);
    sqLeastSquareTorus problem(points, radii, 0);
    problem.set_parameters(found.parameters());
    double sum[8] = {}, squares = 0.0, d;
    for (int i = 0; i < 16; ++i) {
        mlVector g;
        problem.get_distance_and_gradient(d, g, i);
        squares += d * d;
        for (int k = 0; k < 8; ++k) sum[k] += d * g[k] / (k > 2 && k < 6 ? size : 1.0);
    }
    EXPECT_NEAR(std::sqrt(squares / 16), found.deviation, rounding);
    for (double const s : sum) EXPECT_NEAR(0.0, s / 16, 2.0 * rounding);
}

INSTANTIATE_TEST_SUITE_P(Placements, TorusFit, testing::ValuesIn(placements),
                         [](auto const & at) { return name_of(at.param); });

// By simplexes alone, along its axis far off.
TEST(TorusFits, SearchFromAGuess) {
    torus const t(placements[0]);
    torus found;
    found.centre = t.centre + 3.0 * t.axis + giVector3(0.1, -0.05, 0.0);
    found.axis = giUnitVec3(0.4, -0.45, 0.8);
    ASSERT_EQ(1, found.fit_near(part(t, turn, turn, 60)));
    expect_torus(t, found, 1e-5);
    EXPECT_LE(found.deviation, 1e-6);
    torus const before = found;
    EXPECT_EQ(0, found.fit_near(rectangle(t.centre, 2.0, 1.0, 2)));
    EXPECT_EQ(0.0, found.deviation);
    expect_torus(before, found, 1e-15);
}

// A lemon: its section is a circle with the centre beyond the axis.
TEST(TorusFits, CountANegativeMajorRadiusAsNone) {
    giPoint3coDynArr points;
    for (int i = 0; i < 40; ++i) {
        double const b = 0.04 * (i - 20), f = std::cos(b) - 0.5;
        points.append(giPoint3(f * std::cos(2.4 * i), f * std::sin(2.4 * i), std::sin(b)));
    }
    sqDistanceFromTorus const objective(points, no_radii, 1, giPoint3(0.0, 0.0, 0.0), giVector3(0.0, 0.0, 1.0));
    mlVector const x(mlVectorZero, 4);
    torus t;
    giVector3 axis;
    EXPECT_EQ(1, objective.torus_data(x, t.centre, axis, t.major, t.minor, t.deviation));
    EXPECT_NEAR(-0.5, t.major, 1e-12);
    EXPECT_EQ(100.0, t.deviation);
    EXPECT_EQ(100.0, objective.function(x));
}

TEST(TorusFits, SpanThePlaneAcrossAnAxis) {
    giVector3 u, v;
    orthogonal_pair(u, v, giVector3(0.0, 0.0, 1.0));
    EXPECT_TRUE(u.x() == -1.0 && v.y() == -1.0) << "of candidates of equal length the second";
    orthogonal_pair(u, v, giVector3(1.0, 0.0, 0.0));
    EXPECT_TRUE(u.z() == 1.0 && v.y() == -1.0);
}

TEST(TorusFits, RefuseTooFewPointsAndStayCalmWithoutATorus) {
    giPoint3coDynArr const three = rectangle(general_point(0.0), 2.0, 1.0, 3);
    torus t(placements[0]);
    EXPECT_EQ(0, t.fit(three));
    EXPECT_EQ(0, t.fit(three, filled(3, 0.1), 1));
    expect_torus(torus(placements[0]), t, 0.0);
    EXPECT_EQ(7.0, t.deviation);

    giVector3 axis;
    giPoint3coDynArr const two = rectangle(general_point(0.0), 2.0, 1.0, 2);
    EXPECT_EQ(0, sqCalculateTorusDownhillSimplex(two, no_radii, 1, t.centre, axis, t.major, t.minor, t.deviation, 0.0));
    EXPECT_EQ(3.4028234663852886e38, t.deviation);
    expect_torus(torus(placements[0]), t, 0.0);

    giPoint3coDynArr one_place(5, 1);
    for (int i = 0; i < 5; ++i) one_place.append(general_point(1e3));
    for (auto const & points : {giPoint3coDynArr(utCopy, one_place), rectangle(general_point(1e3), 2.0, 1.0, 12),
                                rectangle(general_point(1e3), 2.0, 0.0, 8)}) {
        ASSERT_EQ(1, t.fit(points));
        EXPECT_NEAR(0.0, t.deviation, 1e-6) << points.size();
        EXPECT_TRUE(std::isfinite(t.centre.x()) && std::isfinite(t.major) && std::isfinite(t.minor));
        EXPECT_NEAR(1.0, giVector3(t.axis).dot(t.axis), 1e-15);
    }
}

}  // namespace
