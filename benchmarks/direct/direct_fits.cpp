#include <benchmarks/support/noisy_points.h>
#include <benchmarks/support/time_fit.h>
#include <datumfit/datumfit.h>

namespace datumfit::benchmarks {
namespace {

template <class Fit, class Points>
void time_direct_fit(benchmark::State & state, Points const & points) {
    for (auto _ : state) {
        Fit const fit(points);
        benchmark::DoNotOptimize(fit);
    }
    count_time_per("per_point", state, static_cast<double>(points.size()));
    state.counters["chi"] = Fit(points).chi();
}

void BM_direct_circle2(benchmark::State & state) {
    time_direct_fit<sqDirectCircle2>(state, noisy_circle2(n_points(state)));
}
BENCHMARK(BM_direct_circle2)->Apply(plain_sizes);

void BM_direct_circle3(benchmark::State & state) {
    time_direct_fit<sqDirectCircle3>(state, noisy_circle3(n_points(state)));
}
BENCHMARK(BM_direct_circle3)->Apply(plain_sizes);

// Near the origin and half as high as wide, so that an ellipse is found.
void BM_direct_ellipse2(benchmark::State & state) {
    giPoint2coDynArr points = noisy_circle2(n_points(state));
    for (int i = 0; i < points.size(); ++i) {
        points[i] = giPoint2(points[i].x() - 300.0, 0.5 * (points[i].y() + 140.0));
    }
    time_direct_fit<sqDirectEllipse2>(state, points);
}
BENCHMARK(BM_direct_ellipse2)->Apply(plain_sizes);

void BM_direct_ellipse3(benchmark::State & state) {
    time_direct_fit<sqDirectEllipse3>(state, noisy_circle3(n_points(state)));
}
BENCHMARK(BM_direct_ellipse3)->Apply(plain_sizes);

void BM_direct_sphere(benchmark::State & state) {
    time_direct_fit<sqSphereFit>(state, noisy_sphere(n_points(state)));
}
BENCHMARK(BM_direct_sphere)->Apply(plain_sizes);

}  // namespace
}  // namespace datumfit::benchmarks
