#include "support/gradients.h"
#include "support/passes.h"
#include "support/shapes.h"
#include "support/vectors.h"

#include <datumfit/curved/ellipse/ellipse_kernel.h>
#include <datumfit/curved/ellipse/random_ellipses.h>

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace datumfit::internal;

double const ulp = std::numeric_limits<double>::epsilon();

// The signed distance by a search over the eccentric angle.
double searched_distance(double a, double b, double x, double y) {
    auto const square = [&](double t) {
        double const u = a * std::cos(t) - x, v = b * std::sin(t) - y;
        return u * u + v * v;
    };
    int const places = 2000;
    double const step = 2.0 * utMath::pi() / places;
    int best = 0;
    for (int i = 1; i < places; ++i) best = square(step * i) < square(step * best) ? i : best;
    double lo = step * (best - 1), hi = step * (best + 1);
    while (hi - lo > 1e-9) {
        double const third = (hi - lo) / 3.0;
        (square(lo + third) < square(hi - third) ? hi : lo) += square(lo + third) < square(hi - third) ? -third : third;
    }
    double const d = std::sqrt(square(0.5 * (lo + hi)));
    return x * x / (a * a) + y * y / (b * b) >= 1.0 ? d : -d;
}

// A place in the ellipse's axes, as shares of |a| and |b|: outside, inside, far off, in the evolute of a or of b (as
// which axis is the longer), at ends of the axes from both sides and both ends, and near an axis.
double const places[][2] = {{1.3, 0.4},  {-0.5, 0.6},  {0.2, -0.9},  {-7.0, -9.0}, {0.3, 0.01}, {0.1, 0.0},
                            {0.0, 0.1},  {1.2, 0.0},   {0.97, 0.0},  {-1.2, 0.0},  {0.0, 1.2},  {0.0, -1.2},
                            {0.0, 0.97}, {0.0, -0.97}, {-0.97, 0.0}, {-0.2, 0.0},  {0.0, -0.2}, {0.3, 1e-5}};
double const axes[][2] = {{2.0, 1.7}, {1.7, 2.0}, {-2.0, 1.7}, {2.0, -1.7}, {-1.7, -2.0}, {2.0, 0.3}, {0.2, -2.0}};

giPoint2 seen(mlVector const & p, double x, double y) {
    double const c = std::cos(p[4]), s = std::sin(p[4]);
    return giPoint2(p[2] + x * c - y * s, p[3] + y * c + x * s);
}

TEST(EllipseModel, FindsDistancesFeetAndDerivativesWhereverThePointLies) {
    for (double const size : {1e-3, 1.0, 1e5}) {
        for (auto const & at : axes) {
            mlVector const p = vector_of({size * at[0], size * at[1], 0.3 * size, -0.2 * size, 0.0});
            for (auto const & place : places) {
                SCOPED_TRACE(testing::Message() << p[0] << " " << p[1] << " at " << place[0] << " " << place[1]);
                double const x = place[0] * std::abs(p[0]), y = place[1] * std::abs(p[1]);
                giPoint2coDynArr const points = {seen(p, x, y)};
                sqLeastSquareProbedEllipse problem(points);
                problem.set_parameters(p);
                double d;
                giPoint2 foot;
                giVector2 normal;
                problem.get_distance_and_closest_point(d, foot, normal, 0);
                double const rounding = 8.0 * ulp * (2.0 * size + std::abs(x) + std::abs(y));
                EXPECT_NEAR(searched_distance(std::abs(p[0]), std::abs(p[1]), x, y), d, rounding);
                EXPECT_NEAR(0.0, (foot + d * normal).distance(points[0]).value(), 2.0 * rounding);
                mlVector q(p), each;
                problem.distances(q, each);
                EXPECT_NEAR(d, each[0], rounding);
                bool const near_axis = place[1] == 1e-5;  // where the other foot is nearly as near
                if (size != 1.0) continue;
                expect_gradients(problem, p, 1, false, near_axis ? 1e-6 : 2e-3, near_axis ? 1e-8 : 2e-9);
            }
        }
    }
}

