#include "align2d/plane_motions.h"

#include <datumfit/align2d/points_to_lines.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

using namespace align2d_tests;

namespace {

struct Pair {
    giPoint2 measured, line_point;
    giVector2 normal;
    double weight;
};

// Pairs in general position about a place, with lines in all directions, and normals not of unit length.
std::vector<Pair> pairs_at(placement const & at, double error, int n = 12) {
    giPoint2coDynArr const places = arc(general_point2(at.offset), at.size, 5.0, n, 0.2);
    noise draw;
    std::vector<Pair> pairs;
    for (int i = 0; i < n; ++i) {
        giVector2 const off(error * at.size * draw(), error * at.size * draw());
        pairs.push_back({places.read(i), places.read(i) + off,
                         (0.7 + 0.1 * i) * giVector2(std::cos(2.1 * i), std::sin(2.1 * i)), 1.0 + 0.3 * i});
    }
    return pairs;
}

giPoint2coDynArr measured_of(std::vector<Pair> const & pairs) {
    giPoint2coDynArr points;
    for (Pair const & p : pairs) points.append(p.measured);
    return points;
}

enum class Lock { none, origin, axis, both };

giVector2 const axis_from(3.0, 4.0), axis_to(-1.0, 20.0);

struct Locked {
    Lock lock;
    giPoint2 from, to;

    Locked(Lock kind, giPoint2 const & centre, double size)
        : lock(kind), from(centre + giVector2(0.4 * size, -0.3 * size)), to(from + giVector2(0.2 * size, 0.1 * size)) {}

    bool has_axis() const { return lock == Lock::axis || lock == Lock::both; }
    bool has_origin() const { return lock == Lock::origin || lock == Lock::both; }

