#include <benchmarks/support/noisy_points.h>
#include <benchmarks/support/time_fit.h>
#include <datumfit/foundation/surfaces/cone_surf.h>
#include <datumfit/foundation/surfaces/cylinder_surf.h>
#include <datumfit/foundation/surfaces/plane_surf.h>
#include <datumfit/foundation/surfaces/sphere_surf.h>
#include <datumfit/foundation/surfaces/torus_surf.h>

#include <algorithm>

namespace datumfit::benchmarks {
namespace {

enum shape { plane, sphere, cylinder, cone, torus };
constexpr double size = 10.0;

sknSurfPtr make_surface(shape kind) {
    Frame const frame = general_frame();
    giAngle const half_angle(giAngleRadians, 0.35);
    if (kind == plane) return new sknPlaneSurf(giPlane(frame.normal, frame.origin));
    if (kind == sphere) return new sknSphereSurf(frame.origin, size);
    if (kind == cylinder) return new sknCylinderSurf(frame.origin, frame.normal, size);
    if (kind == cone) return new sknConeSurf(frame.origin + 3.0 * size * frame.normal, frame.normal, half_angle);
    return new sknTorusSurf(frame.origin, frame.normal, size, 0.3 * size);
}

// Points a little off the surface, all over it: feet of points anywhere, moved along the normal.
giPoint3coDynArr points_near(sknSurf const & surface) {
    constexpr int n = 1000;
    giPoint3coDynArr points(n, 1);
    mlRandom random(1);
    sknSurfPointList feet(16, 16);
    while (points.size() < n) {
        giVector3 const off(random.minus_one_one(), random.minus_one_one(), random.minus_one_one());
        int status = 0;
        feet.clear(0);
        surface.project_point(general_frame().origin + 2.0 * size * off, feet, status);
        if (status != 0) continue;
        giUnitVec3 const normal = surface.normal_at(feet[0], 0.0, giAngle());
        points.append(feet[0].point + form_error * size * random.minus_one_one() * normal);
    }
    return points;
}

// The second argument is the scale along the x axis, in percent.
void BM_project_to_surface(benchmark::State & state) {
    sknSurfPtr surface = make_surface(static_cast<shape>(state.range(0)));
    double const scale = 0.01 * static_cast<double>(state.range(1));
    if (scale != 1.0) sknSurf::transform(surface, giXform3(giXformScale, scale, 1.0, 1.0));
    giPoint3coDynArr const points = points_near(*surface);
    sknSurfPointList feet(16, 16);
    int status = 0;
    double farthest = 0.0;
    for (auto _ : state) {
        for (int i = 0; i < points.size(); ++i) {
            feet.clear(0);
            (*surface).project_point(points[i], feet, status);
            farthest = std::max(farthest, distance(points[i], feet[0].point).value());
        }
    }
    count_time_per("per_point", state, points.size());
    state.counters["farthest"] = farthest;
}
BENCHMARK(BM_project_to_surface)
    ->ArgNames({"shape", "percent"})
    ->ArgsProduct({{plane, sphere, cylinder, cone, torus}, {100, 103, 130}});

void BM_normal_at_surface(benchmark::State & state) {
    sknSurfPtr const surface = make_surface(static_cast<shape>(state.range(0)));
    giPoint3coDynArr const points = points_near(*surface);
    sknSurfPointList feet(points.size(), 16);
    int status = 0;
    for (int i = 0; i < points.size(); ++i) (*surface).project_point(points[i], feet, status);
    giAngle const tolerance(giAngleRadians, 1e-5);
    for (auto _ : state) {
        for (int i = 0; i < feet.size(); ++i) {
            benchmark::DoNotOptimize((*surface).normal_at(feet.read(i), 1e-5, tolerance).x());
        }
    }
    count_time_per("per_foot", state, feet.size());
}
BENCHMARK(BM_normal_at_surface)->DenseRange(plane, torus);

}  // namespace
}  // namespace datumfit::benchmarks
