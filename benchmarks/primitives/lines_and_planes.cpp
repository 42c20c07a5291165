#include <benchmarks/support/noisy_points.h>
#include <benchmarks/support/time_fit.h>
#include <datumfit/datumfit.h>

namespace datumfit::benchmarks {
namespace {

void BM_evaluate_line(benchmark::State & state) {
    giPoint2coDynArr const points = noisy_line2(n_points(state));
    giPoint2 point;
    giUnitVec2 direction;
    time_fit(state, [&](double & deviation) {
        return sqLeastSquareEvaluator::evaluate_line(points, point, direction, deviation);
    });
}
BENCHMARK(BM_evaluate_line)->Apply(plain_sizes);

void BM_evaluate_line2(benchmark::State & state) {
    Frame const plane = general_frame();
    giPoint3coDynArr const points = noisy_line3(n_points(state));
    giPoint3 point;
    giUnitVec3 direction;
    time_fit(state, [&](double & deviation) {
        return sqLeastSquareEvaluator::evaluate_line2(plane.origin, plane.normal, points, point, direction, deviation);
    });
}
BENCHMARK(BM_evaluate_line2)->Apply(plain_sizes);

void BM_evaluate_line3(benchmark::State & state) {
    giPoint3coDynArr const points = noisy_line3(n_points(state));
    giPoint3 point;
    giUnitVec3 direction;
    time_fit(state, [&](double & deviation) {
        return sqLeastSquareEvaluator::evaluate_line3(points, point, direction, deviation);
    });
}
BENCHMARK(BM_evaluate_line3)->Apply(plain_sizes);

void BM_evaluate_plane(benchmark::State & state) {
    giPoint3coDynArr const points = noisy_plane(n_points(state));
    giPoint3 point;
    giUnitVec3 normal;
    time_fit(state, [&](double & deviation) {
        return sqLeastSquareEvaluator::evaluate_plane(points, point, normal, deviation);
    });
}
BENCHMARK(BM_evaluate_plane)->Apply(plain_sizes);

// Without approximate normals both sides are tried, the longer way.
void BM_evaluate_probed_line2(benchmark::State & state) {
    giPoint2coDynArr const points = noisy_line2(n_points(state));
    doublecoDynArr const radii = probe_radii(points.size());
    giUnitVec2coDynArr const no_normals;
    giPoint2 point;
    giUnitVec2 normal;
    time_fit(state, [&](double & deviation) {
        return sqLeastSquareEvaluator::evaluate_probed_line2(points, radii, no_normals, point, normal, deviation);
    });
}
BENCHMARK(BM_evaluate_probed_line2)->Apply(multi_start_sizes);

void BM_evaluate_probed_plane(benchmark::State & state) {
    giPoint3coDynArr const points = noisy_plane(n_points(state));
    doublecoDynArr const radii = probe_radii(points.size());
    giUnitVec3coDynArr const no_normals;
    giPoint3 point;
    giUnitVec3 normal;
    time_fit(state, [&](double & deviation) {
        return sqLeastSquareEvaluator::evaluate_probed_plane(points, radii, no_normals, point, normal, deviation);
    });
}
BENCHMARK(BM_evaluate_probed_plane)->Apply(multi_start_sizes);

}  // namespace
}  // namespace datumfit::benchmarks
