#include <benchmarks/support/time_fit.h>
#include <benchmarks/support/wavy_rod.h>
#include <datumfit/foundation/surfaces/mesh_surf.h>

#include <cmath>

namespace datumfit::benchmarks {
namespace {

void sizes(benchmark::internal::Benchmark * b) {
    for (int const n : {2000, 20000, 200000}) b->Arg(n);
}

// Points over the surface all over it, so that one projection finds little in the caches that the last has left.
giPoint3coDynArr make_points(double distance) {
    constexpr int n = 10000;
    giPoint3coDynArr points(n, 1);
    for (int i = 0; i < n; ++i) {
        double const u = 2.4 * i, v = 0.05 + 0.9 * std::fmod(0.618 * i, 1.0);
        giPoint3 const p = rod_with_waves(u, v);
        points.append(p + distance * giVector3(std::cos(u), std::sin(u), 0.2 * std::sin(7.0 * u)));
    }
    return points;
}

void BM_build_mesh(benchmark::State & state) {
    triangles const t = make_triangles(n_points(state));
    for (auto _ : state) {
        sknMeshSurf const mesh(t.vertices, t.corners);
        benchmark::DoNotOptimize(mesh.status());
    }
    count_time_per("per_triangle", state, t.corners.size());
}
BENCHMARK(BM_build_mesh)->Apply(sizes)->Unit(benchmark::kMillisecond);

void time_projection(benchmark::State & state, double distance) {
    triangles const t = make_triangles(n_points(state));
    sknMeshSurf const mesh(t.vertices, t.corners);
    giPoint3coDynArr const points = make_points(distance);
    sknSurfPointList feet(8, 64);
    double found = 0.0, passes = 0.0;
    for (auto _ : state) {
        for (int i = 0; i < points.size(); ++i) {
            int status = 0;
            feet.clear(0);
            mesh.project_point(points.read(i), feet, status);
            found += feet.size();
        }
        passes += points.size();
    }
    count_time_per("per_point", state, points.size());
    state.counters["feet"] = found / passes;
}

void BM_project_touching_point(benchmark::State & state) {
    time_projection(state, 1.5);
}
BENCHMARK(BM_project_touching_point)->Apply(sizes)->Unit(benchmark::kMillisecond);

void BM_project_near_point(benchmark::State & state) {
    time_projection(state, 15.0);
}
BENCHMARK(BM_project_near_point)->Apply(sizes)->Unit(benchmark::kMillisecond);

void BM_project_far_point(benchmark::State & state) {
    time_projection(state, 1500.0);
}
BENCHMARK(BM_project_far_point)->Apply(sizes)->Unit(benchmark::kMillisecond);

void BM_normal_at_foot(benchmark::State & state) {
    triangles const t = make_triangles(n_points(state));
    sknMeshSurf mesh(t.vertices, t.corners);
    sknSurfPointList feet(8, 64);
    int status = 0;
    giPoint3coDynArr const points = make_points(1.5);
    for (int i = 0; i < points.size(); ++i) mesh.project_point(points.read(i), feet, status);
    for (auto _ : state) {
        for (int i = 0; i < feet.size(); ++i) benchmark::DoNotOptimize(mesh.normal_at(feet.read(i), 0.0, giAngle()));
    }
    count_time_per("per_foot", state, feet.size());
}
BENCHMARK(BM_normal_at_foot)->Arg(200000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace datumfit::benchmarks