    void set(sqPointsToLines & engine) const {
        if (has_axis()) engine.lock_axis(axis_from, axis_to);
        if (has_origin()) engine.lock_origin(from, to);
    }
    // What the lock asks for, whatever the points.
    giXform2 start() const {
        giPoint2 const pivot = has_origin() ? from : giPoint2(giOrigin);
        giVector2 const shift = has_origin() ? to - from : giVector2(0.0, 0.0);
        return motion(pivot, has_axis() ? axis_from.signed_angle(axis_to).angle(giAngleRadians) : 0.0, shift);
    }
    // How a place moves with the unknowns left, after the start.
    std::vector<giVector2> freedom(giPoint2 const & place) const {
        giVector2 const x(1.0, 0.0), y(0.0, 1.0), along = axis_to.unit();
        if (lock == Lock::both) return {along};
        if (lock == Lock::axis) return {x, y};
        if (lock == Lock::origin) return {(place - to).orthogonal()};
        return {x, y, place.release().orthogonal()};
    }
};

sqPointsToLines engine_for(std::vector<Pair> const & pairs, Locked const & locked) {
    sqPointsToLines engine;
    for (Pair const & p : pairs) {
        engine.add_bestfit(sqLineAndPoint(p.measured, p.line_point, p.normal), -unbounded, unbounded, p.weight);
    }
    locked.set(engine);
    return engine;
}

// The step by Gaussian elimination in extended precision, from how places move with each unknown.
giXform2 expected_step(std::vector<Pair> const & pairs, Locked const & locked) {
    giXform2 const start = locked.start();
    std::size_t const n = locked.freedom(locked.to).size();
    long double a[3][4] = {};
    for (Pair const & p : pairs) {
        giPoint2 const m = start * p.measured;
        std::vector<giVector2> f = locked.freedom(m);
        f.resize(3, giVector2(0.0, 0.0));
        f.insert(f.begin() + static_cast<std::ptrdiff_t>(n), p.line_point - m);
        auto const add = [&](giVector2 const & along, long double weight) {
            auto const on = [&](giVector2 const & v) {
                return static_cast<long double>(v.x()) * along.x() + static_cast<long double>(v.y()) * along.y();
            };
            for (std::size_t j = 0; j < n; ++j) {
                for (std::size_t k = 0; k <= n; ++k) a[j][k] += weight * on(f[j]) * on(f[k]);
            }
        };
        add(p.normal, p.weight);
        add(giVector2(1.0, 0.0), 0.01L * p.weight);
        add(giVector2(0.0, 1.0), 0.01L * p.weight);
    }
    for (std::size_t j = 0; j < n; ++j) {
        for (std::size_t i = 0; i < n; ++i) {
            long double const factor = i == j ? 0.0L : a[i][j] / a[j][j];
            for (std::size_t k = 0; k <= n; ++k) a[i][k] -= factor * a[j][k];
        }
    }
    auto const x = [&](std::size_t k) { return static_cast<double>(a[k][n] / a[k][k]); };
    giPoint2 const origin(giOrigin);
    if (locked.lock == Lock::both) return product(motion(origin, 0.0, x(0) * axis_to.unit()), start);
    if (locked.lock == Lock::origin) return product(motion(locked.to, x(0), giVector2(0.0, 0.0)), start);
    return product(motion(origin, n == 3 ? x(2) : 0.0, giVector2(x(0), x(1))), start);
}

class LineStep : public testing::TestWithParam<Lock> {};

TEST_P(LineStep, SolvesTheLinearisedProblem) {
    for (placement const & at : placements) {
        SCOPED_TRACE(at.name);
        std::vector<Pair> const pairs = pairs_at(at, 0.01);
        Locked const locked(GetParam(), general_point2(at.offset), at.size);
        sqPointsToLines engine = engine_for(pairs, locked);
        giXform2 step;
        engine.single_linear_step(step);
        // The condition of the turn about the origin magnifies the rounding of the free step: 20 at most here.
        EXPECT_LT(difference(step, expected_step(pairs, locked), measured_of(pairs)), 100.0 * rounding_at(at));
    }
}

TEST_P(LineStep, ArrivesAtTheLockedPose) {
    Lock const lock = GetParam();
    for (placement const & at : placements) {
        SCOPED_TRACE(at.name);
        giPoint2 const centre = general_point2(at.offset);
        Locked const locked(lock, centre, at.size);
        // Lines where the points come to lie by a motion that the lock allows.
        giXform2 const slide = motion(centre, 0.0, 0.05 * at.size * axis_to.unit());
        giXform2 const turn = motion(locked.to, lock == Lock::axis ? 0.0 : 0.1, giVector2(0.0, 0.0));
        giXform2 const truth = product(lock == Lock::origin ? turn : slide, locked.start());
        std::vector<Pair> pairs = pairs_at(at, 0.0);
        for (Pair & p : pairs) p.line_point = truth * p.measured;

        sqPointsToLines engine = engine_for(pairs, locked);
        giXform2 first_step, step, found, again;
        engine.single_linear_step(first_step);
        double const deviation = engine.fit(found, 1e-13 * (at.offset + at.size));
        engine.single_linear_step(step);
        EXPECT_EQ(deviation, engine.fit(again, 1e-13 * (at.offset + at.size)));
        giPoint2coDynArr const points = measured_of(pairs);
        EXPECT_LT(difference(found, truth, points), 40.0 * rounding_at(at));
        EXPECT_LT(deviation, 80.0 * rounding_at(at));
        EXPECT_EQ(0.0, difference(first_step, step, points)) << "the engine has changed";
        EXPECT_EQ(0.0, difference(found, again, points));
    }
}

INSTANTIATE_TEST_SUITE_P(Locks, LineStep, testing::Values(Lock::none, Lock::origin, Lock::axis, Lock::both));

// Points below y = 0 on a line along x, which they should lie on; their deviations are their heights.
sqLineAndPoint height_record(double x, double y) {
    return sqLineAndPoint(giPoint2(x, y), giPoint2(x, 0.0), giVector2(giAxisY));
}

std::vector<double> heights(sqPointsToLines const & engine, giXform2 const & x) {
    doublecoDynArr deviations{1.0};
    engine.signed_deviations(x, deviations);
    return std::vector<double>(deviations.data(), deviations.data() + deviations.size());
}

std::vector<int> given_up(sqPointsToLines const & engine) {
    return numbers_in(engine.overdetermined_constraints());
}

TEST(LineBands, MoveASingleRecordIntoItsBand) {
    for (double const y : {2.0, -2.0}) {
        for (double const x : {0.0, 500.0}) {
            sqPointsToLines engine;
            engine.add_bestfit(height_record(x, y), -0.5, 0.5, 1.0);
            giXform2 step;
            engine.single_linear_step(step);
            EXPECT_LE(std::abs(heights(engine, step)[0]), 0.5 + 1e-12);
        }
    }
}

TEST(LineBands, AreNumberedPastThoseGivenUpForGood) {
    sqPointsToLines engine;
    engine.add_bestfit(height_record(0.0, 0.0), -1.0, HUGE_VAL, 1.0);     // 0: an infinite end is none
    engine.add_bestfit(height_record(2.0, 0.0), 0.4, 0.3, 1.0);           // 1, 2: contradict each other
    engine.add_bestfit(height_record(4.0, 0.0), std::nan(""), 1.0, 1.0);  // 3
    engine.add_bestfit(height_record(2.0, 0.0), -unbounded, 0.1, 1.0);    // 4: contradicts 1
    giXform2 step, same;
    engine.single_linear_step(step);
    EXPECT_EQ(std::vector<int>({1}), given_up(engine));
    engine.single_linear_step(same);
    EXPECT_EQ(std::vector<int>({1}), given_up(engine));
    EXPECT_EQ(0.0, (step * giPoint2(2.0, 0.0)).distance(same * giPoint2(2.0, 0.0)));
    engine.add_bestfit(height_record(2.0, 0.0), 0.2, 0.25, 1.0);  // 5: contradicts 4, which is one as well as one of 5
    engine.single_linear_step(step);
    EXPECT_EQ(std::vector<int>({1, 5}), given_up(engine));
}

TEST(LineBands, HoldAtAnyPlaceAndSize) {
    for (placement const & at : placements) {
        SCOPED_TRACE(at.name);
        std::vector<Pair> const pairs = pairs_at(at, 0.05);
        // The largest deviation, as a share of the normal, that a fit with such a band on all pairs leaves.
        auto const worst = [&](double band) {
            sqPointsToLines engine;
            for (Pair const & p : pairs) {
                double const end = band * p.normal.length();
                engine.add_bestfit(sqLineAndPoint(p.measured, p.line_point, p.normal), -end, end, p.weight);
            }
            giXform2 found;
            engine.fit(found, 0.0);
            EXPECT_TRUE(given_up(engine).empty());
            std::vector<double> const deviations = heights(engine, found);
            double largest = 0.0;
            for (std::size_t i = 0; i < pairs.size(); ++i) {
                largest = std::max(largest, std::abs(deviations[i]) / pairs[i].normal.length());
            }
            return largest;
        };
        double const open = worst(at.size), band = 0.9 * open;
        EXPECT_GT(open, 0.05 * at.size);
        EXPECT_NEAR(band, worst(band), 4.0 * rounding_at(at) + 1e-12 * at.size);
    }
}

TEST(PointsToLines, HasAnswersForNothingToFit) {
    for (double const tolerance : {1.0, 0.0}) {
        sqPointsToLines engine;
        giXform2 found;
        EXPECT_EQ(0.0, engine.fit(found, tolerance));
        EXPECT_EQ(0.0, (found * giPoint2(3.0, 4.0)).distance(giPoint2(3.0, 4.0)));
        EXPECT_EQ(0.0, engine.best_fit_deviation_with_transform(found));
        EXPECT_TRUE(heights(engine, found).empty());
    }
    sqPointsToLines engine;
    engine.lock_origin(giPoint2(1.0, 2.0), giPoint2(3.0, 5.0));
    engine.lock_axis(giVector2(1.0, 0.0), giVector2(0.0, 0.0));  // no direction, no lock
    giXform2 found;
    engine.fit(found, 0.0);
    EXPECT_NEAR(0.0, (found * giPoint2(2.0, 2.0)).distance(giPoint2(4.0, 5.0)), 1e-15);
}

TEST(PointsToLines, PinsWhatTheLinesLeaveOpen) {
    sqPointsToLines engine;
    for (double const x : {-1.0, 0.0, 1.0}) {
        sqLineAndPoint const aside(giPoint2(x, 0.0), giPoint2(x + 0.5, 0.0), giVector2(giAxisY));
        engine.add_bestfit(aside, -unbounded, unbounded, 2.0);
    }
    giXform2 found;
    EXPECT_EQ(0.0, engine.fit(found, 1e-9));
    EXPECT_NEAR(0.0, (found * giPoint2(0.0, 0.0)).distance(giPoint2(0.5, 0.0)), 1e-15);
}

TEST(PointsToLines, SumsDeviationsWithoutWeightsOrRoots) {
    sqPointsToLines engine;
    engine.add_bestfit(height_record(0.0, 3.0), -unbounded, unbounded, 7.0);
    engine.add_bestfit(sqLineAndPoint(giPoint2(1.0, 0.0), giPoint2(9.0, 1.0), giVector2(0.0, 2.0)), 0.0, 1.0, 7.0);
    giXform2 const up(giXformTranslate, giVector2(0.0, 1.0));
    EXPECT_EQ(std::vector<double>({4.0, 0.0}), heights(engine, up));
    EXPECT_EQ(16.0, engine.best_fit_deviation_with_transform(up));
}

TEST(PointsToLines, IsCalmWithRecordsThatAreNone) {
    double const nan = std::nan("");
    sqPointsToLines engine;
    engine.add_bestfit(sqLineAndPoint(), 1.0, 2.0, 1.0);
    engine.add_bestfit(sqLineAndPoint(giPoint2(nan, 0.0), giPoint2(giOrigin), giVector2(giAxisX)), 1.0, 2.0, 1.0);
    engine.add_bestfit(height_record(0.0, 1.0), -unbounded, unbounded, HUGE_VAL);
    engine.add_bestfit(height_record(1e300, 1e300), -unbounded, unbounded, 1e300);
    giXform2 found;
    EXPECT_EQ(1e300, engine.fit(found, 1e-9));
    sqPointsToLines beside;
    beside.add_bestfit(sqLineAndPoint(), 1.0, 2.0, 1.0);
    beside.add_bestfit(height_record(0.0, 1.0), -unbounded, unbounded, 1.0);
    EXPECT_NEAR(0.0, beside.fit(found, 1e-12), 1e-12);
    EXPECT_EQ(2U, heights(beside, found).size());
}

TEST(ProjectedPoint2, TellsDistancesOfValidRecordsOnly) {
    sqProjectedPoint2 p(giPoint2(3.0, 5.0), giPoint2(3.0, 1.0), giUnitVec2(0.0, -2.0));
    EXPECT_EQ(4.0, p.distance().value());
    EXPECT_EQ(-4.0, p.signed_distance());
    sqProjectedPoint2coDynArr cloud;
    cloud.append(p);
    cloud.append(sqProjectedPoint2(giPoint2(0.0, 1.0), giPoint2(giOrigin), giUnitVec2(giVector2(giAxisY))));
    giXform2 const turn = motion(giPoint2(giOrigin), 1.0, giVector2(0.0, 0.0));
    EXPECT_NEAR(2.0 * std::sin(0.5) * std::sqrt(34.0), get_maximum_movement(cloud, turn), 1e-14);
    cloud[0].set_invalid();
    EXPECT_EQ(-unbounded, cloud[0].measured_point().x());
    EXPECT_NE(0, cloud[0].invalid());
    EXPECT_NEAR(2.0 * std::sin(0.5), get_maximum_movement(cloud, turn), 1e-15);
    EXPECT_NE(0, sqProjectedPoint2().invalid());
}

}  // namespace
