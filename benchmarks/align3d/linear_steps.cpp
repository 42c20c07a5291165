#include <benchmarks/support/noisy_points.h>
#include <benchmarks/support/time_fit.h>
#include <datumfit/align3d/points_to_planes/points_to_planes.h>
#include <datumfit/datumfit.h>

#include <algorithm>
#include <cfloat>
#include <cmath>

// Steps of the engine of points to planes, free and under locks, each without bands and with a thousand, of which few
// are active. To be read against a bare pass over the memory of the records.
namespace datumfit::benchmarks {
namespace {

enum form { free_form, locked_axis, locked_point, translates };

void sizes(benchmark::internal::Benchmark * b) {
    for (int const n : {100, 1000, 10000, 100000}) b->Arg(n);
}

// A noisy sphere, slightly out of place, and the planes that touch its nominal.
sqPlaneAndPointcoDynArr records(int n) {
    giPoint3coDynArr const points = noisy_sphere(n);
    giPoint3 centre;
    double radius = 1.0, deviation;
    sqLeastSquareEvaluator::evaluate_sphere(points, centre, radius, deviation);
    giVector3 const out_of_place(0.01, -0.02, 0.015);
    sqPlaneAndPointcoDynArr result(n, 1);
    for (int i = 0; i < n; ++i) {
        giUnitVec3 const normal(points[i] - centre);
        result.append(sqPlaneAndPoint(points[i] + out_of_place, centre + radius * normal, normal, 1, -DBL_MAX, DBL_MAX,
                                      1.0 + 0.5 * (i % 3)));
    }
    return result;
}

void fill(sqPointsToPlanes & engine, form f, int n, int bands, bool equal_weights) {
    sqPlaneAndPointcoDynArr const from = records(n);
    int const every = bands > 0 ? std::max(1, n / bands) : n + 1;
    engine.reserve_bestfit(n);
    for (int i = 0; i < n; ++i) {
        sqPlaneAndPoint const & r = from[i];
        double const weight = equal_weights ? 1.0 : r.weight, width = i % every == 0 ? 0.045 : DBL_MAX;
        engine.add_bestfit(r.point, r.plane_point, giUnitVec3(r.normal), -width, width, weight);
    }
    giUnitVec3 const axis(1.0, 2.0, 3.0);
    if (f == locked_axis) engine.lock_direction(axis, axis, 0);
    if (f == locked_point) engine.add_positioning(giPoint3(giOrigin), giPoint3(giOrigin), axis, 1);
    if (f == translates) engine.lock_rotations(giAxisX, giAxisY, giAxisZ);
}

void BM_linear_step(benchmark::State & state, form f, int bands, bool equal_weights) {
    sqPointsToPlanes engine;
    fill(engine, f, n_points(state), bands, equal_weights);
    giXform3 step;
    for (auto _ : state) {
        if (engine.single_linear_step(step) != 1) state.SkipWithError("no step");
        benchmark::DoNotOptimize(step);
    }
    count_time_per("per_record", state, static_cast<double>(state.range(0)));
    state.counters["given_up"] = engine.overdetermined_constraints().size();
    state.counters["left"] = std::sqrt(engine.best_fit_deviation_with_transform(step) / n_points(state));
}
BENCHMARK_CAPTURE(BM_linear_step, free, free_form, 0, true)->Apply(sizes);
BENCHMARK_CAPTURE(BM_linear_step, axis, locked_axis, 0, true)->Apply(sizes);
BENCHMARK_CAPTURE(BM_linear_step, point, locked_point, 0, true)->Apply(sizes);
BENCHMARK_CAPTURE(BM_linear_step, translates, translates, 0, true)->Apply(sizes);
BENCHMARK_CAPTURE(BM_linear_step, free_banded, free_form, 1000, true)->Apply(sizes);
BENCHMARK_CAPTURE(BM_linear_step, free_banded_by_weight, free_form, 1000, false)->Apply(sizes);
BENCHMARK_CAPTURE(BM_linear_step, axis_banded, locked_axis, 1000, true)->Apply(sizes);
BENCHMARK_CAPTURE(BM_linear_step, translates_banded, translates, 1000, true)->Apply(sizes);

// The records read once.
void BM_bare_read_of_records(benchmark::State & state) {
    sqPlaneAndPointcoDynArr const from = records(n_points(state));
    for (auto _ : state) {
        double sum = 0.0;
        for (int i = 0; i < from.size(); ++i) sum += from[i].point.x() + from[i].normal.y() + from[i].plane_point.z();
        benchmark::DoNotOptimize(sum);
    }
    count_time_per("per_record", state, static_cast<double>(state.range(0)));
}
BENCHMARK(BM_bare_read_of_records)->Apply(sizes);

}  // namespace
}  // namespace datumfit::benchmarks
