#include "extremal/round_parts.h"
#include "support/shapes.h"

#include <datumfit/extremal/min_max_circle_fit.h>
#include <datumfit/extremal/probed_min_max_circle_function_n1.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

using points2 = std::vector<giPoint2>;
using numbers = std::vector<double>;
using records = std::vector<std::pair<double, std::size_t>>;

TEST(CircleFitUtils, ListsTheFarthestAndTheNearest) {
    double const tie = 1.1e-7;  // below 2^-23
    // Each within a tie of the one before: 3, 4 and 5 creep away from 2, and 8 from 6.
    points2 const points = {{2.0, 0.0},  {0.0, 3.0}, {5.0, 0.0}, {5.0 + tie, 0.0},  {0.0, 5.0 + 2.0 * tie},
                            {-5.0, 0.0}, {1.0, 0.0}, {0.0, 1.0}, {0.0, -1.0 + tie}, {-1.0, 0.0}};
    records far = {{9.0, 99}}, near = far;
    sqCircleFitUtils::calculate_distances(points, giPoint2(0.0, 0.0), far, near, {});
    EXPECT_EQ(far, (records{{5.0 + 2.0 * tie, 4}, {5.0 + tie, 3}}));
    EXPECT_EQ(near, (records{{1.0 - tie, 8}, {1.0, 6}, {1.0, 7}, {1.0, 9}}));

    numbers const radii = {1.0, -3.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 2.0, 0.0};
    sqCircleFitUtils::calculate_distances(points, giPoint2(0.0, 0.0), far, near, radii);
    EXPECT_EQ(far, (records{{6.0, 1}}));
    EXPECT_EQ(near.size(), 1u);
    EXPECT_EQ(near[0].second, 8u);

    // Squares of distances beyond doubles, and of a point in the centre.
    sqCircleFitUtils::calculate_distances({{0.0, 5e200}, {0.0, 0.0}, {1e-200, 0.0}, {1.0, 0.0}}, giPoint2(0.0, 0.0),
                                          far, near, {});
    EXPECT_EQ(far, (records{{5e200, 0}}));
    EXPECT_EQ(near, (records{{0.0, 1}, {1e-200, 2}}));

    // Distances below -1 are never far, and leave the list.
    numbers const large(points.size(), 100.0);
    sqCircleFitUtils::calculate_distances(points, giPoint2(0.0, 0.0), far, near, large);
    EXPECT_EQ(far, (records{{5e200, 0}}));
    EXPECT_EQ(near[0].second, 8u);
}

TEST(CircleFitUtils, StepsToTheFirstTie) {
    giPoint2 const origin(0.0, 0.0);
    giVector2 const two_x(2.0, 0.0);
    points2 points = {{0.0, 1.0}, {3.0, 0.0}, {0.0, -1.0}};
    double step = 0.0;
    EXPECT_TRUE(sqCircleFitUtils::step_distance(origin, two_x, points, {{1.0, 0}}, step));
    EXPECT_NEAR(2.0 / 3.0, step, 1e-15) << "(3, 0) is as near at x = 4 / 3";
    points.push_back({-2.0, 0.0});
    EXPECT_TRUE(sqCircleFitUtils::step_distance(origin, two_x, points, {{1.0, 0}, {2.0, 3}}, step));
    EXPECT_NEAR(0.25, step, 1e-15) << "two points that are not nearest meet at x = 1 / 2";
    EXPECT_FALSE(sqCircleFitUtils::step_distance(origin, two_x.orthogonal(), {points[1], points[1]}, {{3.0, 0}}, step));
    EXPECT_EQ(utMath::max_double(), step);
}

double width(points2 const & points, numbers const & signed_radii, giPoint2 const & c) {
    mlVector x(mlVectorZero, 2);
    x[0] = c.x();
    x[1] = c.y();
    return sqProbedMinMaxCircleFunctionN1(points, signed_radii).function(x);
}

