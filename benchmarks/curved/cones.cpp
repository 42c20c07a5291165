#include <benchmarks/support/noisy_points.h>
#include <benchmarks/support/time_fit.h>
#include <datumfit/datumfit.h>

namespace datumfit::benchmarks {
namespace {

giUnitVec3 const no_direction;
giAngle const limit(giAngleDegrees, 10.0);

void BM_evaluate_cone(benchmark::State & state) {
    giPoint3coDynArr const points = noisy_cone(n_points(state));
    giPoint3 apex;
    giUnitVec3 axis;
    double half_angle = 0.0;
    time_fit(state, [&](double & deviation) {
        return sqLeastSquareEvaluator::evaluate_cone(points, apex, axis, half_angle, deviation, no_direction, limit, 0);
    });
}
BENCHMARK(BM_evaluate_cone)->Apply(search_sizes);

void BM_evaluate_probed_cone(benchmark::State & state) {
    giPoint3coDynArr const points = noisy_cone(n_points(state));
    doublecoDynArr const radii = probe_radii(points.size());
    giPoint3 apex;
    giUnitVec3 axis;
    double half_angle = 0.0;
    time_fit(state, [&](double & deviation) {
        return sqLeastSquareEvaluator::evaluate_probed_cone(points, radii, 1, points, apex, axis, half_angle, deviation,
                                                            no_direction, limit, 0);
    });
}
BENCHMARK(BM_evaluate_probed_cone)->Apply(search_sizes);

// A tenth of the points are new.
void BM_continue_cone(benchmark::State & state) {
    giPoint3coDynArr const points = noisy_cone(n_points(state));
    int const n_new = points.size() / 10;
    giPoint3coDynArr earlier(utCopy, points);
    earlier.shrink(points.size() - n_new, 0);
    giPoint3 apex;
    giUnitVec3 axis;
    double half_angle = 0.0, before;
    sqLeastSquareEvaluator::evaluate_cone(earlier, apex, axis, half_angle, before, no_direction, limit, 0);
    time_fit(state, [&](double & deviation) {
        giPoint3 p = apex;
        giUnitVec3 a = axis;
        double h = half_angle;
        return sqLeastSquareEvaluator::evaluate_cone(points, p, a, h, deviation, no_direction, limit, n_new);
    });
}
BENCHMARK(BM_continue_cone)->Apply(search_sizes);

// The guesses of which a search is made.
template <class Guess>
void time_guess(benchmark::State & state, Guess guess) {
    giPoint3coDynArr const points = noisy_cone(n_points(state));
    mlVector start(mlVectorZero, 8);
    for (auto _ : state) {
        sqConeGuessGenerator generator(points, no_direction, limit, giUnitVec3coDynArr());
        benchmark::DoNotOptimize((generator.*guess)(start));
    }
    count_time_per("per_point", state, static_cast<double>(points.size()));
}
void BM_guess_flat_cone(benchmark::State & state) {
    time_guess(state, &sqConeGuessGenerator::get_guess_flat);
}
void BM_guess_cones_of_200_axes(benchmark::State & state) {
    time_guess(state, &sqConeGuessGenerator::get_guess_fixed_axis_fit);
}
BENCHMARK(BM_guess_flat_cone)->Apply(search_sizes);
BENCHMARK(BM_guess_cones_of_200_axes)->Apply(search_sizes);

}  // namespace
}  // namespace datumfit::benchmarks
