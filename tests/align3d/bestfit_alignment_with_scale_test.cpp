#include <datumfit/datumfit.h>
#include <gtest/gtest.h>
#include <support/shapes.h>

#include <algorithm>
#include <cmath>
#include <memory>

namespace {

giPoint3 on_egg(int i, int n) {
    double const z = -1.0 + 2.0 * (i + 0.5) / n, r = std::sqrt(1.0 - z * z), t = 2.4 * i;
    return giPoint3(30.0 * r * std::cos(t), 22.0 * r * std::sin(t), 15.0 * z);
}

// An ellipsoid with its middle at the origin: as an analytic surface, and as triangles between its points.
sknSurfPtr egg() {
    sknSurfPtr surface(new sknSphereSurf(giPoint3(giOrigin), 1.0));
    sknSurf::transform(surface, giXform3(giXformScale, 30.0, 22.0, 15.0));
    return surface;
}
sknSurfPtr egg_mesh() {
    giPoint3coDynArr vertices(1, 64);
    sknTrianglecoDynArr triangles(1, 64);
    int const around = 24, rings = 11;
    for (int j = 0; j <= rings; ++j) {
        double const down = utMath::pi() * j / rings;
        for (int i = 0; i < around; ++i) {
            double const t = 2.0 * utMath::pi() * i / around, r = std::sin(down);
            vertices.append(giPoint3(30.0 * r * std::cos(t), 22.0 * r * std::sin(t), 15.0 * std::cos(down)));
        }
    }
    for (int k = 0; k < rings * around; ++k) {
        int const next = k % around == around - 1 ? k + 1 - around : k + 1;
        triangles.append({k, k + around, next + around});
        triangles.append({k, next + around, next});
    }
    return sknSurfPtr(new sknMeshSurf(vertices, triangles));
}

// Points that lie on the surface when it is scaled, as measured in a pose near their places.
struct measured_part {
    giXform3 pose =
        giXform3(giXformTranslate, giVector3(0.6, -0.4, 0.5))
            .postmultiply(giXform3(giXformRotate, giOrigin, general_direction(), giAngle(giAngleDegrees, 1.5)));
    giPoint3coPageArr points, rough_nominal, rough_measured;

    measured_part(sknSurf const & surface, double sx, double sy, int n = 200) {
        for (int i = 0; i < n; ++i) {
            sknSurfPointList feet;
            int status;
            surface.project_point(on_egg(i, n), feet, status);
            giPoint3 const & p = feet[0].point;
            points.append(pose * giPoint3(sx * p.x(), sy * p.y(), p.z()));
            if (i % 50 == 0) {
                rough_nominal.append(p);
                rough_measured.append(points[i]);
            }
        }
    }
    double distance_from(sknSurf const & surface, giXform3 const & x) const {
        double worst = 0.0;
        for (int i = 0; i < points.size(); ++i) {
            sknSurfPointList feet;
            int status;
            surface.project_point(x * points.read(i), feet, status);
            worst = std::max<double>(worst, feet[0].point.distance(x * points.read(i)));
        }
        return worst;
    }
};

struct alignment {
    giXform3 rough, total;
    double sx = -1.0, sy = -1.0;
    sknSurfPtr surface;

