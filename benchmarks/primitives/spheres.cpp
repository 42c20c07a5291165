#include <benchmarks/support/noisy_points.h>
#include <benchmarks/support/time_fit.h>
#include <datumfit/datumfit.h>

namespace datumfit::benchmarks {
namespace {

void BM_evaluate_sphere(benchmark::State & state) {
    giPoint3coDynArr const points = noisy_sphere(n_points(state));
    giPoint3 centre;
    double radius = 0.0;
    time_fit(state, [&](double & deviation) {
        return sqLeastSquareEvaluator::evaluate_sphere(points, centre, radius, deviation);
    });
}
BENCHMARK(BM_evaluate_sphere)->Apply(plain_sizes);

void BM_evaluate_probed_sphere(benchmark::State & state) {
    giPoint3coDynArr const points = noisy_sphere(n_points(state));
    doublecoDynArr const radii = probe_radii(points.size());
    giPoint3 centre;
    double radius = 0.0;
    time_fit(state, [&](double & deviation) {
        return sqLeastSquareEvaluator::evaluate_probed_sphere(points, radii, 1, centre, radius, deviation);
    });
}
BENCHMARK(BM_evaluate_probed_sphere)->Apply(multi_start_sizes);

}  // namespace
}  // namespace datumfit::benchmarks
