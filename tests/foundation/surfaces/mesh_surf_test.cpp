#include "foundation/surfaces/meshes.h"

#include <datumfit/align3d/surf_projector_for_fitting3.h>
#include <gtest/gtest.h>

#include <limits>
#include <random>

using namespace mesh_tests;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

double distance_of(sknSurfPoint const & foot, giPoint3 const & p) {
    return foot.point.distance(p);
}

sqProjectedPoint3 project(sknSurf const & surface, giPoint3 const & centre, giUnitVec3 const & normal, double radius) {
    sqProjectedPoint3 result;
    sqProbedPoint3 const point(centre, normal, radius);
    sqSurfProjectorForFitting3(surface).rotate_and_project(giXform3(giXformIdentity), &point, result);
    return result;
}

giXform3 scaling(double x, double y, double z) {
    return giXform3(giXformScale, x, y, z);
}

struct shape {
    char const * name;
    mesh triangles;
};

std::vector<shape> shapes() {
    mesh const ball = sphere(12, 8), knot = tangle(9, 40);
    mesh const wave = grid(9, 7, [](double s, double t) {
        return giPoint3(2.0 * s, 2.0 * t, 0.2 * std::sin(5.0 * s) * std::cos(4.0 * t));
    });
    return {{"sphere", ball},
            {"soup of a sphere", soup(ball)},
            {"box", box(1.0, 2.0, 0.7)},
            {"sheet", box(3.0, 2.0, 1e-3)},
            {"tangle", knot},
            {"soup of a tangle", soup(knot)},
            {"wave", wave}};
}

}  // namespace

class MeshPlacement : public testing::TestWithParam<placement> {};

TEST_P(MeshPlacement, HasAFootWhereverNoPlaceAroundIsNearer) {
    double const rounding = rounding_at(GetParam());
    std::mt19937 draw(5);
    std::uniform_real_distribution<double> coordinate(-2.0, 2.5);
    for (shape const & s : shapes()) {
        SCOPED_TRACE(s.name);
        mesh const m = moved(s.triangles, to(GetParam()));
        sknMeshSurf all = m.surface(), standard = m.surface(), nearest = m.surface();
        all.set_reach(infinity);
        nearest.set_reach(0.0);
        for (int i = 0; i < 60; ++i) {
            double const away = i % 10 == 0 ? 1e4 : 1.0, x = coordinate(draw), y = coordinate(draw);
            giPoint3 const p = to(GetParam()) * giPoint3(away * x, away * y, away * coordinate(draw));
            double const tolerance = 1e3 * (rounding + away * 1e-16 * GetParam().size);
            std::vector<double> const expected = foot_distances(m, p, tolerance);
            sknSurfPointList const feet = feet_of(all, p), near = feet_of(nearest, p), some = feet_of(standard, p);
            ASSERT_EQ(static_cast<int>(expected.size()), feet.size()) << i;
            ASSERT_EQ(1, near.size());
            EXPECT_NEAR(expected[0], distance_of(near.read(0), p), 1e-2 * tolerance);
            ASSERT_GE(feet.size(), some.size());
            for (int k = 0; k < feet.size(); ++k) {
                EXPECT_NEAR(expected.data()[k], distance_of(feet.read(k), p), 1e-2 * tolerance) << i;
                EXPECT_TRUE(k < some.size() || expected.data()[k] > 2.0 * expected[0] ||
                            expected.data()[k] > expected[0] + 0.1 * GetParam().size)
                    << i;
            }
        }
    }
}