    alignment(sknSurfPtr nominal, measured_part const & part, int passes = 60, giXform3 start = giXform3(),
              int iterations = 40)
        : rough(start), surface(nominal) {
        sqBestfitAlignmentWithScale::get_alignment(surface, part.rough_nominal, part.rough_measured, part.points, 1e-9,
                                                   iterations, rough, total, sx, sy, passes);
    }
};

TEST(AlignmentWithScale, RecoversTheFactors) {
    for (bool const mesh : {false, true}) {
        sknSurfPtr const nominal = mesh ? egg_mesh() : egg();
        measured_part const part(*nominal, 0.95, 1.03);
        alignment const found(nominal, part);
        EXPECT_NEAR(found.sx, 0.95, 1e-6) << mesh;
        EXPECT_NEAR(found.sy, 1.03, 1e-6) << mesh;
        EXPECT_LT(part.distance_from(*found.surface, found.total), 2e-5) << mesh;
        EXPECT_GT(part.distance_from(*nominal, found.total), 0.5) << mesh;  // the caller's surface is as it was
    }
}

TEST(AlignmentWithScale, DoesNothingWithoutPasses) {
    sknSurfPtr const nominal = egg();
    measured_part const part(*nominal, 1.0, 1.0);
    for (int const passes : {0, 5}) {
        alignment const found(nominal, part, passes, giXform3(), 5 - passes);  // nor without iterations
        EXPECT_EQ(found.sx, 1.0);
        EXPECT_EQ(found.sy, 1.0);
        EXPECT_TRUE(equal(found.total, found.rough, 0.0));
        EXPECT_TRUE(equal(found.rough, giXform3(giXformInverse, part.pose), 1e-13));  // measured onto nominal
        EXPECT_EQ(found.surface.pointer(), nominal.pointer());
    }
    alignment const from_start(nominal, part, 0, giXformIdentity);
    EXPECT_TRUE(from_start.rough.identity());
}

TEST(AlignmentWithScale, KeepsFactorsWithinLimits) {
    for (double const scale : {0.4, 2.5}) {
        giPoint3coPageArr ball;
        for (int i = 0; i < 100; ++i) {
            giVector3 const p = sphere_cap(giOrigin, 10.0 * scale, utMath::pi(), 100)[i].release();
            ball.append(p.anchor());
            ball.append((-p).anchor());
        }
        sknSurfPtr nominal(new sknSphereSurf(giPoint3(giOrigin), 10.0));
        giXform3 rough(giXformIdentity), total;
        double sx, sy;
        sqBestfitAlignmentWithScale::get_alignment(nominal, {}, {}, ball, 1e-9, 5, rough, total, sx, sy, 1);
        EXPECT_EQ(sx, scale < 1.0 ? 0.7 : 1.3);
        EXPECT_EQ(sy, sx);
    }
}

// Points on a plane across x say nothing of x.
TEST(AlignmentWithScale, LeavesAFactorWithoutExtent) {
    sknSurfPtr const plane(new sknPlaneSurf(giPoint3(giOrigin), giAxisZ, giAxisY));
    measured_part part(*egg(), 1.0, 1.0);
    for (int i = 0; i < part.points.size(); ++i) {
        giPoint3 const p = part.points[i];
        part.points[i] = giPoint3(0.0, p.y(), p.z());
    }
    alignment const found(plane, part, 3, giXformIdentity);
    EXPECT_EQ(found.sx, 1.0);
}

// An object that counts how many of it there are.
class counted_object : public sqSurfaceForFitting {
public:
    counted_object(sknSurfPtr const & surface, int & alive) : sqSurfaceForFitting(surface), alive_(alive) { ++alive_; }
    ~counted_object() override { --alive_; }
    sqObjectForFitting * copy() const override {
        sknSurfPtr clone;
        (*get_surface()).clone(clone);
        return new counted_object(clone, alive_);
    }

private:
    int & alive_;
};

TEST(AlignmentWithScale, OwnsOneObjectAtATime) {
    for (double const scale : {1.0, 0.9}) {
        for (int const passes : {0, 1, 4}) {
            int alive = 0;
            sqObjectForFitting * object = new counted_object(egg(), alive);
            sqObjectForFitting * const first = object;
            measured_part const part(*egg(), scale, 1.0);
            giXform3 rough(giXformInverse, part.pose), total;
            double sx, sy;
            sqBestfitAlignmentWithScale::get_alignment(&object, {}, {}, part.points, 1e-9, 30, rough, total, sx, sy,
                                                       passes);
            EXPECT_EQ(alive, 1) << scale << " " << passes;
            bool const replaced = scale != 1.0 && passes > 0;
            if (replaced) {
                EXPECT_LT(sx, 1.0);
            } else if (passes == 0) {
                EXPECT_EQ(object, first);
            }
            delete object;
            EXPECT_EQ(alive, 0);
        }
    }
}

}  // namespace
