#include <benchmarks/support/time_fit.h>
#include <datumfit/datumfit.h>

#include <vector>

// Fits by six reference points and the probed points of a sphere that is slightly out of place.
namespace datumfit::benchmarks {
namespace {

void BM_rps_fitting(benchmark::State & state) {
    sknSphereSurf const sphere(giPoint3(giOrigin), 50.0);
    sqSurfProjectorForFitting3 const projector(sphere);
    giVector3 const off(0.3, -0.2, 0.1);
    mlRandom random(1);
    std::vector<sqFitPoint3coPrf> points;
    for (int i = 0; i < n_points(state); ++i) {
        giUnitVec3 const n(random.minus_one_one(), random.minus_one_one(), random.minus_one_one());
        giVector3 const & normal = n;
        giPoint3 const p = giPoint3(giOrigin) + (51.5 + 0.01 * random.minus_one_one()) * normal;
        points.emplace_back(new sqProbedPoint3(p + off, n, 1.5));
    }
    double left = 0.0;
    for (auto _ : state) {
        sqRPSFitting fit(50, 1e-6);
        fit.set_projector(&projector);
        fit.reserve_points(n_points(state));
        for (sqFitPoint3coPrf const & p : points) fit.add_point(p);
        giPoint3 const pole(0.0, 0.0, 50.0);
        fit.lock_direction(giAxisZ, giAxisZ);
        fit.add_positioning(pole + off, giWorkplane3(pole, giAxisY, giAxisZ), pole, sqPointsToPlanes::PLANE_IGNORED,
                            sqPointsToPlanes::PLANE_IGNORED, sqPointsToPlanes::PLANE_LOCKED);
        if (fit.fit() != sqRPS_FITTING_OK) state.SkipWithError("no fit");
        left = ((fit.transform() * (giPoint3(giOrigin) + off)) - giPoint3(giOrigin)).length();
    }
    state.counters["left"] = left;
}
BENCHMARK(BM_rps_fitting)->Arg(10)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace datumfit::benchmarks
