#include "support/shapes.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using quality = sqLeastSquareDistributionQuality;
double const whole = 2.0 * utMath::pi();

TEST(DistributionQuality, OfLinesWeighsExtentAgainstScatter) {
    giPoint2coDynArr flat = {giPoint2(0.0, 0.0), giPoint2(4.0, 0.02), giPoint2(10.0, -0.01)};
    giPoint3coDynArr space;
    for (int i = 0; i < 3; ++i) space.append(giPoint3(flat[i].x(), 7.0, flat[i].y()));
    giPoint3 const origin(0.0, 7.0, 0.0);
    EXPECT_DOUBLE_EQ(10.0 / (9.0 * 0.02 + 10.0),
                     quality::distribution_quality_line(flat, flat[0], giUnitVec2(1.0, 0.0)));
    EXPECT_DOUBLE_EQ(10.0 / (999.0 * 0.02 + 10.0), quality::distribution_quality_line3(space, origin, giAxisX));
    // Seen along the scatter there is none but the least that counts.
    EXPECT_DOUBLE_EQ(10.0 / (0.0999 + 10.0),
                     quality::distribution_quality_line2(giPoint3(3.0, 1.0, 0.0), giAxisZ, space, origin, giAxisX));
    giPoint3coDynArr const place = {origin, origin};
    EXPECT_EQ(0.0, quality::distribution_quality_line3(place, origin, giAxisX));
}

TEST(DistributionQuality, OfPlanesLooksAtThePointsOnly) {
    giPoint3coDynArr plate, strip;
    for (int i = 0; i <= 4; ++i) {
        for (int j = 0; j <= 4; ++j) {
            plate.append(giPoint3(i, 0.75 * j, 2.0) + (i % 2) * giVector3(0.0, 0.0, 0.01));
            strip.append(giPoint3(i, 0.1 * j, 2.0));
        }
    }
    giPoint3 const nowhere;
    double const height = 0.01;
    EXPECT_NEAR(std::sqrt(3.0 / 4.0001) * 12.0 / (999.0 * height * height + 12.0),
                quality::distribution_quality_plane(plate, nowhere, giAxisX), 1e-3);
    EXPECT_NEAR(std::sqrt(0.4 / 4.0001), quality::distribution_quality_plane(strip, nowhere, giAxisX), 1e-4);
    EXPECT_EQ(0.0, quality::distribution_quality_plane(giPoint3coDynArr{giPoint3(1.0, 1.0, 1.0)}, nowhere, giAxisX));
}

// The parameters must reach the model in its own order: all around is near 1, an arc far below.
TEST(DistributionQuality, OfCurvedPrimitivesFallsWithTheArc) {
    giPoint3 const c = general_point(0.0);
    giUnitVec3 const a = general_direction();
    for (double const scale : {1.0, 1e3}) {
        for (double const turn : {whole, 0.5}) {
            giPoint3coDynArr ring = arc(c, a, 3.0 * scale, turn, 60), tube, taper, torus;
            giPoint2coDynArr const circle = arc(giPoint2(1.0, 2.0), 3.0 * scale, turn, 60);
            doublecoDynArr const none = filled(60, 0.0);
            giUnitVec3 const u = a.any_normal(), v(a.cross(u));
            for (int i = 0; i < 60; ++i) {
                double const height = (i % 7 - 3) * scale;
                tube.append(ring[i] + height * a);
                taper.append(c + (5.0 * scale + height) / (3.0 * scale) * (ring[i] - c) - (5.0 * scale + height) * a);
                giVector3 const out = (ring[i] - c).unit();
                double const t = turn * 0.618 * i;
                torus.append(ring[i] + scale * (std::cos(t) * out + std::sin(t) * a));
            }
            bool const all = turn == whole;
            auto const expect = [&](double q, char const * name) {
                EXPECT_EQ(all, q > 0.3 && q < 2.0) << name << ' ' << q;
                EXPECT_EQ(!all, q < 0.2) << name << ' ' << q;
            };
            expect(quality::distribution_quality_circle(circle, giPoint2(1.0, 2.0), 3.0 * scale), "circle");
            expect(quality::distribution_quality_probed_circle(circle, none, 1, giPoint2(1.0, 2.0), 3.0 * scale),
                   "probed");
            expect(quality::distribution_quality_circle2(c + 2.0 * a, a, ring, c, 3.0 * scale), "circle2");
            expect(quality::distribution_quality_circle3(ring, c, a, 3.0 * scale), "circle3");
            expect(quality::distribution_quality_cylinder(tube, c, a, 3.0 * scale), "cylinder");
            expect(quality::distribution_quality_probed_cylinder(tube, none, 1, c, a, 3.0 * scale), "probed cylinder");
            expect(quality::distribution_quality_cone(taper, c, a, utMath::pi() / 4.0), "cone");
            expect(quality::distribution_quality_torus(torus, c, a, 3.0 * scale, scale), "torus");
            expect(quality::distribution_quality_sphere(sphere_cap(c, scale, 0.5 * turn, 60), c, scale), "sphere");
        }
    }
}

TEST(DistributionQuality, IsNothingForTwoPoints) {
    giPoint3coDynArr const two = {giPoint3(1.0, 0.0, 0.0), giPoint3(0.0, 1.0, 0.0)};
    giPoint3 const o(0.0, 0.0, 0.0);
    EXPECT_EQ(0.0, quality::distribution_quality_circle2(o, giAxisZ, two, o, 1.0));
    EXPECT_EQ(0.0, quality::distribution_quality_cylinder(two, o, giAxisZ, 1.0));
    EXPECT_EQ(0.0, quality::distribution_quality_cone(two, o, giAxisZ, 1.0));
    EXPECT_EQ(0.0, quality::distribution_quality_torus(two, o, giAxisZ, 1.0, 0.5));
}

}  // namespace
