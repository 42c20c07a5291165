#include <benchmarks/support/time_fit.h>
#include <datumfit/datumfit.h>

#include <cmath>
#include <random>

namespace datumfit::benchmarks {
namespace {

// Directions within 80 degrees of one of them, in any order.
giUnitVec3coDynArr directions(int n) {
    std::mt19937_64 engine(20260229);
    auto const uniform = [&] { return static_cast<double>(engine() >> 11) * 0x1p-53; };
    giUnitVec3coDynArr result(n, 1);
    for (int i = 0; i < n; ++i) {
        double const about = 2.0 * utMath::pi() * uniform(), z = 1.0 - uniform() * (1.0 - std::cos(1.4));
        double const r = std::sqrt(1.0 - z * z);
        result.append(giUnitVec3(r * std::cos(about), r * std::sin(about), z));
    }
    return result;
}

void BM_containment_cone(benchmark::State & state) {
    giUnitVec3coDynArr const all = directions(n_points(state));
    giUnitVec3 axis;
    giAngle angle;
    for (auto _ : state) {
        if (!sqContainmentCone(all).solve(axis, angle)) state.SkipWithError("no cone");
        benchmark::DoNotOptimize(axis);
    }
    count_time_per("per_direction", state, static_cast<double>(all.size()));
}
BENCHMARK(BM_containment_cone)->Apply(plain_sizes);

}  // namespace
}  // namespace datumfit::benchmarks
