#include <benchmarks/support/noisy_points.h>
#include <benchmarks/support/time_fit.h>
#include <datumfit/align2d/chain_projector2.h>
#include <datumfit/align2d/curve_bestfit2.h>
#include <datumfit/align2d/points_to_lines.h>
#include <datumfit/align2d/probed_point2.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace datumfit::benchmarks {
namespace {

constexpr double unbounded = std::numeric_limits<double>::max();

void alignment_sizes(benchmark::internal::Benchmark * b) {
    for (int const n : {100, 10000, 100000}) b->Arg(n);
}

// The nominal part, about 80 across: a closed polyline with so many corners around a lobed round.
giPoint2 place_on_lobes(double t) {
    double const radius = 40.0 + 6.0 * std::cos(3.0 * t) + 3.0 * std::sin(2.0 * t);
    return giPoint2(311.7 + radius * std::cos(t), -142.3 + radius * std::sin(t));
}
sqChainProjector2 lobes(int corners) {
    giPoint2coDynArr vertices(corners, 1);
    for (int i = 0; i < corners; ++i) vertices.append(place_on_lobes(2.0 * utMath::pi() * i / corners));
    return sqChainProjector2(vertices, 1);
}

// Probe centres around it, with form errors, off their nominal places by a turn of 0.02 and a shift.
std::vector<sqProbedPoint2> probe_centres(int n) {
    constexpr double radius = 1.5;
    giPoint2coDynArr const errors = noisy_line2(n);
    giXform2 const away(giXformRotate, giPoint2(300.0, -150.0), giAngle(giAngleRadians, 0.02));
    std::vector<sqProbedPoint2> points;
    for (int i = 0; i < n; ++i) {
        double const t = 2.0 * utMath::pi() * (i + 0.3) / n, h = 1e-6;
        giUnitVec2 const out(-(place_on_lobes(t + h) - place_on_lobes(t - h)).orthogonal());
        double const error = 0.01 * std::sin(errors.read(i).x());
        points.emplace_back(away * (place_on_lobes(t) + (radius + error) * giVector2(out)), out, radius);
    }
    return points;
}

// An engine with the tangents at the feet of probe centres.
sqPointsToLines engine_for(int n, double band) {
    sqChainProjector2 const chain = lobes(1000);
    sqPointsToLines engine;
    engine.reserve_bestfit(n);
    for (sqProbedPoint2 const & point : probe_centres(n)) {
        sqProjectedPoint2 p;
        point.initial_projection(p, &chain);
        engine.add_bestfit(sqLineAndPoint(p.measured_point(), p.nominal_point(), p.nominal_normal()), -band, band, 1.0);
    }
    return engine;
}

void time_step(benchmark::State & state, sqPointsToLines & engine) {
    giXform2 step;
    for (auto _ : state) {
        engine.single_linear_step(step);
        benchmark::DoNotOptimize(step);
    }
    count_time_per("per_point", state, static_cast<double>(state.range(0)));
    state.counters["deviation"] = engine.best_fit_deviation_with_transform(step);
}

void BM_bare_signed_deviations(benchmark::State & state) {
    sqPointsToLines const engine = engine_for(n_points(state), unbounded);
    doublecoDynArr deviations;
    for (auto _ : state) {
        engine.signed_deviations(giXformIdentity, deviations);
        benchmark::DoNotOptimize(deviations.data());
    }
    count_time_per("per_point", state, static_cast<double>(state.range(0)));
}
BENCHMARK(BM_bare_signed_deviations)->Apply(alignment_sizes);

void BM_line_step(benchmark::State & state) {
    sqPointsToLines engine = engine_for(n_points(state), unbounded);
    time_step(state, engine);
}
BENCHMARK(BM_line_step)->Apply(alignment_sizes);

void BM_line_step_under_bands(benchmark::State & state) {
    sqPointsToLines engine = engine_for(n_points(state), 1.0);
    time_step(state, engine);
}
BENCHMARK(BM_line_step_under_bands)->Apply(alignment_sizes);

void BM_line_step_with_locked_point(benchmark::State & state) {
    sqPointsToLines engine = engine_for(n_points(state), unbounded);
    engine.lock_origin(giPoint2(300.0, -150.0), giPoint2(300.0, -150.0));
    time_step(state, engine);
}
BENCHMARK(BM_line_step_with_locked_point)->Apply(alignment_sizes);

void BM_line_step_with_locked_axis(benchmark::State & state) {
    sqPointsToLines engine = engine_for(n_points(state), unbounded);
    engine.lock_axis(giVector2(giAxisX), giVector2(1.0, -0.02));
    time_step(state, engine);
}
BENCHMARK(BM_line_step_with_locked_axis)->Apply(alignment_sizes);

void BM_fit_to_lines(benchmark::State & state) {
    sqPointsToLines engine = engine_for(n_points(state), unbounded);
    giXform2 transform;
    time_fit(state, [&](double & deviation) {
        deviation = engine.fit(transform, 1e-9);
        return 1;
    });
}
BENCHMARK(BM_fit_to_lines)->Apply(alignment_sizes);

// One projection to a chain of so many elements.
void BM_project_to_chain(benchmark::State & state) {
    sqChainProjector2 const chain = lobes(n_points(state));
    std::vector<sqProbedPoint2> const points = probe_centres(1000);
    sqProjectedPoint2 result;
    for (auto _ : state) {
        for (sqProbedPoint2 const & point : points) {
            point.project_from_position(giXformIdentity, result, &chain);
            benchmark::DoNotOptimize(result);
        }
    }
    count_time_per("per_point", state, static_cast<double>(points.size()));
}
BENCHMARK(BM_project_to_chain)->Apply(alignment_sizes);

// Whole fits to a chain of 1000 elements.
void BM_curve_bestfit(benchmark::State & state) {
    sqChainProjector2 const chain = lobes(1000);
    std::vector<sqProbedPoint2> points = probe_centres(n_points(state));
    time_fit(state, [&](double & deviation) {
        sqCurveBestfit2 alignment;
        alignment.set_projector(&chain);
        alignment.reserve_points(n_points(state));
        for (sqProbedPoint2 & point : points) alignment.add_point(sqFitPoint2coPrf(coPrfExtern, &point));
        giXform2 transform;
        double positive = 0.0, negative = 0.0;
        int invalid = 0;
        alignment.fit(1e-6, transform, deviation, positive, negative, invalid);
        return invalid == 0 ? 1 : 0;
    });
}
BENCHMARK(BM_curve_bestfit)->Apply(alignment_sizes)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace datumfit::benchmarks
