#include "support/shapes.h"

#include <datumfit/foundation/circles/circle2_constructor.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

tncCircle2 touching(tncCircle2 const (&c)[3], int mode) {
    tncCircle2 result;
    tncCircle2Constructor::construct(result, tncTangentAny, c[0], tncTangentAny, c[1], tncTangentAny, c[2], mode);
    return result;
}

// The greatest amount by which a distance differs, in units in the last place of the largest number involved.
double miss(tncCircle2 const & found, tncCircle2 const (&c)[3], int mode) {
    double const s = mode == 14 ? 1.0 : -1.0;
    double worst = 0.0;
    double size = std::max({std::abs(found.radius()), std::abs(found.centre().x()), std::abs(found.centre().y())});
    for (tncCircle2 const & k : c) {
        size = std::max({size, k.radius(), std::abs(k.centre().x()), std::abs(k.centre().y())});
        worst = std::max(worst, std::abs(distance(found.centre(), k.centre()) + s * k.radius() - found.radius()));
    }
    return worst / (size * std::numeric_limits<double>::epsilon());
}

class CircleConstructor : public testing::TestWithParam<placement> {};

TEST_P(CircleConstructor, TouchesAllThreeFromTheWantedSide) {
    placement const at = GetParam();
    mlRandom random(5);
    int found = 0;
    for (int i = 0; i < 6000; ++i) {
        int const mode = i % 2 ? 14 : 0, kind = i / 2 % 5;
        // Flat sets have centres that are nearly or wholly in line.
        double const height = kind == 3 ? 1e-9 : kind == 4 ? 0.0 : 1.0, mid = kind == 1 ? 0.3 : 0.0;
        double const spread = kind == 0 || kind == 1 ? 0.0 : kind == 2 ? 1.5 : 0.2;
        tncCircle2 c[3];
        for (tncCircle2 & k : c) {
            giVector2 const v(random.minus_one_one(), height * random.minus_one_one());
            k = tncCircle2(giPoint2(at.offset, -at.offset / 3.0) + at.size * v,
                           at.size * (mid + random.rnd(0.0, spread)));
        }
        tncCircle2 const one = touching(c, mode);
        EXPECT_TRUE(kind > 1 || !one.centre().invalid()) << "circles of one radius always have one";
        if (one.centre().invalid()) continue;
        ++found;
        EXPECT_LT(miss(one, c, mode), 5.0) << i;
        EXPECT_TRUE(kind == 2 || mode == 14 || one.radius() > -at.size * mid * 1.0001);
        std::rotate(c, c + 1, c + 3);
        EXPECT_LT(miss(touching(c, mode), c, mode), 5.0) << "found in any order";
    }
    EXPECT_GT(found, 3500);
}
INSTANTIATE_TEST_SUITE_P(Placements, CircleConstructor,
                         testing::Values(placement{"unit", 0.0, 1.0}, placement{"far", 1e6, 1.0},
                                         placement{"tiny", 0.0, 1e-150}, placement{"large", 0.0, 1e150}),
                         [](auto const & placement) { return placement.param.name; });

TEST(CircleConstructor, ChoosesTheSmallerOfTwo) {
    // A circle on either side of a small one in the gap between two large ones touches all, and the gap is narrowest
    // at y = 0.
    for (double const y : {1.0, -1.0}) {
        tncCircle2 const between[] = {{{-11.0, 0.0}, 10.0}, {{11.0, 0.0}, 10.0}, {{0.0, y}, 0.5}};
        tncCircle2 const smaller = touching(between, 0);
        EXPECT_LT(miss(smaller, between, 0), 5.0);
        EXPECT_LT(smaller.centre().y() * y, 0.0);
    }
    // Within the overlap of three circles a negative radius tells of one that touches them from within.
    tncCircle2 const overlap[] = {{{-1.0, 0.0}, 3.0}, {{1.0, 0.0}, 3.0}, {{0.0, 1.0}, 3.0}};
    EXPECT_NEAR(-2.0, touching(overlap, 0).radius(), 1e-14);
}

TEST(CircleConstructor, LeavesTheCentreUnsetWhereThereIsNone) {
    giPoint2 const o(0.0, 0.0), p(10.0, 0.0), q(3.0, 8.0), middle(5.0, 0.0);
    double const inf = std::numeric_limits<double>::infinity();
    tncCircle2 const none[][3] = {
        {{o, 1.0}, {p, 1.0}, {middle, 1.0}},      // two lines only
        {{o, 1.0}, {p, 3.0}, {middle, 2.0}},      // the same
        {{o, 6.0}, {p, 1.0}, {{3.0, 4.0}, 0.5}},  // one inside another
        {{o, 1.0}, {o, 1.0}, {q, 1.0}},           // the same circle twice
        {{o, 0.0}, {o, 0.0}, {o, 0.0}},           //
        {tncCircle2(), {p, 1.0}, {q, 1.0}},       //
        {{o, std::nan("")}, {p, 1.0}, {q, 1.0}},  //
        {{{inf, 0.0}, 1.0}, {p, 1.0}, {q, 1.0}},  //
    };
    for (auto const & c : none) {
        for (int const mode : {0, 14}) EXPECT_TRUE(touching(c, mode).centre().invalid()) << &c - none;
    }
    tncCircle2 const some[] = {{o, 1.0}, {p, 1.0}, {q, 1.0}};
    EXPECT_TRUE(touching(some, 1).centre().invalid()) << "another mode";
    tncCircle2 c = some[1];
    tncCircle2Constructor::construct(c, tncTangentAny, some[0], tncTangentAny, c, tncTangentAny, some[2], 14);
    EXPECT_EQ(touching(some, 14).radius(), c.radius()) << "the result may be among the arguments";
}

}  // namespace
