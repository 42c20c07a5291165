#include "foundation/surfaces/meshes.h"

#include <datumfit/datumfit.h>
#include <gtest/gtest.h>

namespace {

// An ellipsoid about the origin, analytic or of triangles, as an object that counts how many of it there are.
sknSurfPtr ellipsoid(bool triangles = false) {
    sknSurfPtr surface(new sknSphereSurf(giPoint3(giOrigin), 1.0));
    if (triangles) surface = new sknMeshSurf(mesh_tests::sphere(24, 12).surface());
    sknSurf::transform(surface, giXform3(giXformScale, 30.0, 22.0, 15.0));
    return surface;
}
struct counted : sqSurfaceForFitting {
    inline static int alive = 0, made = 0;
    explicit counted(sknSurfPtr const & surface) : sqSurfaceForFitting(surface) { ++alive, ++made; }
    ~counted() override { --alive; }
    sqObjectForFitting * copy() const override {
        sknSurfPtr clone;
        (*get_surface()).clone(clone);
        return new counted(clone);
    }
};

giPoint3 foot(sknSurf const & surface, giPoint3 const & point) {
    sknSurfPointList feet;
    int status;
    surface.project_point(point, feet, status);
    return feet[0].point;
}

double tip(sknSurf const & surface) {
    return foot(surface, giPoint3(40.0, 0.0, 0.0)).x();
}

// Points that lie on the surface when that is scaled, measured in a pose of their own; and what was found from them.
struct aligned {
    giXform3 pose;
    giPoint3coPageArr points, nominal, measured;
    giXform3 rough, total;
    double sx = -1.0, sy = -1.0;

    aligned(sknSurf const & surface, double x, double y,
            giXform3 const & at = giXform3(giXformTranslate, giVector3(0.6, -0.4, 0.5))
                                      .postmultiply(giXform3(giXformRotate, giOrigin, general_direction(),
                                                             giAngle(giAngleRadians, 0.03))))
        : pose(at) {
        for (giPoint3 const & p : {giPoint3(30.0, 0.0, 0.0), giPoint3(0.0, 22.0, 0.0), giPoint3(0.0, 0.0, 15.0)}) {
            nominal.append(p);
            measured.append(pose * p);
        }
        giPoint3coDynArr const around = sphere_cap(giPoint3(giOrigin), 25.0, 3.0, 200);
        for (int i = 0; i < around.size(); ++i) {
            giPoint3 const p = foot(surface, around.read(i));
            points.append(pose * giPoint3(x * p.x(), y * p.y(), p.z()));
        }
    }
    template <class Nominal>
    aligned & to(Nominal && object, int passes, int iterations = 1) {
        sqBestfitAlignmentWithScale::get_alignment(object, nominal, measured, points, 1e-9, iterations, rough, total,
                                                   sx, sy, passes);
        return *this;
    }
};

TEST(AlignmentWithScale, RecoversFactorsOfSurfaces) {
    for (bool const triangles : {false, true}) {
        sknSurfPtr const nominal = ellipsoid(triangles);
        sknSurfPtr surface = nominal;
        aligned found(*nominal, 0.95, 1.03);
        found.to(surface, 60);
        EXPECT_NEAR(found.sx, 0.95, 1e-6);
        EXPECT_NEAR(found.sy, 1.03, 1e-6);
        EXPECT_TRUE(equal(found.total, giXform3(giXformInverse, found.pose), 1e-6));
        EXPECT_NEAR(tip(*surface), 30.0 * found.sx, 1e-9);
        EXPECT_NEAR(tip(*nominal), 30.0, 1e-12);  // the caller's own stays
    }
}

TEST(AlignmentWithScale, StaysRoughWithNothingToDo) {
    for (int const passes : {0, 5}) {
        sknSurfPtr const nominal = ellipsoid();
        sknSurfPtr surface = nominal;
        aligned found(*nominal, 0.9, 1.1);
        found.to(surface, passes, 5 - passes);
        EXPECT_TRUE(equal(found.rough, giXform3(giXformInverse, found.pose), 1e-13));  // measured onto nominal
        EXPECT_TRUE(equal(found.total, found.rough, 0.0));
        EXPECT_TRUE(found.sx == 1.0 && found.sy == 1.0 && surface.pointer() == nominal.pointer());
        found.rough = giXformIdentity;
        EXPECT_TRUE(found.to(surface, passes, 5 - passes).total.identity());
        found.nominal.clear(0);
        found.rough.set_invalid();
        EXPECT_TRUE(found.to(surface, 2).total.invalid() && found.sx == 1.0);  // a rough pairing that fails
    }
}

TEST(AlignmentWithScale, HoldsFactorsToTheirLimits) {
    for (double const factor : {0.2, 5.0}) {
        counted::made = 0;
        sknSurfPtr const ball(new sknSphereSurf(giPoint3(giOrigin), 10.0));
        sqObjectForFitting * object = new counted(ball);
        aligned const found = aligned(*ball, factor, factor).to(&object, 1);
        EXPECT_EQ(found.sx, factor < 1.0 ? 0.7 : 1.3);
        EXPECT_EQ(found.sy, found.sx);
        EXPECT_NEAR(tip(*static_cast<counted *>(object)->get_surface()), 10.0 * found.sx, 1e-9);
        EXPECT_TRUE(counted::alive == 1 && counted::made == 2);
        delete object;
        EXPECT_EQ(counted::alive, 0);
    }
}

// A section of a cylinder along x says nothing of x.
TEST(AlignmentWithScale, LeavesAFactorWithoutExtent) {
    sknSurfPtr surface(new sknCylinderSurf(giPoint3(giOrigin), giAxisX, 10.0));
    aligned found(*surface, 0.0, 0.9, giXformIdentity);
    found.rough = giXformIdentity;
    EXPECT_EQ(found.to(surface, 3).sx, 1.0);
    EXPECT_LT(found.sy, 0.95);
}

// Symmetric errors about a plane across x make it seem too near by the mean of their squares; the step stays.
TEST(AlignmentWithScale, DropsAScaleThatIsNotBetter) {
    counted::made = 0;
    sqObjectForFitting * object =
        new counted(sknSurfPtr(new sknPlaneSurf(giPlane(giAxisX, giPoint3(100.0, 0.0, 0.0)))));
    sqObjectForFitting const * const first = object;
    aligned found(*ellipsoid(), 1.0, 1.0);
    found.points.clear(0);
    for (int i = 0; i < 16; ++i) {
        for (double const x : {99.5, 101.5}) found.points.append(giPoint3(x, i % 4 - 1.5, i / 4 - 1.5));
    }
    found.rough = giXformIdentity;
    found.to(&object, 5, 5);
    EXPECT_TRUE(found.sx == 1.0 && found.sy == 1.0);
    EXPECT_TRUE(equal(found.total, giXform3(giXformTranslate, giVector3(-0.5, 0.0, 0.0)), 1e-12));
    EXPECT_TRUE(object == first && counted::alive == 1 && counted::made == 2);
    delete object;
    EXPECT_EQ(counted::alive, 0);
}

}  // namespace
