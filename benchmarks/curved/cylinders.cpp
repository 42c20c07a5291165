#include <benchmarks/support/noisy_points.h>
#include <benchmarks/support/time_fit.h>
#include <datumfit/curved/cylinder/cylinder_search.h>
#include <datumfit/datumfit.h>

namespace datumfit::benchmarks {
namespace {

using namespace datumfit::internal;

giUnitVec3 const no_direction;
giAngle const limit(giAngleDegrees, 10.0);

void BM_evaluate_cylinder(benchmark::State & state) {
    giPoint3coDynArr const points = noisy_cylinder(n_points(state));
    giPoint3 point;
    giUnitVec3 axis;
    double radius = 0.0;
    time_fit(state, [&](double & deviation) {
        return sqLeastSquareEvaluator::evaluate_cylinder(points, point, axis, radius, deviation, no_direction, limit,
                                                         0);
    });
}
BENCHMARK(BM_evaluate_cylinder)->Apply(search_sizes);

void BM_evaluate_probed_cylinder(benchmark::State & state) {
    giPoint3coDynArr const points = noisy_cylinder(n_points(state));
    doublecoDynArr const radii = probe_radii(points.size());
    giPoint3 point;
    giUnitVec3 axis;
    double radius = 0.0;
    time_fit(state, [&](double & deviation) {
        return sqLeastSquareEvaluator::evaluate_probed_cylinder(points, radii, 1, point, axis, radius, deviation,
                                                                no_direction, limit, 0);
    });
}
BENCHMARK(BM_evaluate_probed_cylinder)->Apply(search_sizes);

// A tenth of the points are new.
void BM_continue_cylinder(benchmark::State & state) {
    giPoint3coDynArr const points = noisy_cylinder(n_points(state));
    int const n_new = points.size() / 10;
    giPoint3coDynArr earlier(utCopy, points);
    earlier.shrink(points.size() - n_new, 0);
    giPoint3 point;
    giUnitVec3 axis;
    double radius = 0.0, before;
    sqLeastSquareEvaluator::evaluate_cylinder(earlier, point, axis, radius, before, no_direction, limit, 0);
    time_fit(state, [&](double & deviation) {
        giPoint3 p = point;
        giUnitVec3 a = axis;
        double r = radius;
        return sqLeastSquareEvaluator::evaluate_cylinder(points, p, a, r, deviation, no_direction, limit, n_new);
    });
}
BENCHMARK(BM_continue_cylinder)->Apply(search_sizes);

// The search as such, with and without the bounds that spare it circle fits; what it found is the same.
void time_search(benchmark::State & state, bool bounded) {
    giPoint3coDynArr const points = noisy_cylinder(n_points(state));
    giUnitVec3coDynArr const no_normals;
    search_counts counts;
    double square = 0.0;
    for (auto _ : state) {
        sqLeastSquareCylinder problem(points);
        square = cylinder_search(problem, {points, nullptr, 0, bounded, &counts}, no_direction, limit, no_normals)
                     .run()
                     .square;
    }
    using benchmark::Counter;
    state.counters["mean_square"] = square;
    state.counters["bounds"] = Counter(static_cast<double>(counts.bounds), Counter::kAvgIterations);
    state.counters["circle_fits"] = Counter(static_cast<double>(counts.circle_fits), Counter::kAvgIterations);
    state.counters["solver_runs"] = Counter(static_cast<double>(counts.solver_runs), Counter::kAvgIterations);
}
void BM_search_cylinder(benchmark::State & state) {
    time_search(state, true);
}
void BM_search_cylinder_unbounded(benchmark::State & state) {
    time_search(state, false);
}
BENCHMARK(BM_search_cylinder)->Apply(search_sizes);
BENCHMARK(BM_search_cylinder_unbounded)->Apply(search_sizes);

// The parts of a search: what is known of a direction beforehand, the circle along it, and one run of the solver from
// a start that is off by a tenth.
void BM_circle_bound(benchmark::State & state) {
    giPoint3coDynArr const points = noisy_cylinder(n_points(state));
    circles_along_axes const circles({points});
    giUnitVec3 const axis(0.3, -0.5, 0.8);
    for (auto _ : state) benchmark::DoNotOptimize(circles.bound(axis));
}
BENCHMARK(BM_circle_bound)->Arg(1000);

void BM_circle_along_axis(benchmark::State & state) {
    giPoint3coDynArr const points = noisy_cylinder(n_points(state));
    circles_along_axes circles({points});
    giUnitVec3 const axis(0.3, -0.5, 0.8);
    for (auto _ : state) benchmark::DoNotOptimize(circles.fit(axis));
    count_time_per("per_point", state, static_cast<double>(points.size()));
}
BENCHMARK(BM_circle_along_axis)->Apply(search_sizes);

// How many iterations the solver needs: the least limit that changes nothing.
int iterations_needed(sqLeastSquareCylinder & problem, mlVector const & start) {
    mlVector found, limited;
    double const square = mlLevenbergMarquardt(problem).fit(start, found);
    for (int k = 1;; ++k) {
        mlLevenbergMarquardt solver(problem);
        solver.set_max_iterations(k);
        if (solver.fit(start, limited) == square && std::equal(found.data(), found.data() + 7, limited.data()))
            return k;
    }
}

void BM_solve_cylinder(benchmark::State & state) {
    giPoint3coDynArr const points = noisy_cylinder(n_points(state));
    sqLeastSquareCylinder problem(points);
    mlLevenbergMarquardt solver(problem);
    Frame const frame = general_frame();
    giPoint3 const near = frame.origin + giVector3(3.0, -2.0, 4.0);
    mlVector const start = cylinder_parameters(near, giVector3(0.4, -0.4, 0.8), 36.0);
    mlVector result;
    for (auto _ : state) benchmark::DoNotOptimize(solver.fit(start, result));
    double const n = static_cast<double>(points.size());
    int const iterations = iterations_needed(problem, start);
    state.counters["iterations"] = iterations;
    count_time_per("per_point_and_pass", state, n * (iterations + 1));
}
BENCHMARK(BM_solve_cylinder)->Apply(search_sizes);

}  // namespace
}  // namespace datumfit::benchmarks
