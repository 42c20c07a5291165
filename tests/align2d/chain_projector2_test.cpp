#include "align2d/plane_motions.h"

#include <datumfit/align2d/chain_projector2.h>
#include <datumfit/align2d/probed_point2.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

using namespace align2d_tests;

namespace {

double const pi = utMath::pi();

// A slot with one round end of more than half a turn, a hollow arc and sharp corners, about a place.
std::vector<sqChainElement2> slot(giPoint2 const & at, double size, bool closed) {
    auto const p = [&](double x, double y) { return at + giVector2(size * x, size * y); };
    auto const arc = [&](double x, double y, double r, double from, double sweep) {
        return sqChainElement2::arc(p(x, y), size * r, from, sweep);
    };
    double const root = std::sqrt(0.5);
    std::vector<sqChainElement2> elements = {
        sqChainElement2::segment(p(0.0, -1.0), p(4.0, -1.0)), arc(4.0, 0.0, 1.0, -0.5 * pi, 1.25 * pi),
        sqChainElement2::segment(p(4.0 - root, root), p(1.0, 0.5)), arc(0.5, 0.5, 0.5, 0.0, -pi)};
    if (closed) elements.push_back(sqChainElement2::segment(p(0.0, 0.5), p(0.0, -1.0)));
    return elements;
}

sqChainProjector2 chain_of(std::vector<sqChainElement2> const & elements) {
    sqChainElement2coDynArr array;
    for (sqChainElement2 const & e : elements) array.append(e);
    return sqChainProjector2(array);
}

sqChainFoot2coDynArr feet_of(sqChainProjector2 const & chain, giPoint2 const & p) {
    sqChainFoot2coDynArr feet;
    chain.find_feet(p, feet);
    return feet;
}

giPoint2 place_on(sqChainElement2 const & e, double t) {
    if (!e.is_arc()) return e.start() + t * (e.end() - e.start());
    double const angle = e.from() + t * e.sweep();
    return e.centre() + e.radius() * giVector2(std::cos(angle), std::sin(angle));
}

// Where the distance along an element has an extremum: its samples' slopes change sign, narrowed down by halving.
std::vector<giPoint2> sampled_feet(std::vector<sqChainElement2> const & elements, giPoint2 const & p) {
    constexpr int samples = 200;
    std::vector<giPoint2> feet;
    for (sqChainElement2 const & e : elements) {
        auto const slope = [&](double t) {
            giVector2 const along = place_on(e, t + 1e-6) - place_on(e, t - 1e-6);
            return along.dot(p - place_on(e, t));
        };
        for (int i = 0; i < samples; ++i) {
            double from = static_cast<double>(i) / samples, to = static_cast<double>(i + 1) / samples;
            if ((slope(from) > 0.0) == (slope(to) > 0.0)) continue;
            bool const falls = slope(from) > 0.0;
            for (int k = 0; k < 60; ++k) {
                double const t = 0.5 * (from + to);
                ((slope(t) > 0.0) == falls ? from : to) = t;
            }
            feet.push_back(place_on(e, from));
        }
    }
    return feet;
}

class ChainFeet : public testing::TestWithParam<placement> {};

TEST_P(ChainFeet, AreThoseThatSamplingFinds) {
    placement const at = GetParam();
    giPoint2 const origin = general_point2(at.offset);
    noise draw;
    for (bool const closed : {false, true}) {
        std::vector<sqChainElement2> const elements = slot(origin, at.size, closed);
        sqChainProjector2 const chain = chain_of(elements);
        for (int i = 0; i < 50; ++i) {
            giPoint2 const p = origin + giVector2(at.size * (2.0 + 2.0 * draw()), at.size * draw());
            SCOPED_TRACE(testing::Message() << at.name << ", point " << i << (closed ? ", closed" : ", open"));
            std::vector<giPoint2> const expected = sampled_feet(elements, p);
            sqChainFoot2coDynArr const feet = feet_of(chain, p);
            ASSERT_EQ(static_cast<int>(expected.size()), feet.size());
            for (int k = 0; k < feet.size(); ++k) {
                giVector2 const v = p - feet[k].place;
                double const before = k > 0 ? p.distance(feet[k - 1].place).value() : 0.0;
                EXPECT_GE(v.length() + 1e-15 * at.size, before) << "not nearest first";
                EXPECT_NEAR(0.0, feet[k].normal.cross(v), 8.0 * rounding_at(at) + 1e-14 * at.size);
                double nearest = HUGE_VAL;
                for (giPoint2 const & q : expected) nearest = std::min(nearest, q.distance(feet[k].place).value());
                EXPECT_LT(nearest, 1e-4 * at.size + 1e6 * rounding_at(at));  // the slope of sampling is a difference
            }
        }
    }
}

TEST_P(ChainFeet, AreNotLostInFrontOfCornersThatBendLittle) {
    placement const at = GetParam();
    giPoint2 const centre = general_point2(at.offset);
    constexpr int corners = 777;
    sqChainProjector2 const chain(arc(centre, at.size, 2.0 * pi, corners), 1);
    double const sagitta = at.size * (1.0 - std::cos(pi / corners));
    for (int i = 0; i < 200; ++i) {
        giVector2 const out = giVector2(std::cos(0.03 * i), std::sin(0.03 * i));
        giPoint2 const p = centre + 1.3 * at.size * out;
        sqChainFoot2coDynArr const feet = feet_of(chain, p);
        ASSERT_GE(feet.size(), 2);
        giPoint2 const & foot = feet[0].place;
        EXPECT_NEAR(0.3 * at.size, p.distance(foot), sagitta + 2.0 * rounding_at(at));
        EXPECT_GT(-feet[0].normal.dot(out), 0.9999) << "the vertices go counterclockwise, so left is in";
        EXPECT_NEAR(0.0, feet[0].normal.cross(p - foot), 8.0 * rounding_at(at));
        for (int k = 1; k < feet.size(); ++k) EXPECT_GT(feet[k].place.distance(feet[k - 1].place), 1e-6 * at.size);
    }
}

INSTANTIATE_TEST_SUITE_P(Placements, ChainFeet, testing::ValuesIn(placements),
                         [](auto const & at) { return name_of(at.param); });

TEST(ChainFeet, AreOneAtAJointAndNoneAtASharpCorner) {
    // Two collinear segments, then a right angle; points right above the joints, in front of the corner and inside.
    giPoint2 const o(giOrigin), joint(1.0, 0.0), corner(3.0, 0.0), last(3.0, 2.0);
    sqChainProjector2 const chain(giPoint2coDynArr{o, joint, joint, corner, last}, 0);
    double const cases[][3] = {{1.0, -1.0, 1}, {4.0, -0.5, 0}, {2.5, 1.0, 2}, {0.0, -1.0, 1}, {-1e-6, -1.0, 0}};
    for (auto const & [x, y, count] : cases) EXPECT_EQ(count, feet_of(chain, giPoint2(x, y)).size()) << x;
    // The same corner, told to be smooth.
    sqChainProjector2 const smooth(giPoint2coDynArr{o, corner, last}, 0, giAngle(giAngleDegrees, 91.0));
    sqChainFoot2coDynArr const feet = feet_of(smooth, giPoint2(4.0, -0.5));
    ASSERT_EQ(1, feet.size());
    EXPECT_EQ(0.0, feet[0].place.distance(corner));
    EXPECT_LT(feet[0].normal.dot(giVector2(1.0, -0.5)), 0.0);
}

TEST(ChainFeet, CrossTangentJointsOnBothSides) {
    // A half circle between two tangents, a hairpin; then a full circle, and one made of three arcs.
    giPoint2 const c(0.3, 0.7);
    auto const segment = [&](double x1, double x2, double y) {
        return sqChainElement2::segment(c + giVector2(x1, y), c + giVector2(x2, y));
    };
    auto const arc = [&](double from, double sweep) { return sqChainElement2::arc(c, 2.0, from - 0.5 * pi, sweep); };
    sqChainProjector2 const hairpin = chain_of({segment(-5.0, 0.0, -2.0), arc(0.0, pi), segment(0.0, -5.0, 2.0)});
    sqChainProjector2 const full = chain_of({arc(1.0, -7.0)});
    sqChainProjector2 const thirds = chain_of({arc(0.0, 2.0), arc(2.0, 1.1), arc(3.1, 2.0 * pi - 3.1)});
    for (double const y : {0.5, 3.0, 7.0}) {
        for (double const turn : {0.0, 2.0, 3.1, 1.0 + 0.5 * pi, 1.0}) {
            giPoint2 const p = c + giVector2(std::sin(turn) * y, -std::cos(turn) * y);
            EXPECT_EQ(2, feet_of(full, p).size()) << y << ' ' << turn;
            EXPECT_EQ(2, feet_of(thirds, p).size()) << y << ' ' << turn;
        }
        // On the side of the tangents the top has two feet, the farther one on the arc, and on the other side none.
        for (auto const & [x, count] : {std::pair(0.0, 2), {-1e-15, 2}, {-1.0, 3}, {1e-15, 1}}) {
            giPoint2 const p = c + giVector2(x, -y);
            sqChainFoot2coDynArr const feet = feet_of(hairpin, p);
            ASSERT_EQ(count, feet.size()) << y << ' ' << x;
            for (int k = 0; k < std::min(count, 2); ++k) {
                EXPECT_NEAR(k == 0 ? std::abs(2.0 - y) : 2.0 + y, p.distance(feet[k].place), 1e-14);
            }
        }
    }
    EXPECT_EQ(1, feet_of(full, c).size());
    // Of the arc about it, the middle stands for all places.
    sqChainFoot2coDynArr const feet = feet_of(hairpin, c);
    auto const is_middle = [&](sqChainFoot2 const & f) { return f.place.coincident(c + giVector2(2.0, 0.0), 1e-15); };
    EXPECT_TRUE(std::any_of(feet.data(), feet.data() + feet.size(), is_middle));
}

sqProjectedPoint2 projected(sqChainProjector2 const & chain, sqProbedPoint2 const & point,
                            giXform2 const & x = giXformIdentity) {
    sqProjectedPoint2 result(giPoint2(1.0, 1.0), giPoint2(1.0, 1.0), giUnitVec2(1.0, 0.0));
    point.project_from_position(x, result, &chain);
    return result;
}

TEST(ChainProjection, ChoosesTheSideByTheApproximateNormal) {
    // A thin sheet, and probe centres above it.
    giPoint2coDynArr const sheet{giPoint2(0.0, 0.0), giPoint2(10.0, 0.0), giPoint2(10.0, 0.3), giPoint2(0.0, 0.3)};
    sqChainProjector2 const chain(sheet, 1);
    giUnitVec2 const up(0.1, 1.0), down(0.1, -1.0);
    auto const expect = [&](sqProbedPoint2 const & point, double place, double normal) {
        sqProjectedPoint2 const p = projected(chain, point);
        ASSERT_FALSE(p.invalid());
        EXPECT_NEAR(place, p.nominal_point().y(), 1e-15);
        EXPECT_EQ(normal, p.nominal_normal().y());
        EXPECT_EQ(point.measured_point().y(), p.measured_point().y());
    };
    expect(sqProbedPoint2(giPoint2(4.0, 1.5), up, 1.0), 1.3, 1.0);
    expect(sqProbedPoint2(giPoint2(4.0, 0.2), up, 1.0), 1.0, 1.0);      // only the bottom has it on its upper side
    expect(sqProbedPoint2(giPoint2(4.0, 0.2), up, 0.0), 0.3, 1.0);      // without a radius the nearest counts
    expect(sqProbedPoint2(giPoint2(4.0, 1.5), down, 1.0), -0.7, -1.0);  // none on that side, so the nearest
    expect(sqProbedPoint2(giPoint2(4.0, 0.3), up, 0.0), 0.3, 1.0);      // on the curve, the direction is lost
    expect(sqProbedPoint2(giPoint2(4.0, 0.3), down, 0.4), -0.1, -1.0);
    expect(sqProbedPoint2(giPoint2(4.0, 1.5)), 0.3, -1.0);  // left of travel, the way back, is down
}

TEST(ChainProjection, TurnsTheSideWithThePart) {
    sqChainProjector2 const chain(giPoint2coDynArr{giPoint2(-5.0, 0.0), giPoint2(5.0, 0.0)}, 0);
    giXform2 const half_turn = motion(giPoint2(1e3, 2e3), pi, giVector2(-2e3, -4e3));
    sqProbedPoint2 const point(giPoint2(1.0, 2.0), giUnitVec2(0.0, 1.0), 0.5);
    sqProjectedPoint2 const p = projected(chain, point, half_turn);
    EXPECT_NEAR(-2.0, p.measured_point().y(), 1e-12);
    EXPECT_NEAR(-0.5, p.nominal_point().y(), 1e-12);
    EXPECT_NEAR(1.5, p.signed_distance(), 1e-12);
}

TEST(ChainProjection, IsInvalidForWhatIsNone) {
    double const nan = std::nan("");
    giPoint2 const o(giOrigin), end(1.0, 0.0);
    sqChainProjector2 const chain(giPoint2coDynArr{o, end}, 0);
    sqProbedPoint2 const good(giPoint2(0.5, 1.0)), unset, not_a_number(giPoint2(nan, 0.0)),
        huge_radius(giPoint2(0.5, 1.0), giUnitVec2(), HUGE_VAL);
    EXPECT_TRUE(!chain.invalid() && !projected(chain, good).invalid());
    EXPECT_TRUE(projected(chain, good, giXform2()).invalid());
    for (sqProbedPoint2 const & point : {unset, not_a_number, huge_radius}) {
        EXPECT_TRUE(projected(chain, point).invalid());
    }
    struct : sqFitPointProjector2 {
    } const other;
    for (bool const is_null : {true, false}) {
        sqFitPointProjector2 const * const projector = is_null ? nullptr : &other;
        sqProjectedPoint2 result(end, end, giUnitVec2(1.0, 0.0));
        good.initial_projection(result, projector);
        EXPECT_TRUE(result.invalid());
    }

    auto const segment = [&](giPoint2 const & to) { return sqChainElement2::segment(o, to); };
    auto const arc = [&](double radius, double from, double sweep) {
        return sqChainElement2::arc(o, radius, from, sweep);
    };
    std::vector<std::vector<sqChainElement2>> const refused = {{},
                                                               {segment(end), sqChainElement2()},
                                                               {arc(0.0, 0.0, 1.0)},
                                                               {segment(end), arc(-1.0, 0.0, 1.0)},
                                                               {arc(1.0, nan, 1.0)},
                                                               {arc(1.0, 0.0, 0.0)},
                                                               {segment(o)},
                                                               {segment(end), segment(giPoint2(HUGE_VAL, 0.0))}};
    for (std::vector<sqChainElement2> const & elements : refused) {
        EXPECT_TRUE(chain_of(elements).invalid() && projected(chain_of(elements), good).invalid());
    }
    EXPECT_TRUE(sqChainProjector2(giPoint2coDynArr{o, o}, 1).invalid());
    EXPECT_TRUE(sqChainProjector2(giPoint2coDynArr{o, end, giPoint2()}, 0).invalid());
}

}  // namespace
