#include <benchmarks/support/noisy_points.h>
#include <benchmarks/support/time_fit.h>
#include <datumfit/datumfit.h>

#include <cmath>

namespace datumfit::benchmarks {
namespace {

// The normals of a noisy cone about the normal of the general frame, each turned by what its point is off the mantle.
giUnitVec3coDynArr normals_of(giPoint3coDynArr const & points) {
    Frame const frame = general_frame();
    giUnitVec3coDynArr normals(points.size(), 1);
    for (int i = 0; i < points.size(); ++i) {
        giVector3 const away = frame.normal.project_normal(points[i] - frame.origin);
        double const turn = 0.35 + 1e-3 * std::sin(12.9898 * i);
        giVector3 const across = 1e-3 * std::sin(78.233 * i) * frame.normal.cross(giUnitVec3(away));
        normals.append(giUnitVec3(std::cos(turn) * giUnitVec3(away) + std::sin(turn) * frame.normal + across));
    }
    return normals;
}

void time_axis(benchmark::State & state, giUnitVec3 const & start) {
    giPoint3coDynArr const points = noisy_cone(n_points(state));
    giUnitVec3coDynArr const normals = normals_of(points);
    time_fit(state, [&](double & deviation) {
        giPoint3 point;
        giUnitVec3 direction = start;
        return sqLeastSquareEvaluator::evaluate_axis_rev(points, normals, point, direction, deviation);
    });
}
void BM_evaluate_axis_rev(benchmark::State & state) {
    time_axis(state, giUnitVec3());
}
void BM_evaluate_axis_rev_with_guess(benchmark::State & state) {
    time_axis(state, giUnitVec3(0.3, -0.5, 0.8));
}
BENCHMARK(BM_evaluate_axis_rev)->Apply(search_sizes);
BENCHMARK(BM_evaluate_axis_rev_with_guess)->Apply(search_sizes);

}  // namespace
}  // namespace datumfit::benchmarks
