#include <datumfit/foundation/geometry/xform2.h>
#include <datumfit/foundation/geometry/xform3.h>
#include <datumfit/foundation/geometry/xform3_acc.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

constexpr double epsilon = std::numeric_limits<double>::epsilon();
giPoint3 const probe(3.0, -5.0, 7.0);
giUnitVec3 const oblique(1.0, -2.0, 3.0);
giXform3 const identity(giXformIdentity);

giXform3 turn(giPoint3 const & p, double radians) {
    return giXform3(giXformRotate, p, oblique, giAngle(giAngleRadians, radians));
}
giXform3 product(giXform3 const & a, giXform3 const & b) {
    return giXform3(giXformProduct, a, b);
}
giXform3 inverse(giXform3 const & x) {
    return giXform3(giXformInverse, x);
}

TEST(Transform, RotatesRightHandedAndKeepsItsPlaceFarOut) {
    giXform3 const quarter(giXformRotate, giPoint3(1.0, 1.0, 0.0), giAxisZ, giAngle(giAngle90));
    EXPECT_EQ(0.0, distance(quarter * giPoint3(3.0, 1.0, 5.0), giPoint3(1.0, 3.0, 5.0)));
    giXform3 const slight(giXformRotate, giPoint3(1e12, 1e12, 0.0), giAxisZ, giAngle(giAngleRadians, 1.23e-13));
    EXPECT_LE(distance(slight * giPoint3(giOrigin), giPoint3(0.123, -0.123, 0.0)), 1e-12);
    for (double const far : {0.0, 1e12}) {
        for (double const angle : {1e-12, 0.3, 2.0}) {
            giPoint3 const centre(far, -2.0 * far, 0.7 * far);
            giVector3 const arm = 100.0 * oblique.any_normal();
            giVector3 const turned = std::cos(angle) * arm + std::sin(angle) * oblique.cross(arm);
            giXform3 const x = turn(centre, angle);
            EXPECT_LE(distance(x * centre, centre), 4.0 * epsilon * far);  // rounding of the coordinates alone
            EXPECT_LE((x * (centre + arm) - centre - turned).length(), 8.0 * epsilon * far + 512.0 * epsilon);
            EXPECT_LE((x * arm - turned).length(), 512.0 * epsilon);
        }
    }
}

TEST(Transform, ProductsActFromTheRight) {
    giXform3 const a = turn(giPoint3(1.0, 2.0, 3.0), 0.9), b(giXformTranslate, giVector3(5.0, 6.0, 7.0));
    giXform3 pre = b, post = a, reused = a;
    reused.become(giXformProduct, reused, b);
    for (giXform3 const & x : {product(a, b), pre.premultiply(a), post.postmultiply(b), reused}) {
        EXPECT_LE(distance(x * probe, a * (b * probe)), 64.0 * epsilon);
    }
    EXPECT_TRUE(product(identity, identity).identity() && !product(identity, a).identity());
    EXPECT_TRUE(equal(product(identity, a), a, 0.0) && equal(product(a, identity), a, 0.0));
}

TEST(Transform, IsUndoneByItsInverseUnlessItFlattens) {
    giXform3 const rigid = turn(giPoint3(100.0, 2.0, 3.0), 1.3), scale(giXformScale, 2.0, -0.5, 10.0);
    giXform3 const wide(giXformScale, 1e-200, 1e-180, 1.0), flat(giXformScale, 1.0, 2.0, 0.0);
    for (giXform3 const & x : {rigid, product(product(rigid, scale), turn(probe, 0.4)), wide, identity}) {
        EXPECT_LE(distance(inverse(x) * (x * probe), probe), 4096.0 * epsilon);
        EXPECT_LE((inverse(x) * (x * oblique) - oblique).length(), 32.0 * epsilon);
    }
    for (double const angle : {0.0, 0.2, 0.7, 1.2}) {
        EXPECT_TRUE(inverse(product(turn(probe, angle), product(flat, turn(probe, -angle)))).invalid());
    }
}

TEST(Transform, GoesToLocalCoordinates) {
    giPoint3 const origin(10.0, 20.0, 30.0);
    giXform3 const plain(giXformLocal, origin, giAxisZ, giUnitVec3(0.0, 1.0, 1.0));
    EXPECT_EQ(0.0, distance(plain * giPoint3(11.0, 22.0, 33.0), giPoint3(1.0, 2.0, 3.0)));
    giXform3 const unhinted(giXformLocal, origin, giAxisZ, giAxisZ);
    EXPECT_EQ(1.0, (unhinted * giVector3(giAxisX)).length());

    giVector3 const across = oblique.any_normal(), third = across.cross(oblique);
    for (double const lean : {1.0, 1e-9, 1e-13, 0.0}) {
        giXform3 const x(giXformLocal, origin, oblique, oblique + lean * across);
        EXPECT_LE((x * oblique - giVector3(giAxisZ)).length(), 4.0 * epsilon);
        EXPECT_GE((x * across).y(), lean > 0.0 ? 1.0 - 4.0 * epsilon / lean : 0.0);
        EXPECT_LE((x * third - (x * across).cross(x * oblique)).length(), 8.0 * epsilon);  // right-handed in any case
    }
}

TEST(Transform, PassesInvalidityOn) {
    giXform3 const unset, x = turn(probe, 0.5);
    for (giXform3 const & y : {unset, product(unset, identity), product(identity, unset), inverse(unset),
                               turn(giPoint3(), 0.1), giXform3(giXformTranslate, giVector3())}) {
        EXPECT_TRUE(y.invalid() && (y * probe).invalid() && (y * giVector3(oblique)).invalid());
        EXPECT_FALSE(equal(y, identity, 1.0) || equal(identity, y, 1.0));
    }
    EXPECT_TRUE((x * giPoint3()).invalid() && (x * giVector3()).invalid() && (identity * giPoint3()).invalid());
}

TEST(Transform, IsWrittenThroughItsView) {
    giXform3 x(giXformIdentity);
    giXform3Acc::access(x).set_matrix_value(1, 3, 2.5);
    EXPECT_FALSE(x.identity());
    EXPECT_EQ(0.0, distance(x * probe, probe + giVector3(0.0, 2.5, 0.0)));
    EXPECT_TRUE(equal(x, identity, 2.5) && !equal(x, identity, 2.4));
}

TEST(PlaneTransform, TurnsShiftsAndGoesToLocalCoordinates) {
    giPoint2 const far(1e12, -3e11), near(1.0, 1.0), p(5.0, 6.0);
    giXform2 const a(giXformRotate, far, giAngle(giAngleRadians, 0.6)), b(giXformTranslate, giVector2(1.0, -3.0));
    EXPECT_LE(distance(a * far, far), 2.0 * epsilon * 1e12);
    giXform2 const quarter(giXformRotate, near, giVector2(5.0, 0.0), giVector2(0.0, 2.0));
    EXPECT_EQ(0.0, distance(quarter * giPoint2(3.0, 1.0), giPoint2(1.0, 3.0)));
    giXform2 x = quarter;
    x.become(giXformProduct, x, b);
    EXPECT_EQ(0.0, distance(x * p, quarter * (b * p)));
    x.become(giXformLocal, near, giUnitVec2(0.0, 2.0));
    EXPECT_EQ(0.0, distance(x * giPoint2(0.0, 3.0), giPoint2(2.0, 1.0)));
    EXPECT_TRUE((giXform2() * p).invalid() && (a * giPoint2()).invalid() && giXform2(giXformProduct, x, {}).invalid());
}

}  // namespace