TEST(EllipseModel, TakesTheEndsOfItsCases) {
    giPoint2coDynArr const points = {giPoint2(0.0, 0.0), giPoint2(3.0, 0.0), giPoint2(1e-9, 0.0)};
    sqLeastSquareProbedEllipse problem(points);
    double d;
    mlVector g(mlVectorZero, 5);
    giPoint2 foot;
    giVector2 normal;
    problem.set_parameters(vector_of({2.0, 2.0, 0.0, 0.0, 0.0}));
    problem.get_distance_and_closest_point(d, foot, normal, 0);
    EXPECT_EQ(-2.0, d);
    EXPECT_EQ(2.0, foot.y());
    problem.set_parameters(vector_of({3.0, 1.0, 0.0, 0.0, 0.0}));
    problem.get_distance_and_gradient(d, g, 1);
    EXPECT_FALSE(std::signbit(d)) << "on the ellipse is outside";
    EXPECT_EQ(-1.0, g[2]);
    problem.set_parameters(vector_of({2e-8, 1e-8, 0.0, 0.0, 0.0}));
    g.fill(7.0);
    problem.get_distance_and_gradient(d, g, 2);
    for (int k = 0; k < 5; ++k) EXPECT_EQ(k < 4 ? 0.0 : 7.0, g[k]);
    mlVector scales(mlVectorZero, 9);
    problem.set_parameters(vector_of({-3.0, 4.0, 0.0, 0.0, 0.0}));
    problem.parameter_scales(scales);
    EXPECT_EQ(5, scales.dimension());
    EXPECT_EQ(5.0, scales[4]);
    for (double const b : {0.0, 1e-30}) {  // a segment and a point; Pythagoras from their ends
        problem.set_parameters(vector_of({b > 0.0 ? b : 2.0, b, b > 0.0 ? 1.0 : 0.0, 1.0, 0.0}));
        mlVector p(utCopy, vector_of({b > 0.0 ? 0.0 : 2.0, b, 0.0, 4.0, 0.0})), each;
        problem.distances(p, each);
        EXPECT_NEAR(b > 0.0 ? 5.0 : std::sqrt(17.0), each[1], 1e-14);
    }
}

// Also at a circle, where the angle means nothing, and where the axes change their order or a short one its sign.
TEST(EllipseKernel, RowsAreTheDerivativesByEachStepAndDifferencesUndoSteps) {
    double const q[2] = {1.5, 1.4};
    for (auto const & at : {vector_of({2.0, 1.0, 0.3, 0.2, 0.4}), vector_of({2.0, 2.0, 0.3, 0.2, 1.5}),
                            vector_of({1.0, -2.0, 0, 0, 3.0})}) {
        ellipse_kernel kernel;
        mlVector x(at), to(at), step(mlVectorZero, 5), back(step);
        kernel.place(x);
        double row[1][6];
        kernel.row(q, 0.0, row);
        for (int k = 0; k < 5; ++k) {
            auto const distance = [&](double by) {
                ellipse_kernel moved;
                step.fill(0.0);
                step[k] = by;
                kernel.move(x, step, to);
                moved.place(to);
                double d[1];
                moved.distance(q, 0.0, d);
                kernel.difference(x, to, back);
                for (int j = 0; j < 5; ++j) EXPECT_NEAR(step[j], back[j], 1e-14);
                return d[0];
            };
            EXPECT_NEAR(derivative(distance, 0.0, 0.05), row[0][k], 1e-10) << k;
        }
    }
    expect_equal_passes<ellipse_kernel>();
}

// The same draws, each scored point by point.
TEST(RandomEllipses, FindsTheBestOfEachBatch) {
    giPoint2coDynArr const points = arc(giPoint2(20.0, -7.0), 3.0, 4.0, 40, 0.05);
    sqLeastSquareEllipse problem(points), plain(points);
    random_ellipses starts(problem, points);
    mlRandom random(1);
    giPoint2 const m = plain.centroid();
    double const range = plain.range();
    for (int batch = 0; batch < 19; ++batch) {
        mlVector found(mlVectorZero, 5), best;
        starts.best_of_next_batch(found);
        double least = utMath::max_double();
        for (int j = 0; j < 100; ++j) {
            double const lo = 0.01 * range, hi = (j < 50 ? 1 : 2) * range;
            double const a = random.rnd(lo, hi), b = random.rnd(lo, hi);
            plain.set_parameters(vector_of({a, b, m.x(), m.y(), 2.0 * utMath::pi() * random.zero_one()}));
            double sum = 0.0, d;
            for (int i = 0; i < points.size(); ++i) {
                plain.get_distance(d, i);
                sum += d * d;
            }
            if (sum < least) best = vector_of({a, b, m.x(), m.y(), 0.0});
            least = std::min(sum, least);
        }
        for (int k = 0; k < 4; ++k) EXPECT_EQ(best[k], found[k]) << batch;
    }
    EXPECT_LT(starts.scored(), 19 * 60);
}

giPoint2coDynArr ellipse_arc(placement const & at, double ratio, double angle, double extent, double form_error) {
    mlVector const p = vector_of({0, 0, general_point2(at.offset).x(), general_point2(at.offset).y(), angle});
    giPoint2coDynArr points(50, 1);
    noise error;
    for (int i = 0; i < 50; ++i) {
        double const t = 0.4 + extent * i / 50, dx = form_error * error(), dy = form_error * error();
        points.append(seen(p, at.size * (std::cos(t) + dx), at.size * (std::sin(t) / ratio + dy)));
    }
    return points;
}

struct fit {
    giPoint2 centre = giPoint2(7.0, 7.0);
    double major = 7.0, minor = 7.0, angle = 7.0, deviation = 7.0;

    int of(giPoint2coDynArr const & points) {
        return sqLeastSquareEvaluator::evaluate_ellipse(points, centre, major, minor, angle, deviation);
    }
};

class EllipseFit : public testing::TestWithParam<placement> {};

