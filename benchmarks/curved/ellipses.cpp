#include <benchmarks/support/noisy_points.h>
#include <benchmarks/support/time_fit.h>
#include <datumfit/curved/ellipse/random_ellipses.h>
#include <datumfit/datumfit.h>

namespace datumfit::benchmarks {
namespace {

using namespace datumfit::internal;

constexpr double flattened = 0.6;

// A noisy circle made flat along one axis of its own, in general position.
giPoint2coDynArr noisy_ellipse2(int n) {
    giPoint2coDynArr points = noisy_circle2(n);
    giPoint2 const centre(311.7, -142.3);
    giUnitVec2 const along(0.8, 0.6);
    giVector2 const & u = along;
    for (int i = 0; i < n; ++i) {
        giVector2 const r = points[i] - centre;
        points[i] = centre + (r.dot(u) * u + flattened * u.cross(r) * u.orthogonal());
    }
    return points;
}

void BM_evaluate_ellipse(benchmark::State & state) {
    giPoint2coDynArr const points = noisy_ellipse2(n_points(state));
    giPoint2 centre;
    double major, minor, angle;
    time_fit(state, [&](double & deviation) {
        return sqLeastSquareEvaluator::evaluate_ellipse(points, centre, major, minor, angle, deviation);
    });
}
BENCHMARK(BM_evaluate_ellipse)->Apply(search_sizes);

// One batch of a hundred random starts, and how many of them had to be scored.
void BM_random_ellipses(benchmark::State & state) {
    giPoint2coDynArr const points = noisy_ellipse2(n_points(state));
    sqLeastSquareEllipse problem(points);
    random_ellipses starts(problem, points);
    mlVector best(mlVectorZero, problem.n_parameters());
    for (auto _ : state) starts.best_of_next_batch(best);
    using benchmark::Counter;
    state.counters["scored"] = Counter(static_cast<double>(starts.scored()), Counter::kAvgIterations);
}
BENCHMARK(BM_random_ellipses)->Apply(search_sizes);

// One pass over all points for their distances from an ellipse that is off by a tenth.
void BM_ellipse_pass(benchmark::State & state) {
    giPoint2coDynArr const points = noisy_ellipse2(n_points(state));
    sqLeastSquareEllipse problem(points);
    double const near[] = {36.0, 27.0, 313.0, -140.0, 0.7};
    mlVector p(utConvert, near, 5);
    for (auto _ : state) benchmark::DoNotOptimize(problem.score(p, utMath::max_double()));
    count_time_per("per_point", state, static_cast<double>(points.size()));
}
BENCHMARK(BM_ellipse_pass)->Apply(search_sizes);

}  // namespace
}  // namespace datumfit::benchmarks