points2 profile(giPoint2 const & centre, int n, noise & error, double angle = 2.0 * utMath::pi()) {
    double const lobes = 0.004 * error(), phase = error();
    points2 points;
    for (int i = 0; i < n; ++i) {
        double const t = angle * i / n, r = 1.0 + lobes * std::cos(3.0 * t + phase) + 0.002 * error();
        points.push_back(centre + giVector2(r * std::cos(t), r * std::sin(t)));
    }
    return points;
}

// The narrowest ring has two points on either rim, so its centre is where the bisectors of two pairs meet.
double narrowest_ring(points2 const & points) {
    double least = std::numeric_limits<double>::max();
    std::vector<std::pair<giPoint2, giVector2>> bisectors;
    for (std::size_t i = 0; i < points.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            bisectors.emplace_back(points[i].interpolate(points[j], 0.5), (points[i] - points[j]).orthogonal());
        }
    }
    numbers const none(points.size(), 0.0);
    for (std::size_t a = 0; a < bisectors.size(); ++a) {
        for (std::size_t b = 0; b < a; ++b) {
            auto const & [p, d] = bisectors[a];
            auto const & [q, e] = bisectors[b];
            if (d.cross(e) == 0.0) continue;
            least = std::min(least, width(points, none, p + (q - p).cross(e) / d.cross(e) * d));
        }
    }
    return least;
}

class MinMaxCircle : public testing::TestWithParam<placement> {};

TEST_P(MinMaxCircle, HoldsTheProfileInARing) {
    placement const at = GetParam();
    noise error;
    for (int i = 0; i < 6; ++i) {
        points2 points = profile(giPoint2(0.1, -0.2), 14, error);
        for (giPoint2 & p : points) p = giPoint2(at.offset, -at.offset / 3.0) + at.size * p.release();
        numbers const none(points.size(), 0.0);
        double const least = narrowest_ring(points), near = 1e-7 * at.size + 8.0 * rounding_at(at);
        double walked = 0.0, zone = 0.0;
        giCircle2 const walk = sqMinMaxCircleFit::fit(points, walked);
        giCircle2 const simplex = sqMinMaxCircleFit::fit_probed(points, none, i % 2 != 0, zone);
        EXPECT_NEAR(least, zone, near);
        EXPECT_GE(walked, least - near);
        for (auto const & [circle, ring] : {std::make_pair(walk, walked), std::make_pair(simplex, zone)}) {
            EXPECT_NEAR(ring, width(points, none, circle.centre()), rounding_at(at));
            for (giPoint2 const & p : points) {
                EXPECT_LE(std::abs(distance(circle.centre(), p) - circle.radius()), 0.5 * ring + 2.0 * rounding_at(at));
            }
        }
        // The walk ends where two points are nearest, or has not begun.
        giPointAverage2 mean;
        for (giPoint2 const & p : points) mean.accumulate(p);
        double const at_mean = width(points, none, mean.average());
        records far, nearest;
        sqCircleFitUtils::calculate_distances(points, walk.centre(), far, nearest, {});
        EXPECT_TRUE(nearest.size() > 1 || walked == at_mean);
        EXPECT_LE(walked, at_mean);
    }
}
INSTANTIATE_TEST_SUITE_P(Placements, MinMaxCircle,
                         testing::Values(placement{"unit", 0.0, 1.0}, placement{"far", 1e4, 1.0},
                                         placement{"large", 0.0, 100.0}),
                         [](auto const & placement) { return placement.param.name; });

TEST(MinMaxCircle, WalksFromTheMeanToTheFirstTies) {
    // From the mean, the origin, towards the farthest point until it is as near as the nearest one. There the two
    // nearest and the two farthest points interlace.
    points2 const points = {{6.0, 0.0}, {-1.0, 0.0}, {-2.5, 2.0}, {-2.5, -2.0}};
    double zone = 0.0;
    giCircle2 const c = sqMinMaxCircleFit::fit(points, zone);
    EXPECT_NEAR(2.5, c.centre().x(), 1e-15);
    EXPECT_NEAR(0.0, c.centre().y(), 1e-15);
    EXPECT_NEAR(std::sqrt(29.0) - 3.5, zone, 1e-14);
    EXPECT_NEAR(0.5 * (std::sqrt(29.0) + 3.5), c.radius(), 1e-14);
}

