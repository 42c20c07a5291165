#include "align3d/test_surfaces.h"

#include <datumfit/align3d/surf_projector_for_fitting3.h>
#include <datumfit/align3d/surface_for_fitting.h>
#include <gtest/gtest.h>

#include <memory>

using namespace align3d_tests;

namespace {

// Planes z = height, in this order and each with the sign of its normal.
rectangles level_planes(std::initializer_list<std::pair<double, double>> planes) {
    rectangles result;
    for (auto const & [z, sign] : planes) {
        result.add(giPoint3(0.0, 0.0, z), giAxisX, giUnitVec3(0.0, 0.0, sign), 1e3, 1e3);
    }
    return result;
}

sqProjectedPoint3 project(sknSurf const & surface, giPoint3 const & centre, giUnitVec3 const & normal,
                          double radius = 0.0, giXform3 const & x = giXform3(giXformIdentity)) {
    sqProbedPoint3 const point(centre, normal, radius);
    sqProjectedPoint3 result(giPoint3(9.0, 9.0, 9.0), giPoint3(9.0, 9.0, 9.0), giAxisX);
    sqSurfProjectorForFitting3(surface).rotate_and_project(x, &point, result);
    return result;
}

}  // namespace

TEST(SurfProjector, StandsOffTheMovedCentresFootByTheRadius) {
    // The point is turned from the x axis to the z axis, and lifted; its approximate normal is only turned.
    giXform3 const x = giXform3(giXformTranslate, giVector3(0.0, 0.0, 5.0)) *
                       giXform3(giXformRotate, giOrigin, giAxisY, giAngle(giAngleDegrees, -90.0));
    sqProjectedPoint3 const p =
        project(level_planes({{6.5, -1.0}}), giPoint3(2.0, 3.0, 0.0), giUnitVec3(1.0, 0.0, 0.2), 0.3, x);
    EXPECT_NEAR(0.0, p.measured_point().distance(giPoint3(0.0, 3.0, 7.0)), 1e-14);
    EXPECT_NEAR(0.0, p.nominal_point().distance(giPoint3(0.0, 3.0, 6.8)), 1e-14);
    EXPECT_EQ(1.0, p.nominal_normal().z());
}

TEST(SurfProjector, PrefersTheFootOnTheApproximateSide) {
    rectangles const sheet = level_planes({{0.0, 1.0}, {-0.2, -1.0}});
    giUnitVec3 const up(giAxisZ);
    auto const height = [&](double z, giUnitVec3 const & side, double radius) {
        return project(sheet, giPoint3(1.0, 2.0, z), side, radius).nominal_point().z();
    };
    // Within the sheet, where both sides are 0.1 away, one of them has the centre on the approximate normal's side.
    EXPECT_NEAR(-0.15, height(-0.1, up, 0.05), 1e-15);
    EXPECT_NEAR(-0.05, height(-0.1, -up, 0.05), 1e-15);
    // Above both, they are equally good, to the last bit and for every distance, and the first listed is taken.
    for (int k = 1; k < 60; ++k) {
        giPoint3 const above(0.1 * k, 0.3 * k, 1e-3 * k);
        for (double const r : {0.0, 0.4, 3.0}) EXPECT_EQ(r, project(sheet, above, up, r).nominal_point().z());
    }
    // Without a radius both sides of a point count the same.
    EXPECT_EQ(0.0, height(-0.09, up, 0.0));
}

TEST(SurfProjector, TakesTheSurfacesNormalOnTheSurface) {
    rectangles const plane = level_planes({{0.0, 1.0}});
    giUnitVec3 const down(0.1, 0.0, -1.0);
    // Farther off, where centre and normal disagree, the line to the centre gives the normal, and the side stays.
    for (double const z : {0.0, 0.99e-4, -0.99e-4, 1.01e-4}) {
        EXPECT_EQ(-1.0, project(plane, giPoint3(1.0, 2.0, z), down).nominal_normal().z()) << z;
        EXPECT_EQ(1.0, project(plane, giPoint3(1.0, 2.0, z), -down).nominal_normal().z()) << z;
    }
    // There the misfit is that of a length, so that a foot with the centre right on it beats one below a centre.
    rectangles const stairs = level_planes({{-1.0, 1.0}, {0.0, 1.0}});
    EXPECT_EQ(0.0, project(stairs, giPoint3(1.0, 2.0, 0.0), giAxisZ).nominal_point().z());
    EXPECT_NEAR(-0.3, project(stairs, giPoint3(1.0, 2.0, 0.0), giAxisZ, 0.7).nominal_point().z(), 1e-15);
}

TEST(SurfProjector, PassesOverFeetThatTheCentreIsNotOver) {
    struct bare : rectangles {
        giUnitVec3 normal_at(sknSurfPoint const &, double, giAngle const &) const override { return giUnitVec3(); }
    } no_normals;
    rectangles patch;
    for (rectangles * const surface : {&patch, static_cast<rectangles *>(&no_normals)}) {
        surface->add(giOrigin, giAxisX, giAxisZ, 1.0, 1.0);
    }
    // Beside the edge the direction to the centre has this sine against the normal.
    auto const beside = [](double sine) { return giPoint3(1.0 + 2.0 * sine, 0.0, 2.0 * std::sqrt(1.0 - sine * sine)); };
    EXPECT_NEAR(0.0099, project(patch, beside(0.0099), giAxisZ).nominal_normal().x(), 1e-15);
    EXPECT_TRUE(project(patch, beside(0.0101), giAxisZ).invalid());
    EXPECT_TRUE(project(rectangles(), giOrigin, giAxisZ).invalid());
    EXPECT_TRUE(project(patch, giPoint3(), giAxisZ).invalid());
    EXPECT_TRUE(project(patch, giOrigin, giUnitVec3()).invalid());
    EXPECT_TRUE(project(no_normals, giPoint3(0.0, 0.0, 0.5), giAxisZ).invalid());

    // The bare projector leaves the record alone, and no projector gives none.
    sqProbedPoint3 const point(giOrigin, giAxisX, 0.0);
    sqProjectorForFitting3 const no_object;
    sqProjectedPoint3 record(giOrigin, giOrigin, giAxisX);
    point.project_from_position(giXformIdentity, record, &no_object);
    EXPECT_FALSE(record.invalid());
    point.initial_projection(record, nullptr);
    EXPECT_TRUE(record.invalid());
}

TEST(SurfaceForFitting, MovesOnlyItsOwnSurface) {
    sqSurfaceForFitting const object(sknSurfPtr(new rectangles(level_planes({{0.0, 1.0}}))));
    std::unique_ptr<sqObjectForFitting> const copy(object.copy());
    copy->transform(giXform3(giXformTranslate, giVector3(0.0, 0.0, 3.0)));
    // The handle that was given is shared.
    sknSurfPtr shared = object.get_surface();
    sknSurf::transform(shared, giXform3(giXformTranslate, giVector3(0.0, 0.0, 1.0)));
    auto const height = [](sqObjectForFitting const & of) {
        sqProjectedPoint3 result;
        sqProbedPoint3 const point(giPoint3(0.0, 0.0, 7.0), giAxisZ, 0.5);
        point.initial_projection(result, of.create_projector().pointer());
        return result.nominal_point().z();
    };
    EXPECT_EQ(1.5, height(object));
    EXPECT_EQ(3.5, height(*copy));

    sqSurfaceForFitting empty{sknSurfPtr()};
    empty.transform(giXformIdentity);
    std::unique_ptr<sqObjectForFitting> const empty_copy(empty.copy());
    EXPECT_NE(nullptr, empty_copy->create_projector().pointer());
}
