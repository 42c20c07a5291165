#include <datumfit/extremal/relative_position.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

// By whole numbers, and by the angle that the polygon turns about the point.
sqRelativePosition oracle(giPoint2 const & p, giPoint2coDynArr const & polygon) {
    double turn = 0.0;
    bool on_edge = false;
    for (int i = 0; i < polygon.size(); ++i) {
        giVector2 const a = polygon[i] - p, b = polygon[(i + 1) % polygon.size()] - p;
        if (a.dot(a) == 0.0) return sqRelativeOnVertex;
        on_edge = on_edge || (a.cross(b) == 0.0 && a.dot(b) <= 0.0);
        turn += std::atan2(a.cross(b), a.dot(b));
    }
    if (on_edge) return sqRelativeOnEdge;
    return std::lround(turn / 6.283185307179586) % 2 != 0 ? sqRelativeInside : sqRelativeOutside;
}

}  // namespace

TEST(RelativePosition, AgreesWithTheWindingNumber) {
    std::mt19937 engine(5);
    auto const place = [&] { return static_cast<double>(engine() % 8); };  // many are level, on edges and on vertices
    int counts[4] = {};
    for (int i = 0; i < 20000; ++i) {
        giPoint2coDynArr polygon;
        for (int k = 1 + static_cast<int>(engine() % 9); k > 0; --k) {
            double const x = place();
            polygon.append(giPoint2(x, place()));
        }
        double const x = place();
        giPoint2 const p(x, place());
        sqRelativePosition const expected = oracle(p, polygon);
        sqRelativePosition const found = sq_relative_position(p, polygon);
        // A point on an edge and on a later vertex may be either, where a polygon touches itself.
        bool const touched = expected == sqRelativeOnVertex && found == sqRelativeOnEdge;
        EXPECT_TRUE(found == expected || touched) << i;
        ++counts[expected];
        polygon.append(giPoint2(polygon[0]));
        EXPECT_EQ(found, sq_relative_position(p, polygon)) << i << " closed";
    }
    for (int count : counts) EXPECT_GT(count, 500);
}

TEST(RelativePosition, HasItsToleranceOnEdgesOnly) {
    giPoint2coDynArr const square{giPoint2(0, 0), giPoint2(2, 0), giPoint2(2, 2), giPoint2(0, 2)};
    EXPECT_EQ(sqRelativeOnEdge, sq_relative_position(giPoint2(2 - 4e-11, 1), square));
    EXPECT_EQ(sqRelativeInside, sq_relative_position(giPoint2(2 - 6e-11, 1), square));
    EXPECT_EQ(sqRelativeOutside, sq_relative_position(giPoint2(2 + 1e-14, 1), square)) << "right of the edge's box";
    EXPECT_EQ(sqRelativeOnEdge, sq_relative_position(giPoint2(-4e-11, 1), square));
    EXPECT_EQ(sqRelativeOutside, sq_relative_position(giPoint2(-6e-11, 1), square));
    EXPECT_EQ(sqRelativeOnEdge, sq_relative_position(giPoint2(2, 2 - 1e-14), square));
    EXPECT_EQ(sqRelativeOnVertex, sq_relative_position(giPoint2(2, 2), square));
}
