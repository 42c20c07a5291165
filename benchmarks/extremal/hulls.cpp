#include <benchmarks/support/time_fit.h>
#include <datumfit/datumfit.h>

#include <cmath>
#include <random>

namespace datumfit::benchmarks {
namespace {

// Points of a disc, or of its rim when it is hollow.
giPoint2coDynArr disc(int n, bool hollow) {
    std::mt19937_64 engine(20240229);
    auto const uniform = [&] { return static_cast<double>(engine() >> 11) * 0x1p-53; };
    giPoint2coDynArr points(n, 1);
    for (int i = 0; i < n; ++i) {
        double const turn = 2.0 * utMath::pi() * uniform(), radius = hollow ? 40.0 : 40.0 * std::sqrt(uniform());
        points.append(giPoint2(311.7 + radius * std::cos(turn), -142.3 + radius * std::sin(turn)));
    }
    return points;
}

template <class Result>
void time_hull(benchmark::State & state, bool hollow) {
    giPoint2coDynArr const points = disc(n_points(state), hollow);
    int corners = 0;
    for (auto _ : state) {
        Result hull;
        sq_calculate_convex_hull(points, hull);
        corners = hull.size();
        benchmark::DoNotOptimize(hull);
    }
    count_time_per("per_point", state, static_cast<double>(points.size()));
    state.counters["corners"] = corners;
}

void BM_hull_of_disc(benchmark::State & state) {
    time_hull<giPoint2coDynArr>(state, false);
}
BENCHMARK(BM_hull_of_disc)->Apply(plain_sizes);

void BM_hull_of_rim(benchmark::State & state) {
    time_hull<giPoint2coDynArr>(state, true);
}
BENCHMARK(BM_hull_of_rim)->Apply(plain_sizes);

void BM_hull_indices_of_disc(benchmark::State & state) {
    time_hull<intcoDynArr>(state, false);
}
BENCHMARK(BM_hull_indices_of_disc)->Apply(plain_sizes);

void BM_closed_path_sort(benchmark::State & state) {
    giPoint2coDynArr const points = disc(n_points(state), false);
    for (auto _ : state) {
        giPoint2coDynArr path(points);
        sqCompareForSimplestClosedPath(giPoint2(311.7, -200.0)).sort(path.data(), path.size());
        benchmark::DoNotOptimize(path);
    }
    count_time_per("per_point", state, static_cast<double>(points.size()));
}
BENCHMARK(BM_closed_path_sort)->Apply(plain_sizes);

void BM_relative_position(benchmark::State & state) {
    giPoint2coDynArr polygon;
    sq_calculate_convex_hull(disc(n_points(state), true), polygon);
    giPoint2 const point(300.0, -150.0);
    for (auto _ : state) benchmark::DoNotOptimize(sq_relative_position(point, polygon));
    count_time_per("per_edge", state, static_cast<double>(polygon.size()));
}
BENCHMARK(BM_relative_position)->Apply(plain_sizes);

}  // namespace
}  // namespace datumfit::benchmarks
