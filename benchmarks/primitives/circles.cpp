#include <benchmarks/support/noisy_points.h>
#include <benchmarks/support/time_fit.h>
#include <datumfit/datumfit.h>

namespace datumfit::benchmarks {
namespace {

void BM_evaluate_circle(benchmark::State & state) {
    giPoint2coDynArr const points = noisy_circle2(n_points(state));
    giPoint2 centre;
    double radius = 0.0;
    time_fit(state, [&](double & deviation) {
        return sqLeastSquareEvaluator::evaluate_circle(points, centre, radius, deviation);
    });
}
BENCHMARK(BM_evaluate_circle)->Apply(plain_sizes);

void BM_evaluate_probed_circle(benchmark::State & state) {
    giPoint2coDynArr const points = noisy_circle2(n_points(state));
    doublecoDynArr const radii = probe_radii(points.size());
    giPoint2 centre;
    double radius = 0.0;
    time_fit(state, [&](double & deviation) {
        return sqLeastSquareEvaluator::evaluate_probed_circle(points, radii, 1, centre, radius, deviation);
    });
}
BENCHMARK(BM_evaluate_probed_circle)->Apply(multi_start_sizes);

void BM_evaluate_circle2(benchmark::State & state) {
    Frame const plane = general_frame();
    giPoint3coDynArr const points = noisy_circle3(n_points(state));
    giPoint3 centre;
    double radius = 0.0;
    time_fit(state, [&](double & deviation) {
        return sqLeastSquareEvaluator::evaluate_circle2(plane.origin, plane.normal, points, centre, radius, deviation);
    });
}
BENCHMARK(BM_evaluate_circle2)->Apply(plain_sizes);

// Above 10,000 points the fit works on a sample of that many.
void BM_evaluate_circle3(benchmark::State & state) {
    giPoint3coDynArr const points = noisy_circle3(n_points(state));
    giPoint3 centre;
    giUnitVec3 normal;
    double radius = 0.0;
    time_fit(state, [&](double & deviation) {
        return sqLeastSquareEvaluator::evaluate_circle3(points, centre, normal, radius, deviation);
    });
}
BENCHMARK(BM_evaluate_circle3)->Apply(plain_sizes);

}  // namespace
}  // namespace datumfit::benchmarks
