#include <benchmarks/support/time_fit.h>
#include <datumfit/datumfit.h>

#include <cmath>

// Alignments with scale, 30 turns, of points of an ellipsoid that is 5 % too short in x and 3 % too long in y.
namespace datumfit::benchmarks {
namespace {

void BM_alignment_with_scale(benchmark::State & state) {
    giPoint3coPageArr points;
    for (int i = 0; i < n_points(state); ++i) {
        double const z = -1.0 + 2.0 * (i + 0.5) / n_points(state), r = std::sqrt(1.0 - z * z), t = 2.4 * i;
        points.append(giPoint3(28.5 * r * std::cos(t) + 0.3, 22.66 * r * std::sin(t) - 0.2, 15.0 * z + 0.1));
    }
    double sx = 0.0, sy = 0.0;
    for (auto _ : state) {
        sknSurfPtr ellipsoid(new sknSphereSurf(giPoint3(giOrigin), 1.0));
        sknSurf::transform(ellipsoid, giXform3(giXformScale, 30.0, 22.0, 15.0));
        giXform3 rough(giXformIdentity), total;
        sqBestfitAlignmentWithScale::get_alignment(ellipsoid, {}, {}, points, 1e-6, 40, rough, total, sx, sy, 30);
    }
    state.counters["x_off"] = sx - 0.95;
    state.counters["y_off"] = sy - 1.03;
}
BENCHMARK(BM_alignment_with_scale)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace datumfit::benchmarks
