#include <datumfit/align3d/projected_point3.h>
#include <datumfit/align3d/rps_data.h>
#include <gtest/gtest.h>
#include <support/shapes.h>

#include <cfloat>

namespace {

TEST(PlaneAndPoint, ScalesTheNormalByItsWeight) {
    giVector3 const normal(0.0, 0.0, 1.0);
    EXPECT_EQ(1.0, normal.length());
    giPoint3 const p(1.0, 2.0, 3.0), q(4.0, 5.0, 6.5);
    sqPlaneAndPoint const record(p, q, normal, 1, -2.0, 5.0, 2.0);
    EXPECT_EQ(2.0, record.normal.length());  // not what the argument remembers
    EXPECT_TRUE(record.located == 1 && record.lower == -2.0 && record.upper == 5.0 && record.weight == 2.0);
    sqPlaneAndPoint const turned(p, giPlane(giUnitVec3(normal), q), 0, 0.0, 0.0, -1.0);
    EXPECT_EQ(-1.0, turned.normal.z());
    sqRPSData const aside(record, q);
    EXPECT_EQ(0.0, aside.point.distance(p) + aside.source_point.distance(q) + turned.plane_point.distance(q));
    sqPlaneAndPoint const none;
    EXPECT_TRUE(none.point.invalid() && none.plane_point.invalid() && none.normal.invalid());
    EXPECT_TRUE(aside.weight == 2.0 && sqRPSData().source_point.invalid());
}

TEST(ProjectedPoint3, IsInvalidAsItsMeasuredPointIs) {
    auto const invalid = [](double x, double y, double z) {
        return sqProjectedPoint3(giPoint3(x, y, z), giOrigin, giAxisZ).invalid();
    };
    EXPECT_TRUE(invalid(-DBL_MAX, 0, 0) && invalid(DBL_MAX, 0, 0) && invalid(0, DBL_MAX, 0) && invalid(0, 0, DBL_MAX));
    EXPECT_FALSE(invalid(0, -DBL_MAX, 0) || invalid(0, 0, -DBL_MAX) || invalid(0, 0, 0));
    EXPECT_TRUE(sqProjectedPoint3().invalid());
    sqProjectedPoint3 p(giPoint3(1.0, 2.0, 3.0), giOrigin, giAxisZ);
    p.set_invalid();
    EXPECT_TRUE(p.invalid() && p.measured_point().y() == 2.0 && p.measured_point().z() == 3.0);
}

TEST(ProjectedPoint3, IsMeasuredUnderATransform) {
    sqProjectedPoint3 const p(giPoint3(1.0, 2.0, -2.0), giPoint3(1.0, 2.0, 1.0), giAxisZ);
    giXform3 const x(giXformTranslate, giVector3(2.0, 3.0, 9.0));
    EXPECT_TRUE(p.distance() == 3.0 && p.signed_distance() == -3.0);
    EXPECT_TRUE(signed_norm_dev(p, x) == 6.0 && square_dev(p, x) == 49.0);

    giXform3 const turn(giXformRotate, giPoint3(giOrigin), giAxisZ, giAngle180);
    sqProjectedPoint3coDynArr cloud{sqProjectedPoint3()};
    EXPECT_EQ(0.0, get_maximum_movement(cloud, x));
    for (double const size : {1.0, 2.0, 0.5})
        cloud.append(sqProjectedPoint3(giPoint3(3.0 * size, 4.0 * size, 7.0), giOrigin, giAxisX));
    EXPECT_NEAR(20.0, get_maximum_movement(cloud, turn), 1e-14);
}

}  // namespace
