#include "support/ridders.h"
#include "support/shapes.h"

#include <gtest/gtest.h>

namespace {

TEST(AxisGeometry, GivesCoordinateAndDistanceWithTheirDerivatives) {
    giPoint3 const origin(1.0, -2.0, 0.5), point(0.2, 3.1, -4.0);
    giUnitVec3 const axis = general_direction();
    double g, f;
    mlVector dg, df;
    sqLeastSquareDistance3::F_G_and_derivatives(origin, axis, point, g, dg, f, df);
    EXPECT_TRUE(dg.dimension() == 6 && df.dimension() == 6);
    EXPECT_LT(g, 0.0);
    EXPECT_NEAR((point - origin).length().squared(), f * f + g * g, 1e-13);
    for (int k = 0; k < 6; ++k) {
        auto const moved = [&](double by, auto const & of) {
            double at[6] = {origin.x(), origin.y(), origin.z(), axis.x(), axis.y(), axis.z()};
            at[k] += by;
            return of(giPoint3(at[0], at[1], at[2]), giUnitVec3(at[3], at[4], at[5]), point);
        };
        auto const F = [&](double by) { return moved(by, sqLeastSquareDistance3::F); };
        auto const G = [&](double by) { return moved(by, sqLeastSquareDistance3::G); };
        EXPECT_NEAR(derivative(F, 0.0, 0.05), df[k], 1e-9) << k;
        EXPECT_NEAR(derivative(G, 0.0, 0.05), dg[k], 1e-9) << k;
    }
}

TEST(AxisGeometry, FallsBackOnTheAxis) {
    double g, f;
    mlVector dg, df;
    sqLeastSquareDistance3::F_G_and_derivatives(giPoint3(1.0, 2.0, 3.0), giUnitVec3(1.0, 0.0, 0.0),
                                                giPoint3(5.0, 2.0, 3.0), g, dg, f, df);
    double const expected[] = {0.0, 1.0, 1.0, 0.0, 4.0, 4.0};
    EXPECT_EQ(0.0, f);
    for (int k = 0; k < 6; ++k) EXPECT_EQ(expected[k], df[k]);
}

TEST(AxisGeometry, StartsFromAxesAndDiagonals) {
    ASSERT_EQ(7, sqLeastSquareDistance3::num_guess_directions());
    EXPECT_EQ(1.0, sqLeastSquareDistance3::guess_direction(1).y());
    giUnitVec3 const last = sqLeastSquareDistance3::guess_direction(6);
    EXPECT_NEAR(0.0, (last + (1.0 / std::sqrt(3.0)) * giVector3(1.0, 1.0, -1.0)).length().value(), 1e-15);
}

TEST(PlaneGeometry, ProjectsWithinAFrameThatItsTransformKnows) {
    for (giVector3 const & normal : {giVector3(0.4, -0.3, 2.0), giVector3(-3.0, 1.0, 0.5), giVector3(0.0, 0.0, -1.0)}) {
        giPoint3 const origin = general_point(10.0);
        giPoint3coDynArr const points = {origin, origin + giVector3(1.0, 0.0, 0.0), general_point(-3.0)};
        giPoint2coDynArr flat = {giPoint2(9.0, 9.0), giPoint2(9.0, 9.0), giPoint2(9.0, 9.0), giPoint2(9.0, 9.0)};
        giXform3 to_plane;
        sqUtils::ProjectPointsToPlane(points, origin, normal, flat, &to_plane);
        ASSERT_EQ(3, flat.size());
        EXPECT_TRUE(flat[0].coincident(giPoint2(0.0, 0.0), 0.0));
        giXform3 const back(giXformInverse, to_plane);
        for (int i = 0; i < 3; ++i) {
            giVector3 const off = back * flat[i].xyz(0.0) - points[i];
            EXPECT_NEAR(0.0, off.cross(normal).length().value(), 1e-13) << "moved along the normal only";
        }
        // The reference axis lies in the half plane of positive y.
        giVector3 const axis = std::abs(normal.x()) > std::abs(normal.y()) ? giVector3(giAxisY) : giVector3(giAxisX);
        giVector3 const seen = to_plane * axis;
        EXPECT_NEAR(0.0, seen.x(), 1e-15);
        EXPECT_GT(seen.y(), 0.0);
        sqUtils::ProjectPointsToPlane(points, origin, normal, flat, nullptr);
        EXPECT_NEAR(0.0, (to_plane * points[2]).xy().distance(flat[2]).value(), 1e-14);
    }
}

TEST(PlaneGeometry, QuickAngleGrowsWithTheAngleAndTheBisectorHalvesIt) {
    double last = -3.0;
    for (int i = 0; i < 24; ++i) {
        double const t = i * utMath::pi() / 12.0, from = 0.927;
        giUnitVec2 const a(std::cos(from), std::sin(from)), b(std::cos(from + t), std::sin(from + t));
        EXPECT_GT(sqUtils::quick_angle(a, b), last);
        last = sqUtils::quick_angle(a, b);
        EXPECT_NEAR(-std::cos(t), i <= 12 ? last + 1.0 : 1.0 - last, 1e-15);
        // Half way on the counter-clockwise arc.
        giVector2 const half(std::cos(from + t / 2.0), std::sin(from + t / 2.0));
        EXPECT_NEAR(0.0, (sqUtils::bisector(a, b) - half).length().value(), 1e-15);
    }
    giUnitVec2 const x(1.0, 0.0);
    EXPECT_EQ(-2.0, sqUtils::quick_angle(x, x));
    EXPECT_EQ(1.0, sqUtils::quick_angle(x, giUnitVec2(0.0, -1.0)));
}

TEST(PlaneGeometry, CrossesAndIntersects) {
    giVector3 normal;
    sqUtils::get_orthogonal(giVector3(0.0, 2.0, 3.0), normal);
    EXPECT_NEAR(0.0, (normal - giUnitVec3(0.0, 3.0, -2.0)).length().value(), 1e-15);  // v × x
    sqUtils::get_orthogonal(giVector3(2.0, 1.0, 3.0), normal);
    EXPECT_NEAR(0.0, (normal - giUnitVec3(-3.0, 0.0, 2.0)).length().value(), 1e-15);  // v × y

    double t = 7.0;
    giPoint2 const p(1.0, 1.0);
    EXPECT_FALSE(sqUtils::intersect_lines(p, giVector2(1.0, 0.0), p, giVector2(1.0, 1e-7), t));
    EXPECT_EQ(7.0, t);
    EXPECT_TRUE(sqUtils::intersect_lines(p, giVector2(2.0, 0.0), giPoint2(4.0, 5.0), giVector2(0.0, 1.0), t));
    EXPECT_EQ(1.5, t);
}

}  // namespace
