#include <datumfit/foundation/geometry/circle2.h>
#include <datumfit/foundation/geometry/inf_line2.h>
#include <datumfit/foundation/geometry/inf_line3.h>
#include <datumfit/foundation/geometry/plane.h>
#include <datumfit/foundation/geometry/workplane2.h>
#include <datumfit/foundation/geometry/workplane3.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr double epsilon = std::numeric_limits<double>::epsilon();

TEST(Line, MeasuresDistancesFarFromTheOrigin) {
    giPoint3 const centre(3e7, -1e7, 2e7);
    giUnitVec3 const direction(1.0, 2.0, -2.0);
    giInfLine3 const line(centre, centre + giVector3(1.0, 2.0, -2.0));
    giPoint3 const off = line.interpolate(6.0) + giVector3(2.0, -2.0, -1.0);  // across the direction, of length 3
    EXPECT_NEAR(3.0, line.distance_of_point(off), 2.0 * epsilon * 3e7);
    EXPECT_NEAR(-9.0, giPlane(direction, centre).distance(centre + giVector3(-3.0, -6.0, 6.0)), 1e-15);
    EXPECT_NEAR(5.0, giInfLine2(giPoint2(1e7, 0.0), giUnitVec2(4.0, 3.0)).distance_of_point(giPoint2(1e7 - 3.0, 4.0)),
                1e-15);
    EXPECT_TRUE(giInfLine3().centre().invalid() && giInfLine3(centre, centre).direction().invalid());
}

TEST(ClosestPoints, JoinTwoLinesAtRightAngles) {
    giUnitVec3 const a(2.0, 3.0, -1.0);
    for (double const turn : {1.2, 1e-4, 3.1}) {
        giUnitVec3 const n = a.any_normal(), b = std::cos(turn) * a + std::sin(turn) * n.cross(a);
        giPoint3 const foot(1e6, 2e6, -1e6);
        double s = 0.0, t = 0.0;
        giLineIntersectStatus status = giLineIntersectParallel;
        closest_points(giInfLine3(foot - 4.0 * a, a), giInfLine3(foot + 2.0 * n + 3.0 * b, b),
                       giAngle(giAngleRadians, 1e-5), s, t, status);
        ASSERT_EQ(giLineIntersectFound, status);
        EXPECT_NEAR(4.0, s, 4.0 * epsilon * 1e6 / std::sin(turn));
        EXPECT_NEAR(-3.0, t, 4.0 * epsilon * 1e6 / std::sin(turn));
    }
}

TEST(ClosestPoints, LeaveTheParametersOfParallelLines) {
    giPoint3 const p(1.0, 2.0, 3.0), q(4.0, 4.0, 4.0);
    giUnitVec3 const z(giAxisZ), tilted(9e-6, 0.0, 1.0);  // below the tolerance
    double s = 5.0, t = 6.0;
    giLineIntersectStatus status = giLineIntersectFound;
    closest_points(giInfLine3(p, z), giInfLine3(q, z), giAngle(), s, t, status);  // no tolerance, no parameters either
    EXPECT_TRUE(status == giLineIntersectParallel && s == 5.0 && t == 6.0);
    closest_points(giInfLine3(p, z), giInfLine3(q, -tilted), giAngle(giAngleRadians, 1e-5), s, t, status);
    EXPECT_TRUE(status == giLineIntersectParallel && s == 5.0 && t == 6.0);
}

TEST(Circle, GoesThroughThreePointsInAnyOrderIfItCan) {
    for (double const offset : {0.0, 1e6}) {
        giPoint2 points[] = {{offset + 3.0, 4.0}, {offset - 4.0, 3.0}, {offset, -5.0}};
        for (int i = 0; i < 3; ++i) {
            std::rotate(points, points + 1, points + 3);
            giCircle2 circle;
            circle.become(points[0], points[1], points[2]);
            EXPECT_LE(distance(circle.centre(), giPoint2(offset, 0.0)), epsilon * (offset + 8.0));
            EXPECT_NEAR(5.0, circle.radius(), 8.0 * epsilon);
        }
    }
    giPoint2 const p(1.0, 1.0), q(2.0, 3.0), r(4.0, 7.0);  // on one line
    giPoint2 const sets[][3] = {{p, q, r}, {p, p, q}, {p, q, p}, {q, p, p}, {p, p, p}};
    for (auto const & set : sets) {
        giCircle2 circle(p, 2.0);
        circle.become(set[0], set[1], set[2]);
        EXPECT_TRUE(circle.centre().invalid() && circle.radius().invalid());
    }
}

TEST(Workplane, IsRightHandedAndInvertsItself) {
    giPoint3 const origin(10.0, 20.0, 30.0), p(-7.0, 0.3, 11.0);
    giUnitVec3 const w(1.0, 2.0, 2.0), v = w.any_normal();
    giWorkplane3 const plane(origin, v, w);
    EXPECT_LE((plane.u_vector().cross(v) - w).length(), 4.0 * epsilon);
    EXPECT_LE(distance(plane.to_work(origin + 2.0 * w + 5.0 * v), giPoint3(0.0, 5.0, 2.0)), 64.0 * epsilon);
    EXPECT_LE(distance(plane.to_world(plane.to_work(p)), p), 64.0 * epsilon);
    EXPECT_LE((plane.to_world(giVector3(0.0, 0.0, 3.0)) - 3.0 * w).length(), 8.0 * epsilon);
    EXPECT_TRUE(giWorkplane3().invalid() && !plane.invalid());

    giWorkplane2 const flat(giPoint2(1.0, 1.0), giUnitVec2(0.0, 2.0));
    EXPECT_EQ(0.0, distance(flat.to_work(giPoint2(0.0, 3.0)), giPoint2(2.0, 1.0)));
}

}  // namespace
