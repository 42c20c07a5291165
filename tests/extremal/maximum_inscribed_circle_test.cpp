#include "extremal/round_parts.h"
#include "support/shapes.h"

#include <datumfit/extremal/maximum_inscribed_circle.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

using points2 = std::vector<giPoint2>;
using numbers = std::vector<double>;

giCircle2 inscribed(points2 const & points, utOptionalArg<giCircle2 &> start = {}) {
    return sqMaximumInscribedCircle::calculate_maximum_inscribed_circle(points, start);
}
giCircle2 inscribed(points2 const & points, numbers const & radii, bool inside, utOptionalArg<giCircle2 &> start = {}) {
    return sqMaximumInscribedCircle::calculate_maximum_inscribed_circle_probed(points, radii, inside, start);
}

// The largest turn between neighbours of the directions to the points that touch; -1 when a point is inside.
double widest_gap(giCircle2 const & c, points2 const & points, numbers const & signed_radii, double near) {
    numbers turns;
    for (std::size_t i = 0; i < points.size(); ++i) {
        double const gap = distance(c.centre(), points[i]) - signed_radii[i] - c.radius();
        if (gap < -near) return -1.0;
        giVector2 const v = points[i] - c.centre();
        if (gap < near) turns.push_back(std::atan2(v.y(), v.x()));
    }
    std::sort(turns.begin(), turns.end());
    double widest = turns.front() + 2.0 * utMath::pi() - turns.back();
    for (std::size_t i = 1; i < turns.size(); ++i) widest = std::max(widest, turns[i] - turns[i - 1]);
    return widest;
}

class InscribedCircle : public testing::TestWithParam<placement> {};

TEST_P(InscribedCircle, IsEmptyAndHeldFromAllSides) {
    placement const at = GetParam();
    mlRandom random(11);
    double const near = 2e-7 * at.size + 16.0 * rounding_at(at), half_turn = utMath::pi() + 1e-6;
    for (int i = 0; i < 400; ++i) {
        SCOPED_TRACE(i);
        // Rough rings, from which there is no way out.
        points2 points;
        numbers radii, none, negated;
        int const n = 8 + i % 30, form = i % 4;
        for (int k = 0; k < n; ++k) {
            double const t = 2.0 * utMath::pi() * (k + random.rnd(0.0, 0.5)) / n, r = at.size * random.rnd(0.8, 1.2);
            points.push_back(giPoint2(at.offset, -at.offset / 3.0) + giVector2(r * std::cos(t), r * std::sin(t)));
            radii.push_back(at.size * (form < 2 ? 0.05 : random.rnd(0.04, 0.06)));
            negated.push_back(-radii.back());
            none.push_back(0.0);
        }
        bool const inside = form % 2;
        giCircle2 const plain = inscribed(points), probed = inscribed(points, radii, inside);
        double const plain_gap = widest_gap(plain, points, none, near),
                     probed_gap = widest_gap(probed, points, inside ? negated : radii, near);
        EXPECT_TRUE(plain_gap > 0.0 && plain_gap < half_turn) << plain_gap;
        EXPECT_TRUE(probed_gap > 0.0 && probed_gap < half_turn) << probed_gap;
        if (form < 2) {
            EXPECT_NEAR(0.0, distance(plain.centre(), probed.centre()), near);
            EXPECT_NEAR(plain.radius() + (inside ? 0.05 : -0.05) * at.size, probed.radius(), near);
        }
    }
}
INSTANTIATE_TEST_SUITE_P(Placements, InscribedCircle,
                         testing::Values(placement{"unit", 0.0, 1.0}, placement{"far", 1e4, 10.0},
                                         placement{"large", 0.0, 1e3}),
                         [](auto const & placement) { return placement.param.name; });

TEST(InscribedCircle, OfTrianglesIsTheCircumcircle) {
    points2 const acute = {{0.0, 0.0}, {4.0, 0.0}, {1.0, 3.0}}, obtuse = {{0.0, 0.0}, {4.0, 0.0}, {1.0, 0.5}};
    for (points2 const & triangle : {acute, obtuse}) {
        giCircle2 around;
        around.become(triangle[0], triangle[1], triangle[2]);
        for (numbers const & radii : {numbers{}, numbers{0.0, 0.0, 0.0}}) {
            giCircle2 const c = radii.empty() ? inscribed(triangle) : inscribed(triangle, radii, true);
            EXPECT_NEAR(0.0, distance(around.centre(), c.centre()), 1e-13);
            EXPECT_NEAR(around.radius(), c.radius(), 1e-13);
        }
    }
}