TEST_P(EllipseFit, FindsTheEllipseThatThePointsLieOn) {
    placement const at = GetParam();
    for (double const ratio : {1.5, 50.0}) {
        for (double const extent : {2.0 * utMath::pi(), 3.0}) {
            SCOPED_TRACE(testing::Message() << ratio << " over " << extent);
            fit f;
            ASSERT_EQ(1, f.of(ellipse_arc(at, ratio, 2.0, extent, 0.0)));
            double const rounding = (extent > 6.0 ? 4.0 : 60.0) * rounding_at(at);
            EXPECT_NEAR(0.0, f.centre.distance(general_point2(at.offset)).value(), rounding);
            EXPECT_NEAR(at.size, f.major, rounding);
            EXPECT_NEAR(at.size / ratio, f.minor, rounding);
            EXPECT_NEAR(2.0, f.angle, 4.0 * rounding / at.size);
            EXPECT_LE(f.deviation, 2.0 * rounding_at(at));
        }
    }
}

// The gradient of the sum of squares, by the slots, about the points' own place.
TEST_P(EllipseFit, LeavesNothingToGain) {
    placement const at = GetParam();
    for (double const ratio : {1.1, 20.0}) {
        giPoint2coDynArr const points = ellipse_arc(at, ratio, 0.7, 4.0, 3e-3);
        fit f;
        ASSERT_EQ(1, f.of(points));
        EXPECT_LT(f.deviation, 0.004 * at.size);
        sqLeastSquareEllipse problem(points);
        problem.set_parameters(vector_of({f.major, f.minor, f.centre.x(), f.centre.y(), f.angle}));
        double sum[5] = {}, squares = 0.0, d;
        for (int i = 0; i < points.size(); ++i) {
            mlVector g;
            problem.get_distance_and_gradient(d, g, i);
            squares += d * d;
            for (int k = 0; k < 5; ++k) sum[k] += d * g[k] / (k == 4 ? at.size : 1.0);
        }
        EXPECT_NEAR(f.deviation, std::sqrt(squares / points.size()), rounding_at(at));
        for (double const s : sum) EXPECT_NEAR(0.0, s / points.size(), 2.0 * rounding_at(at));
    }
}

INSTANTIATE_TEST_SUITE_P(Placements, EllipseFit, testing::ValuesIn(placements),
                         [](auto const & at) { return name_of(at.param); });

TEST(EllipseFits, RefuseThreePointsAndTakeFourOfACircle) {
    giPoint2coDynArr points = {giPoint2(2.0, 2.0), giPoint2(1.0, 3.0), giPoint2(0.0, 2.0)};
    fit f;
    EXPECT_EQ(0, f.of(points));
    EXPECT_EQ(7.0 * 4, f.major + f.minor + f.angle + f.deviation);
    points.append(giPoint2(1.0, 1.0));
    EXPECT_EQ(1, f.of(points));
    EXPECT_TRUE(f.major == 1.0 && f.minor == 1.0 && f.deviation == 0.0);
    EXPECT_EQ(utMath::pi() / 2.0, f.angle);
    EXPECT_EQ(1, f.of({points[0], points[0], points[0], points[0]}));
    EXPECT_NEAR(0.0, f.major + f.deviation, 1e-12);
}

TEST(EllipseFits, TellTheAngleInAPlaneFromTheReference) {
    giPoint3 const origin = general_point(1e4);
    giUnitVec3 const normal = general_direction(), u = normal.any_normal(), v(normal.cross(u));
    giPoint3coDynArr points(40, 1);
    for (int i = 0; i < 40; ++i) {
        double const t = 0.1 + 2.0 * utMath::pi() * i / 40, height = i % 2 == 0 ? 0.3 : -0.3;
        points.append(origin + (3.0 * std::cos(t) * u + 2.0 * std::sin(t) * v + (5.0 + height) * normal));
    }
    giPoint3 centre;
    fit f;
    auto const evaluate = [&](giUnitVec3 const & reference) {
        return sqLeastSquareEvaluator::evaluate_ellipse2(origin, reference, normal, points, centre, f.major, f.minor,
                                                         f.angle, f.deviation);
    };
    for (double const turn : {0.4, -0.4, 2.6}) {
        ASSERT_EQ(1, evaluate(giUnitVec3(std::cos(turn) * u + std::sin(turn) * v + 0.5 * normal)));
        EXPECT_NEAR(utMath::remd(-turn, utMath::pi()), f.angle, 1e-11);
    }
    EXPECT_NEAR(3.0, f.major, 1e-11);
    EXPECT_NEAR(2.0, f.minor, 1e-11);
    EXPECT_NEAR(0.0, centre.distance(origin).value(), 1e-11);
    EXPECT_NEAR(std::sqrt(25.0 + 0.09), f.deviation, 1e-11) << "the heights count from the plane, not from their mean";
    EXPECT_EQ(1, evaluate(normal));
    EXPECT_TRUE(f.angle >= 0.0 && f.angle < utMath::pi());
    points.shrink(3, 0);
    EXPECT_EQ(0, evaluate(u));
}

}  // namespace
