#include "curved/cones.h"

#include <datumfit/curved/cone/cone_guess_generator.h>
#include <datumfit/curved/cone/least_square_cone_fixed_axis.h>
#include <datumfit/curved/cone/least_square_cone_results.h>

#include <gtest/gtest.h>

namespace {

constexpr double none = utMath::max_double();
giUnitVec3 const anywhere;
giUnitVec3coDynArr const no_normals;

sqConeGuessGenerator generator(giPoint3coDynArr const & points, giUnitVec3coDynArr const & normals = no_normals) {
    return sqConeGuessGenerator(points, anywhere, giAngle(), normals);
}

void expect_cone(cone_shape const & part, mlVector const & p, double tolerance, double size) {
    ASSERT_EQ(8, p.dimension());
    EXPECT_NEAR(0.0, distance(part.apex, apex_of(p)), tolerance);
    EXPECT_GT(axis_of(p).dot(part.axis), 0.0);
    EXPECT_NEAR(0.0, angle_between(part.axis, axis_of(p)), tolerance / size);
    EXPECT_NEAR(part.half_angle, p[7], tolerance / size);
}

class ConeGuesses : public testing::TestWithParam<placement> {};

TEST_P(ConeGuesses, FindTheConeThatThePointsLieOn) {
    placement const at = GetParam();
    double const tolerance = 100.0 * rounding_at(at);
    for (bool const narrow_first : {false, true}) {
        cone_shape part(general_point(at.offset), general_direction(), 0.4);
        part.section((narrow_first ? 1.0 : 2.5) * at.size, 3).section(1.7 * at.size, 9);
        mlVector p;
        auto const by_normals = generator(part.points, part.normals).get_guess_from_normals(p);
        EXPECT_NEAR(0.0, root_mean_square(by_normals, part.points), tolerance);
        expect_cone(part, p, tolerance, at.size);
        for (int i = 0; i < 12; ++i) part.normals[i] = -part.normals[i];
        generator(part.points, part.normals).get_guess_from_normals(p);
        expect_cone(part, p, tolerance, at.size);
        auto const by_circles = generator(part.points).get_guess_two_circles(p);
        EXPECT_NEAR(0.0, root_mean_square(by_circles, part.points), tolerance);
        expect_cone(part, p, tolerance, at.size);
    }
}

INSTANTIATE_TEST_SUITE_P(Placements, ConeGuesses, testing::ValuesIn(placements),
                         [](auto const & at) { return name_of(at.param); });

TEST(ConeGuesses, FromNormalsRefuseWhatHasNoApex) {
    cone_shape part(general_point(1.0), general_direction(), 0.4);
    part.section(1.0, 3);
    giUnitVec3coDynArr two = {part.normals[0], part.normals[1]}, around, unset(part.normals), more(part.normals);
    for (giUnitVec3 const & n : {part.normals[0], part.normals[1], part.normals[2]}) {
        around.append(giUnitVec3(part.axis.project_normal(n)));
    }
    unset[1] = giUnitVec3();
    more.append(general_direction());
    mlVector p = vector_of({1, 2, 3});
    for (auto const * normals : {&two, &around, &unset, &more}) {
        EXPECT_EQ(none, generator(part.points, *normals).get_guess_from_normals(p));
    }
    EXPECT_EQ(3, p.dimension());
    EXPECT_LT(generator(part.points, part.normals).get_guess_from_normals(p), 1e-28);
}

TEST(ConeGuesses, TwoCirclesTakeTheMostNearlyParallelOnes) {
    cone_shape part(giPoint3(1, 2, 3), general_direction(), 0.4);
    part.section(1.0, 3).section(2.0, 1, 0.4).section(1.9, 1, 2.0).section(2.2, 1, 4.4);  // a section aslant
    mlVector p;
    ASSERT_EQ(6, part.points.size());
    EXPECT_LT(generator(part.points).get_guess_two_circles(p), 0.1);
    EXPECT_GT(distance(part.apex, apex_of(p)), 1e-3);
    part.section(2.5, 3);
    EXPECT_LT(generator(part.points).get_guess_two_circles(p), 1e-27);  // points 6, 7, 8
    expect_cone(part, p, 1e-13, 1.0);
}

TEST(ConeGuesses, TwoCirclesRefuseWhatIsNoCone) {
    giUnitVec3 const up(0, 0, 1);
    mlVector p;
    // A circle of three points, and another at a height, of a radius, tilted by so much.
    auto const refused = [&](double height, double radius, double tilt, int n = 3) {
        giPoint3coDynArr points = arc(giPoint3(0, 0, 0), up, 1.0, 4.0, 3);
        giUnitVec3 const normal(std::sin(tilt), 0.0, std::cos(tilt));
        giPoint3coDynArr const other = arc(giPoint3(0, 0, height), normal, radius, 4.0, 3);
        for (int i = 0; i < n; ++i) points.append(other[i]);
        return generator(points).get_guess_two_circles(p) == none;
    };
    for (double const cosine : {1.0, 0.86, 0.84, -0.86}) {
        EXPECT_EQ(cosine == 0.84, refused(1.0, 2.0, std::acos(cosine))) << cosine;
    }
    EXPECT_TRUE(refused(1.0, 2.0, 0.0, 2));  // points too few for a second circle
    EXPECT_TRUE(refused(0.5e-7, 2.0, 0.0) && !refused(2e-7, 2.0, 0.0));
    EXPECT_TRUE(refused(1.0, 1.0 + 0.5e-7, 0.0) && !refused(0.9, 1.0 + 2e-7, 0.0));
    EXPECT_TRUE(refused(3.0, 1.0 + 2e-7, 0.0));  // an apex too far
    EXPECT_EQ(none, generator(giPoint3coDynArr{giPoint3(), giPoint3()}).get_guess_two_circles(p));
}

TEST(ConeGuesses, FlatKeepsTheBestOfItsWalk) {
    cone_shape part(giPoint3(0.3, -0.2, 0.4), general_direction(), 1.5);
    part.section(0.1, 7).section(0.17, 9);
    giPoint3 middle;
    giUnitVec3 n;
    double deviation, lo = 0.0, hi = 0.0, lowest = none;
    sqLeastSquareEvaluator::evaluate_plane(part.points, middle, n, deviation);
    for (int i = 0; i < part.points.size(); ++i) {
        lo = std::min(lo, n.dot(part.points[i] - middle));
        hi = std::max(hi, n.dot(part.points[i] - middle));
    }
    mlVector p = vector_of({0, 0, 0, 0, 0, 0, 0, utMath::pi() / 2 - 0.005}), best, found;
    sqConeGuessGenerator generator(part.points, anywhere, giAngle(), no_normals);
    for (int k = 1; k <= 100; ++k) {
        giVector3 const q = middle.release() + (lo + k * (hi - lo) / 100.0) * n;
        for (giVector3 const & a : {static_cast<giVector3>(n), -static_cast<giVector3>(n)}) {
            for (int j = 0; j < 3; ++j) p[3 + j] = a.coordinate(gi_Axis(j));
            for (int j = 0; j < 3 && n.dot(a) > 0.0; ++j) p[j] = q.coordinate(gi_Axis(j));
            double const sum = generator.deviation(p);
            if (sum < lowest) best = p;
            lowest = std::min(lowest, sum);
        }
    }
    EXPECT_NEAR(lowest, generator.get_guess_flat(found), 1e-12 * lowest);
    for (int k = 0; k < 8; ++k) EXPECT_NEAR(best[k], found[k], 1e-12);
}

// What a trial makes of three numbers for its direction and two for its place.
mlVector trial(giPoint3coDynArr const & points, giUnitVec3 const & direction, double width, mlRandom & random) {
    sqLeastSquareConeFixedAxis problem(points);
    problem.set_axis(direction);
    giVector3 const middle = problem.centroid().release();
    double const x = middle.dot(problem.x_axis()), y = middle.dot(problem.y_axis());
    mlVector start(mlVectorDim, 2), place, full;
    start[0] = random.rnd(x - width, x + width);
    start[1] = random.rnd(y - width, y + width);
    mlLevenbergMarquardt(problem).fit(start, place);
    problem.set_parameters(place);
    problem.full_fit_parameters(full);
    return full;
}

TEST(ConeGuesses, FixedAxesAreDrawnInOneOrder) {
    cone_shape part(general_point(1.0), general_direction(), 0.4);
    part.section(1.0, 7).section(2.5, 6);
    noise error;
    for (int i = 0; i < 13; ++i) part.points[i] += error.vector(0.01);
    sqLeastSquareCone scores(part.points);
    mlRandom random(6983277);
    for (int i = 0; i < 200; ++i) {
        double const x = random.minus_one_one(), y = random.minus_one_one(), z = random.minus_one_one();
        if (i != 0 && i != 59 && i != 60 && i != 199) continue;
        // With no other direction admitted, the trials before this one draw no places.
        giUnitVec3 const direction(x, y, z);
        mlRandom places(random);
        mlVector expected = trial(part.points, direction, (1 + i / 60) * 3.0 * scores.range(), places), found;
        scores.score(expected, none);
        double const sum = scores.score(expected, none);  // the best trial is scored once more at the end
        sqConeGuessGenerator only(part.points, i % 2 == 0 ? direction : -direction, giAngle(giAngleRadians, 1e-5),
                                  no_normals);
        EXPECT_EQ(sum, only.get_guess_fixed_axis_fit(found)) << i;
        for (int k = 0; k < 8; ++k) EXPECT_EQ(expected[k], found[k]);

        // The next call draws on, and finds no direction admitted: the argument is scored as it comes.
        mlVector as_is = vector_of({1, 2, 3, 0, 0, 2, 0, 0.5}), copy(as_is);
        EXPECT_EQ(scores.score(copy, none), only.get_guess_fixed_axis_fit(as_is));
        for (int k = 0; k < 8; ++k) EXPECT_EQ(copy[k], as_is[k]);
    }
}

TEST(ConeGuesses, AreCalmWithoutPoints) {
    giPoint3coDynArr const nothing;
    sqConeGuessGenerator empty = generator(nothing);
    mlVector p = vector_of({1, 2, 3, 0, 0, 2, 0, 0.5});
    EXPECT_EQ(0.0, empty.deviation(p));
    EXPECT_EQ(none, empty.get_guess_flat(p));
    EXPECT_EQ(none, empty.get_guess_two_circles(p));
    EXPECT_EQ(none, empty.get_guess_from_normals(p));
    EXPECT_EQ(0.0, empty.get_guess_fixed_axis_fit(p));
}

// Solutions are told apart by their first entry; the limit admits the z axis.
class ConeRanking : public testing::TestWithParam<double> {
protected:
    void add(double square, double name, double half_angle, bool within) {
        mlVector p = vector_of({name, 0, 0, within ? 0.0 : 1.0, 0, within ? -1.0 : 0.0, 0, half_angle});
        results.add(square, p);
    }
    double best() const {
        double square;
        mlVector p;
        results.get_best(square, p);
        return square == none ? none : p[0];
    }
    giPoint3coDynArr const points;
    sqLeastSquareConeResults results{
        ut_make_observer(&points), ut_make_observer(&no_normals), giAxisZ, giAngle(giAngleDegrees, 10.0), 1000.0, 0.05};
};

TEST_F(ConeRanking, KeepsTheLowestOfEachKind) {
    EXPECT_EQ(none, best());
    add(1.0, 1, 0.05, true);  // not above the tolerance: non-physical
    EXPECT_EQ(none, results.constrained_deviation());
    add(2.0, 2, utMath::pi() / 2 - 0.05, true);
    EXPECT_EQ(1.0, best());
    add(4.0, 3, -0.6, true);
    EXPECT_EQ(4.0, results.constrained_deviation());
    add(4.0, 4, 0.6, true);
    EXPECT_EQ(3.0, best());
    add(3.9, 5, 0.6, false);
    EXPECT_EQ(4.0, results.constrained_deviation());
    add(3.9, 6, 0.6, true);
    EXPECT_EQ(6.0, best());
    add(0.0390001, 7, 0.01, true);
    EXPECT_EQ(6.0, best());
    add(0.0389999, 8, 0.01, true);
    EXPECT_EQ(8.0, best());
}

TEST_P(ConeRanking, DoubtsConesNearlyNonPhysical) {
    double const h = GetParam();
    add(1.0, 1, h, true);
    add(1.0, 2, 0.01, true);
    EXPECT_EQ(1.0, best());
    add(0.5, 3, 0.01, true);
    bool const doubted = h < 0.095 || h > utMath::pi() / 2 - 0.095;
    EXPECT_EQ(doubted ? 3.0 : 1.0, best());
}

TEST_F(ConeRanking, GivesUpALimitForMuchBetterOnly) {
    for (double const h : {0.01, 0.6}) {  // the proper solutions displace the others, being no worse
        add(4.0, 1, h, true);
        add(1.0, 2, h, false);  // roots 2 and 1: right at a 1000th of the range
        EXPECT_EQ(1.0, best()) << h;
        add(0.999, 3, h, false);
        EXPECT_EQ(3.0, best()) << h;
    }
}

INSTANTIATE_TEST_SUITE_P(HalfAngles, ConeRanking,
                         testing::Values(0.1, utMath::pi() / 2 - 0.1, 0.09, utMath::pi() / 2 - 0.09));

}  // namespace