TEST(InscribedCircle, WalksFromTheStart) {
    // Two rooms beside each other, with a door between.
    points2 const rooms = {{-2.0, 1.0}, {-2.0, -1.0}, {0.0, 1.0}, {0.0, -1.0}, {3.0, 1.5}, {3.0, -1.5}};
    giCircle2 start(giPoint2(-0.9, 0.1), 9.0);
    EXPECT_NEAR(0.0, distance(inscribed(rooms, start).centre(), giPoint2(-1.0, 0.0)), 1e-12);
    EXPECT_EQ(9.0, start.radius()) << "the start is not written to";
    start.become(giPoint2(1.2, 0.3), 9.0);
    giCircle2 const right = inscribed(rooms, start);
    EXPECT_NEAR(0.0, right.centre().y(), 1e-12);
    EXPECT_NEAR(distance(right.centre(), rooms[5]), right.radius(), 1e-12);
    EXPECT_NEAR(distance(right.centre(), rooms[2]), right.radius(), 1e-12);

    // Two opposite points leave half a turn open: the walk goes on along the perpendicular.
    points2 const gate = {{-1.0, 0.0}, {1.0, 0.0}, {0.5, 4.0}, {-0.5, 4.0}, {0.3, -5.0}};
    giCircle2 const passage(giPoint2(0.0, 0.0), 0.0);
    giCircle2 from = passage;
    giCircle2 const through = inscribed(gate, from);
    EXPECT_GT(std::abs(through.centre().y()), 1.0);
    EXPECT_NEAR(distance(through.centre(), gate[0]), through.radius(), 1e-12);
    from = giCircle2(giPoint2(0.1, 0.0), 3.0);
    EXPECT_EQ(3.0, inscribed({{0.1, 0.0}, {2.0, 0.0}}, {0.5, 0.5}, true, from).radius()) << "a walk that cannot begin";
}

TEST(InscribedCircle, OfMeasuredParts) {
    for (auto const & part : {train_axle(), round_of_24()}) {
        for (giCircle2 const & c : {inscribed(part.points), inscribed(part.points, numbers(39, 0.0), true)}) {
            EXPECT_NEAR(0.0, distance(part.inscribed_centre, c.centre()), 1e-12);
            EXPECT_NEAR(part.inscribed_radius, c.radius(), 1e-12);
        }
    }
}

TEST(InscribedCircle, OfFewPoints) {
    EXPECT_TRUE(inscribed({}).centre().invalid() && inscribed({}, {}, true).centre().invalid());
    giCircle2 start(giPoint2(1.0, 2.0), 3.0), unset;
    EXPECT_TRUE(inscribed({}, start).radius() == 3.0 && inscribed({}, {}, false, start).centre().y() == 2.0);
    giPoint2 const p(4.0, 5.0);
    EXPECT_TRUE(inscribed({p, {5.0, 6.0}}, unset).centre().invalid());
    EXPECT_TRUE(inscribed({{1.7e308, 0.0}, {1.7e308, 1.0}}).centre().invalid());
    EXPECT_TRUE(inscribed({p}).radius() == 0.0 && inscribed({p}).centre().x() == 4.0);
    EXPECT_EQ(5.0, inscribed({p}, {5.0}, true).radius());
    EXPECT_EQ(0.0, inscribed({p}, {5.0}, false).radius()) << "the centre is within the disc";
    EXPECT_EQ(5.0, inscribed({p}, start = giCircle2(giPoint2(1.0, 1.0), 0.0)).radius()) << "nothing else to meet";
    EXPECT_EQ(0.0, inscribed({p}, {1.0}, true, start).radius()) << "that of the start";
    // Points in one direction: the walk leads away from them, and nothing lies ahead.
    start = giCircle2(giPoint2(0.0, 0.0), 0.0);
    EXPECT_EQ(2.0, inscribed({{2.0, 0.0}, {2.0, 0.0}, {3.0, 0.0}}, start).radius());
}

}  // namespace
