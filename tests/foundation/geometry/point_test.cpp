#include <datumfit/foundation/geometry/box2.h>
#include <datumfit/foundation/geometry/box3.h>
#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr double greatest = std::numeric_limits<double>::max();

TEST(Point, StaysInvalidUntilBothCoordinatesAreGiven) {
    giPoint2 p, q;
    p.set_x(3.0);
    q.set_y(4.0);
    EXPECT_TRUE(p.invalid() && q.invalid());
    p.set_y(4.0);
    q.set_x(3.0);
    q.set_x(5.0);
    EXPECT_TRUE(p.coincident(giPoint2(3.0, 4.0), 0.0) && q.coincident(giPoint2(5.0, 4.0), 0.0));
    EXPECT_TRUE(giPoint3(1.0, 1.0, greatest).invalid() && !giPoint3(1.0, -greatest, -greatest).invalid());
}

TEST(Point, CoincidesWithEqualPointsOnlyAtZeroTolerance) {
    giPoint2 const p(1.0, 2.0);
    EXPECT_TRUE(coincident(p, giPoint2(1.0, 2.0), 0.0) && !coincident(p, giPoint2(1.0, 2.0), -1e-9));
    EXPECT_FALSE(coincident(giPoint2(0.0, 0.0), giPoint2(0.0, 1e-200), 0.0));  // the square of the distance is 0
    EXPECT_TRUE(coincident(p, giPoint2(1.0, 2.25), 0.25) && !coincident(p, giPoint2(1.2, 2.25), 0.25));
}

TEST(Point, DistanceKeepsItsRangeAndItsMark) {
    for (double const scale : {0.0, 1e-300, 1e-170, 1.0, 1e160, 1e300}) {
        giPoint3 const p(2.0 * scale, -3.0 * scale, 6.0 * scale);
        EXPECT_DOUBLE_EQ(7.0 * scale, distance(giPoint3(giOrigin), p));
    }
    giPoint3 const p(1.0, 2.0, 3.0), marked(0.0, 0.0, greatest), too(1.0, 0.0, greatest);
    EXPECT_TRUE(distance(p, marked).invalid() && distance(marked, p).invalid());
    EXPECT_TRUE(distance(marked, too).invalid() && distance(giPoint2(), giPoint2()).invalid());
}

TEST(Point, InterpolatesToBothEndsExactly) {
    giPoint3 const a(1e10, -0.1, 1e-30), b(0.3, 1e20, 0.7);
    EXPECT_EQ(0.0, distance(interpolate(a, b, 0.0), a));
    EXPECT_EQ(0.0, distance(interpolate(a, b, 1.0), b));
}

TEST(Box, HoldsTheValidPoints) {
    giBox3 box;
    giBox2 flat;
    EXPECT_TRUE(box.min().invalid() && box.max().invalid() && flat.min().invalid() && flat.max().invalid());
    for (giPoint3 const & p : {giPoint3(), giPoint3(1.0, -2.0, 3.0), giPoint3(-1.0, 5.0, 4.0), giPoint3()}) {
        box.merge(p);
        flat.merge(p.xy());
    }
    EXPECT_EQ(0.0, distance(box.min(), giPoint3(-1.0, -2.0, 3.0)));
    EXPECT_EQ(0.0, distance(box.max(), giPoint3(1.0, 5.0, 4.0)));
    EXPECT_TRUE(flat.min().coincident(box.min().xy(), 0.0) && flat.max().coincident(box.max().xy(), 0.0));
}

}  // namespace