TEST_P(MeshPlacement, HasOneFootWhereFacesMeet) {
    mesh const m =
        moved(grid(6, 6, [](double s, double t) { return giPoint3(6.0 * s, 6.0 * t, 0.0); }), to(GetParam()));
    sknMeshSurf const surface = m.surface();
    giVector3 const height = to(GetParam()) * giVector3(0.0, 0.0, 0.8);
    giUnitVec3 const up(height);
    for (int i = 0; i <= 24; ++i) {
        for (int j = 0; j <= 24; ++j) {
            giPoint3 const place = to(GetParam()) * giPoint3(0.25 * i, 0.25 * j, 0.0);
            for (double const side : {1.0, 0.0, -1.0}) {
                sknSurfPointList const feet = feet_of(surface, place + side * height);
                // Far from the origin the vertices' rounding dents the plane, by more than directions may be rounded.
                ASSERT_TRUE(feet.size() == 1 || (GetParam().offset > 0.0 && feet.size() > 1)) << i << ' ' << j;
                for (int k = 0; k < feet.size(); ++k) {
                    EXPECT_LE(place.distance(feet.read(k).point), 20.0 * rounding_at(GetParam()));
                }
                EXPECT_LE(normal_of(surface, feet.read(0)).cross(up).length().value(),
                          1e-6 + 10.0 * rounding_at(GetParam()) / GetParam().size);
                EXPECT_GT(normal_of(surface, feet.read(0)).dot(up), 0.9);
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Placements, MeshPlacement, testing::ValuesIn(placements),
                         [](auto const & at) { return at.param.name; });

TEST(MeshSurf, ListsMoreFeetThanFewOnceEachAndBehindTheOthers) {
    sknMeshSurf const surface = sphere(40, 30).surface();
    sknSurfPointList feet(1, 1);
    feet.append({7.0, 7.0, giPoint3(7.0, 7.0, 7.0)});
    int status = -1;
    surface.project_point(giOrigin, feet, status);
    EXPECT_EQ(0, status);
    EXPECT_EQ(7.0, feet.read(0).u);
    // Each facet of a sphere has one, and two triangles share that of a quad.
    EXPECT_EQ(1 + 28 * 40 + 2 * 40, feet.size());
    for (int i = 2; i < feet.size(); ++i) {
        EXPECT_LE(distance_of(feet.read(i - 1), giOrigin), distance_of(feet.read(i), giOrigin));
        for (int k = 1; k < i; ++k) EXPECT_GT(feet.read(i).point.distance(feet.read(k).point), 1e-3);
    }
}

TEST(MeshSurf, FindsFeetOnSlivers) {
    for (double const height : {1e-3, 1e-6, 1e-9, 1e-12}) {
        mesh m;
        for (double const y : {0.0, height, 1.0, -1.0}) m.vertices.append(giPoint3(y == height ? 0.3 : 0.0, y, 0.0));
        m.vertices.append(giPoint3(1.0, 0.0, 0.0));
        m.triangles.append({0, 4, 1});
        m.triangles.append({1, 4, 2});
        m.triangles.append({0, 1, 2});
        m.triangles.append({3, 4, 0});
        m = moved(m, to({"", 10.0, 1.0}));
        for (double const y : {-0.1, 0.0, 0.3 * height, height, 0.1}) {
            giPoint3 const place = to({"", 10.0, 1.0}) * giPoint3(0.3, y, 0.0);
            giPoint3 const p = place + to({"", 10.0, 1.0}) * giVector3(0.0, 0.0, 0.5);
            sknSurfPointList const feet = feet_of(m.surface(), p);
            ASSERT_GE(feet.size(), 1) << height << ' ' << y;
            EXPECT_NEAR(0.5, distance_of(feet.read(0), p), 1e-14);
            // The rounding of the vertices turns the sliver, and its foot stays on it.
            EXPECT_LE(feet.read(0).point.distance(place), 1e-13 + std::min(height, 4e-15 / height)) << height;
        }
    }
}

TEST(MeshSurf, SeesBothSidesOfASheetAndNotTheFarSideOfASolid) {
    sknMeshSurf const sheet = box(100.0, 60.0, 1.5).surface(), solid = box(100.0, 60.0, 40.0).surface();
    for (double const z : {-3.0, 0.3, 1.2, 3.5}) EXPECT_EQ(2, feet_of(sheet, giPoint3(31.0, 22.0, z)).size()) << z;
    EXPECT_EQ(1, feet_of(solid, giPoint3(31.0, 22.0, 42.0)).size());
    EXPECT_EQ(1, feet_of(solid, giPoint3(31.0, 22.0, 38.0)).size());
    // Within the sheet the projector takes the foot that the approximate normal points from.
    EXPECT_NEAR(2.5, project(sheet, giPoint3(31.0, 22.0, 1.7), giAxisZ, 1.0).nominal_point().z(), 1e-13);
    EXPECT_NEAR(1.0, project(sheet, giPoint3(31.0, 22.0, 1.2), giAxisZ, 1.0).nominal_point().z(), 1e-13);
}

TEST(MeshSurf, LosesNoPointOffASmoothEdge) {
    int const n = 48;  // 7.5 degrees from facet to facet, so that many feet lie on edges
    sknMeshSurf surface = mantle(n).surface();
    int lost = 0;
    for (int i = 0; i < 500; ++i) {
        giUnitVec3 const out(std::cos(0.1 * i), std::sin(0.1 * i), 0.0);
        giPoint3 const p = giPoint3(0.0, 0.0, 0.4) + 1.5 * out;
        sknSurfPointList const feet = feet_of(surface, p);
        ASSERT_EQ(1, feet.size());
        EXPECT_LE(normal_of(surface, feet.read(0)).cross(giUnitVec3(p - feet.read(0).point)).length(), 1e-9);
        EXPECT_GT(normal_of(surface, feet.read(0)).dot(out), 0.99);
        EXPECT_FALSE(project(surface, p, out, 0.5).invalid());
        surface.set_crease_angle(giAngle(giAngleDegrees, 7.0));
        EXPECT_EQ(0.0, feet_of(surface, p).read(0).v);
        lost += project(surface, p, out, 0.5).invalid();
        surface.set_crease_angle(giAngle(giAngleDegrees, 7.5));
    }
    EXPECT_GT(lost, 100);
    // A vertex, seen along a line that no triangle's normal comes near.
    sknMeshSurf const ball = sphere(24, 12).surface();
    giVector3 const out = giUnitVec3(std::sin(pi / 4.0) * std::cos(pi / 4.0), std::sin(pi / 4.0) * std::sin(pi / 4.0),
                                     -std::cos(pi / 4.0));
    sknSurfPointList const feet = feet_of(ball, giPoint3(giOrigin) + 1.2 * out);
    EXPECT_NEAR(0.0, feet.read(0).point.distance(giPoint3(giOrigin) + out), 1e-15);
    EXPECT_LE(normal_of(ball, feet.read(0)).cross(out).length(), 1e-9);
}

TEST(MeshSurf, LosesPointsOffSharpEdgesAndTheBoundary) {
    sknMeshSurf const solid = box(4.0, 4.0, 4.0).surface(), open = mantle(48).surface();
    for (giPoint3 const & p : {giPoint3(5.0, 2.0, 5.0), giPoint3(5.0, 5.0, 5.0)}) {
        ASSERT_EQ(1, feet_of(solid, p).size());
        giUnitVec3 const n = normal_of(solid, feet_of(solid, p).read(0));
        EXPECT_EQ(1.0, std::max({n.x(), n.y(), n.z()}));
        EXPECT_TRUE(project(solid, p, giAxisX, 1.0).invalid());
    }
    EXPECT_FALSE(project(solid, giPoint3(5.0, 2.0, 4.0), giAxisX, 1.0).invalid());
    EXPECT_TRUE(project(open, giPoint3(1.2, 0.0, 1.1), giAxisX, 0.2).invalid());
    EXPECT_EQ(1, feet_of(open, giPoint3(1.2, 0.0, 1.1)).size());
}

TEST(MeshSurf, RefusesWhatIsNoMesh) {
    giPoint3coDynArr const vertices = {giPoint3(0.0, 0.0, 0.0), giPoint3(1.0, 0.0, 0.0), giPoint3(0.0, 1.0, 0.0),
                                       giPoint3(2.0, 0.0, 0.0)};
    giPoint3coDynArr invalid = vertices, not_finite = vertices;
    invalid.append(giPoint3());
    not_finite.append(giPoint3(0.0, std::nan(""), 0.0));
    struct {
        giPoint3coDynArr vertices;
        sknTrianglecoDynArr triangles;
        sknMeshStatus status;
    } const cases[] = {{vertices, {}, sknMeshNoTriangle},
                       {{}, {}, sknMeshNoTriangle},
                       {vertices, {{0, 1, 3}, {0, 0, 2}}, sknMeshNoTriangle},
                       {vertices, {{0, 1, 2}, {0, 1, 4}}, sknMeshBadTriangle},
                       {vertices, {{0, 1, 2}, {-1, 1, 2}}, sknMeshBadTriangle},
                       {invalid, {{0, 1, 2}}, sknMeshBadVertex},
                       {not_finite, {{0, 1, 2}}, sknMeshBadVertex},
                       {vertices, {{0, 1, 3}, {0, 1, 2}, {2, 0, 1}}, sknMeshValid}};
    for (auto const & c : cases) {
        sknMeshSurf surface(c.vertices, c.triangles);
        bool const valid = c.status == sknMeshValid;
        EXPECT_EQ(c.status, surface.status());
        EXPECT_EQ(valid ? 1 : 0, feet_of(surface, giPoint3(0.2, 0.2, 1.0)).size());
        EXPECT_EQ(valid ? 1 : 0, surface.use_vertex_normals());
        for (double const u : {0.0, -1.0, 3.0, 1e300, std::nan("")}) {
            EXPECT_TRUE(normal_of(surface, {u, 0.0, giPoint3(0.2, 0.2, 0.0)}).invalid());
        }
        EXPECT_EQ(!valid, normal_of(surface, {1.0, 0.0, giPoint3(0.2, 0.2, 0.0)}).invalid());
        EXPECT_EQ(0, feet_of(surface, giPoint3()).size());
        EXPECT_EQ(0, feet_of(surface, giPoint3(0.0, infinity, 0.0)).size());
    }
}

TEST(MeshSurf, MovesACopyByItself) {
    mesh const m = sphere(16, 12);
    sknMeshSurf original = m.surface();
    giPoint3 const p(0.4, 0.5, 1.3);
    giXform3 const stretch(giXformProduct, giXform3(giXformTranslate, giVector3(3.0, -1.0, 2.0)),
                           scaling(1.0, 2.5, 0.4));
    for (giXform3 const & x : {stretch, giXform3(giXformProduct, stretch, scaling(-1.0, 1.0, 1.0))}) {
        sknSurfPtr copy;
        original.clone(copy);
        sknSurf::transform(copy, x);
        EXPECT_EQ(distance_of(feet_of(m.surface(), p).read(0), p), distance_of(feet_of(original, p).read(0), p));
        sknMeshSurf const moved_mesh = moved(m, x).surface();
        sknSurfPointList const feet = feet_of(*copy, x * p), expected = feet_of(moved_mesh, x * p);
        ASSERT_EQ(expected.size(), feet.size());
        EXPECT_NEAR(0.0, feet.read(0).point.distance(expected.read(0).point), 1e-14);
        // The outside stays outside, also under a reflection.
        EXPECT_GT(normal_of(*copy, feet.read(0)).dot(x * p - feet.read(0).point), 0.0);
    }
    for (giXform3 const & x : {giXform3(), scaling(1.0, 0.0, 1.0)}) {
        sknSurfPtr copy;
        original.clone(copy);
        sknSurf::transform(copy, x);
        EXPECT_EQ(sknMeshBadXform, static_cast<sknMeshSurf &>(*copy).status());
        EXPECT_EQ(0, feet_of(*copy, p).size());
    }
}

TEST(MeshSurf, InterpolatesNormals) {
    mesh m = sphere(40, 30);
    giUnitVec3coDynArr radial, wrong = {giUnitVec3(giAxisX)};
    for (int i = 0; i < m.vertices.size(); ++i) radial.append(giUnitVec3(m.vertices.read(i).release()));
    // Some go round the other way; the mean takes them the right way and they keep their sides.
    for (int t = 0; t < m.triangles.size(); t += 7) std::swap(m.triangles[t].a, m.triangles[t].b);
    sknMeshSurf surface = m.surface();
    EXPECT_EQ(0, surface.use_vertex_normals(wrong));
    auto const worst = [&](giXform3 const & inverse, sknSurf const & of) {
        double tilt = 0.0;
        for (int i = 0; i < 300; ++i) {
            sknSurfPointList const feet =
                feet_of(of, giXform3(giXformInverse, inverse) * giPoint3(std::cos(i), std::sin(i), std::cos(2.0 * i)));
            // The normal of the ellipsoid |A q| = 1 is that of its quadric, A' A q.
            giVector3 const q = inverse * (inverse * feet.read(0).point).release();
            tilt = std::max(tilt, normal_of(of, feet.read(0)).cross(giUnitVec3(q)).length().value());
        }
        return tilt;
    };
    giXform3 const unity = scaling(1.0, 1.0, 1.0), flatter = scaling(-1.0, 1.0, 2.0);
    EXPECT_GT(worst(unity, surface), 0.05);  // the flat facets' normals; half a facet is 0.08 wide
    EXPECT_EQ(1, surface.use_vertex_normals());
    EXPECT_LT(worst(unity, surface), 0.012);
    EXPECT_EQ(1, surface.use_vertex_normals(radial));
    EXPECT_LT(worst(unity, surface), 2e-3);
    sknSurfPtr copy;
    surface.clone(copy);
    sknSurf::transform(copy, giXform3(giXformInverse, flatter));
    EXPECT_LT(worst(flatter, *copy), 1e-2);
    surface.use_face_normals();
    EXPECT_GT(worst(unity, surface), 0.05);
    // Means end at creases.
    sknMeshSurf solid = box(1.0, 1.0, 1.0).surface();
    EXPECT_EQ(1, solid.use_vertex_normals());
    EXPECT_EQ(1.0, normal_of(solid, feet_of(solid, giPoint3(0.3, 0.2, 1.1)).read(0)).z());
    EXPECT_EQ(1, solid.set_crease_angle(giAngle(giAngleDegrees, 91.0)));
    EXPECT_LT(normal_of(solid, feet_of(solid, giPoint3(0.3, 0.2, 1.1)).read(0)).z(), 0.95);
}