TEST(MinMaxCircle, OfMeasuredParts) {
    // The walk stops short of both of the narrowest rings, at the second position and at the mean.
    double zone = 0.0;
    for (auto const & part : {train_axle(), round_of_24()}) {
        giCircle2 const c = sqMinMaxCircleFit::fit_probed(part.points, numbers(part.points.size(), 0.0), false, zone);
        EXPECT_NEAR(part.zone, zone, 1e-12);
        EXPECT_NEAR(part.outer_radius, c.radius() + 0.5 * zone, 1e-9);
        EXPECT_NEAR(0.0, distance(part.ring_centre, c.centre()), 1e-9);
        sqMinMaxCircleFit::fit(part.points, zone);
        EXPECT_NEAR(part.walked_zone, zone, 1e-13);
    }
}

TEST(MinMaxCircle, OfFewPoints) {
    double zone = 7.0;
    EXPECT_TRUE(sqMinMaxCircleFit::fit({}, zone).centre().invalid() && zone == 0.0);
    EXPECT_TRUE(sqMinMaxCircleFit::fit_probed({}, {}, true, zone).centre().invalid());
    EXPECT_EQ(0.0, width({}, {}, giPoint2(1.0, 2.0)));
    giPoint2 const p(3.0, 4.0), q(9.0, 12.0);
    EXPECT_TRUE(sqMinMaxCircleFit::fit({p}, zone).radius() == 0.0 && zone == 0.0);
    EXPECT_TRUE(sqMinMaxCircleFit::fit({p, p, p}, zone).radius() == 0.0 && zone == 0.0);
    giCircle2 const pair = sqMinMaxCircleFit::fit({p, q}, zone);
    EXPECT_TRUE(pair.radius() == 5.0 && pair.centre().x() == 6.0 && zone == 0.0);
    points2 const beyond = {{1.7e308, 0.0}, {-1.7e308, 1.0}, {0.0, 1.7e308}, {9.0, -1.7e308}};
    EXPECT_TRUE(sqMinMaxCircleFit::fit(beyond, zone).centre().invalid() && zone == 0.0);
    EXPECT_TRUE(sqMinMaxCircleFit::fit_probed(beyond, numbers(4, 1.7e308), true, zone).centre().invalid());
}

TEST(ProbedMinMaxCircle, TakesTheRadiiFromTheirSide) {
    // Probe centres of probes of two sizes about a true circle, which leave no ring.
    for (bool const inside : {true, false}) {
        points2 points;
        numbers radii;
        for (int i = 0; i < 9; ++i) {
            double const t = 0.7 * i;
            radii.push_back(i % 2 ? 0.5 : 1.2);
            double const d = 10.0 + (inside ? -radii.back() : radii.back());
            points.push_back({2.0 + d * std::cos(t), 1.0 + d * std::sin(t)});
        }
        double zone = 0.0;
        giCircle2 const c = sqMinMaxCircleFit::fit_probed(points, radii, inside, zone);
        EXPECT_NEAR(0.0, zone, 1e-9);
        EXPECT_NEAR(10.0, c.radius(), 1e-9);
        EXPECT_NEAR(0.0, distance(c.centre(), giPoint2(2.0, 1.0)), 1e-9);
    }
    // From within discs that are much larger than the set.
    double zone = 0.0;
    giCircle2 const c =
        sqMinMaxCircleFit::fit_probed({{0.0, 0.0}, {1.0, 0.0}, {0.0, 1.0}}, {9.0, 9.0, 9.5}, false, zone);
    EXPECT_EQ(0.0, c.radius());
    EXPECT_NEAR(zone, width({{0.0, 0.0}, {1.0, 0.0}, {0.0, 1.0}}, {9.0, 9.0, 9.5}, c.centre()), 1e-14);
}

}  // namespace
