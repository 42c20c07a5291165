#include "support/shapes.h"

#include <datumfit/extremal/circle_touching_three_circles.h>
#include <gtest/gtest.h>

#include <cmath>
#include <utility>

namespace {

struct three_circles {
    giPoint3 p[3];
    double r[3];

    void swap_last(int i) {
        std::swap(p[i], p[2]);
        std::swap(r[i], r[2]);
    }
    int touch(int inside, giPoint2 & c, double & radius) const {
        return CircleTouchingThreeCircles2D(p[0].xy(), r[0], p[1].xy(), r[1], p[2].xy(), r[2], inside, c, radius);
    }
    int touch(int inside, giVector3 & n, giPoint3 & c, double & radius) const {
        return CircleTouchingThreeCircles3D(p[0], r[0], p[1], r[1], p[2], r[2], inside, n, c, radius);
    }
};

class TouchingCircle : public testing::TestWithParam<placement> {};

TEST_P(TouchingCircle, TouchesAllThreeFromOneSideInAnyOrder) {
    placement const at = GetParam();
    mlRandom random(3);
    double const near = 12.0 * rounding_at(at);  // the worst seen is 5.9
    for (int i = 0; i < 300; ++i) {
        three_circles c;  // a fat triangle, so that there is one result; every third time all overlap
        for (int k = 0; k < 3; ++k) {
            double const t = 2.1 * k + random.rnd(0.0, 0.7), d = at.size * random.rnd(0.8, 1.2);
            c.p[k] = general_point(at.offset) + giVector3(d * std::cos(t), d * std::sin(t), d * random.rnd(-0.5, 0.5));
            c.r[k] = at.size * (i % 3 == 0 ? random.rnd(1.5, 1.8) : i % 3 == 1 ? 0.4 : random.rnd(0.0, 0.5));
        }
        for (int order = 0; order < 12; ++order) {
            int const inside = order % 2;
            double const s = inside ? 1.0 : -1.0;
            giVector3 normal;
            giPoint3 centre;
            giPoint2 flat;
            double radius = 0.0, flat_radius = 0.0;
            ASSERT_TRUE(c.touch(inside, normal, centre, radius) && c.touch(inside, flat, flat_radius));
            EXPECT_EQ(i % 3 == 0 && !inside, radius < 0.0);
            EXPECT_NEAR(0.0, (centre - c.p[0]).dot(normal), near);
            EXPECT_GT((c.p[1] - c.p[0]).cross(c.p[2] - c.p[1]).dot(normal), 0.0);
            for (int k = 0; k < 3; ++k) {
                EXPECT_NEAR(distance(centre, c.p[k]) + s * c.r[k], radius, near);
                EXPECT_NEAR(distance(flat, c.p[k].xy()) + s * c.r[k], flat_radius, near);
            }
            if (inside) c.swap_last(order / 2 % 2);
        }
    }
}
INSTANTIATE_TEST_SUITE_P(Placements, TouchingCircle, testing::ValuesIn(placements),
                         [](auto const & placement) { return placement.param.name; });

TEST(TouchingCircle, RefusesAndLeavesTheResults) {
    giPoint3 const o(0.0, 0.0, 5.0), p(10.0, 0.0, 5.0), q(3.0, 8.0, 5.0), beside(0.99e-7, 0.0, 5.0), on(4.0, 0.0, 5.0);
    three_circles const refused[] = {
        {{o, beside, q}, {1.0, 1.0, 1.0}},            // two centres as one
        {{o, p, on}, {1.0, 1.0, 1.0}},                // a line touches all
        {{o, {1e7, 0.0, 5.0}, {0.0, 1e7, 5.0}}, {}},  // a line, nearly
        {{o, {3.0, 4.0, 5.0}, p}, {6.0, 1.0, 1.0}},   // one touches another from within
        {{o, on, {1.0, 3.0, 5.0}}, {6.0, 1.0, 1.5}},  // two lie inside the third
        {{{1e200, 0.0, 5.0}, p, q}, {1.0, 1.0, 1.0}},
        {{o, p, q}, {1.0, std::nan(""), 1.0}},
    };
    giVector3 normal;
    for (three_circles const & c : refused) {
        for (int const inside : {0, 1}) {
            giPoint2 centre(7.0, 8.0);
            double radius = 9.0;
            EXPECT_EQ(0, c.touch(inside, centre, radius)) << &c - refused;
            EXPECT_TRUE(centre.x() == 7.0 && centre.y() == 8.0 && radius == 9.0);
        }
    }
    giPoint3 centre(1.0, 2.0, 3.0);
    double radius = 9.0;
    EXPECT_EQ(0, (three_circles{{o, p, {4.0, 0.99e-8, 5.0}}, {}}).touch(1, normal, centre, radius));
    EXPECT_NEAR(0.99e-7, normal.z(), 1e-20) << "the product itself";
    EXPECT_EQ(2.0, centre.y());
    // A small circle between two others, which no circle holds as well.
    EXPECT_EQ(0, (three_circles{{{5.0, 1.0, 5.0}, p, o}, {0.5, 3.0, 3.0}}).touch(1, normal, centre, radius));
    EXPECT_EQ(-1.0, normal.z());
    EXPECT_TRUE(centre.invalid() && radius == 9.0);
}

}  // namespace
