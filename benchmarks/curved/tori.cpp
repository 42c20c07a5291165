#include <benchmarks/support/noisy_points.h>
#include <benchmarks/support/time_fit.h>
#include <datumfit/curved/torus/torus_kernel.h>
#include <datumfit/datumfit.h>
#include <datumfit/foundation/maths/linearisation.h>

namespace datumfit::benchmarks {
namespace {

using namespace datumfit::internal;

void BM_evaluate_torus(benchmark::State & state) {
    giPoint3coDynArr const points = noisy_torus(n_points(state));
    giPoint3 centre;
    giUnitVec3 axis;
    double major, minor;
    time_fit(state, [&](double & deviation) {
        return sqLeastSquareEvaluator::evaluate_torus(points, centre, axis, major, minor, deviation);
    });
}
BENCHMARK(BM_evaluate_torus)->Apply(search_sizes)->Unit(benchmark::kMillisecond);

void BM_evaluate_probed_torus(benchmark::State & state) {
    giPoint3coDynArr const points = noisy_torus(n_points(state));
    doublecoDynArr const radii = probe_radii(points.size());
    giPoint3 centre;
    giUnitVec3 axis;
    double major, minor;
    time_fit(state, [&](double & deviation) {
        return sqLeastSquareEvaluator::evaluate_probed_torus(points, radii, 1, centre, axis, major, minor, deviation);
    });
}
BENCHMARK(BM_evaluate_probed_torus)->Apply(search_sizes)->Unit(benchmark::kMillisecond);

// From a start that is off by a tenth.
void BM_evaluate_torus_with_guess(benchmark::State & state) {
    giPoint3coDynArr const points = noisy_torus(n_points(state));
    giPoint3 const near = general_frame().origin + giVector3(3.0, -2.0, 4.0);
    double major, minor;
    time_fit(state, [&](double & deviation) {
        giPoint3 centre = near;
        giUnitVec3 axis(0.4, -0.4, 0.8);
        return sqLeastSquareEvaluator::evaluate_torus_with_guess(points, centre, axis, major, minor, deviation);
    });
}
BENCHMARK(BM_evaluate_torus_with_guess)->Apply(search_sizes)->Unit(benchmark::kMillisecond);

// The parts of a search: one value of the objective, and one pass of the least-squares solver.
void BM_distance_from_torus(benchmark::State & state) {
    giPoint3coDynArr const points = noisy_torus(n_points(state));
    doublecoDynArr const no_radii;
    Frame const frame = general_frame();
    sqDistanceFromTorus const objective(points, no_radii, 1, frame.origin, frame.normal);
    double off[] = {0.3, -0.2, 0.01, 0.02};
    mlSlice const x(off, 0, 1, 4);
    for (auto _ : state) benchmark::DoNotOptimize(objective.function(x));
    count_time_per("per_point", state, static_cast<double>(points.size()));
}
BENCHMARK(BM_distance_from_torus)->Apply(search_sizes);

void BM_bare_pass_torus(benchmark::State & state) {
    giPoint3coDynArr const points = noisy_torus(n_points(state));
    doublecoDynArr const no_radii;
    auto const model = model_about_mean<torus_kernel<false>>(points, no_radii.data());
    linearisation pass(torus_kernel<false>::unknowns, points.size(), torus_kernel<false>::rows);
    triangular_factor factor(torus_kernel<false>::unknowns);
    Frame const frame = general_frame();
    giPoint3 const c = frame.origin;
    giVector3 const a = frame.normal;
    double const at[] = {c.x(), c.y(), c.z(), a.x(), a.y(), a.z(), 40.0, 12.0};
    mlVector const p(utConvert, at, 8);
    mlVector x(p);
    model->from_parameters(p, x);
    model->place(x);
    for (auto _ : state) {
        pass.run(*model, factor);
        benchmark::DoNotOptimize(factor);
    }
    count_time_per("per_point", state, static_cast<double>(points.size()));
}
BENCHMARK(BM_bare_pass_torus)->Apply(search_sizes);

}  // namespace
}  // namespace datumfit::benchmarks
