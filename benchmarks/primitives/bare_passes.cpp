#include <benchmarks/support/noisy_points.h>
#include <benchmarks/support/time_fit.h>
#include <datumfit/curved/cone/cone_kernel.h>
#include <datumfit/curved/cylinder/cylinder_kernel.h>
#include <datumfit/datumfit.h>
#include <datumfit/foundation/maths/linearisation.h>
#include <datumfit/primitives/flat_kernel.h>
#include <datumfit/primitives/point_sums.h>
#include <datumfit/primitives/ring_kernel.h>
#include <datumfit/primitives/round_kernel.h>

// What one iteration of the solver costs at the least: a pass over the points for the distances, their derivatives and
// the normal equations, or the triangular factor. The times of fits are to be read against these.
namespace datumfit::benchmarks {
namespace {

using namespace datumfit::internal;

template <class Kernel, class Points>
void time_pass(benchmark::State & state, Points const & points, mlVector & x, doublecoDynArr const & radii) {
    double mean[3];
    mean_of_points(plain(points), Kernel::dimension, points.size(), mean);
    lane_model<Kernel> model(plain(points), radii.data(), points.size(), mean);
    linearisation pass(Kernel::unknowns, points.size(), Kernel::rows);
    triangular_factor factor(Kernel::unknowns);
    model.from_parameters(mlVector(utCopy, x), x);
    model.place(x);
    for (auto _ : state) {
        pass.run(model, factor);
        benchmark::DoNotOptimize(factor);
    }
    count_time_per("per_point", state, static_cast<double>(points.size()));
}

void BM_bare_pass_circle(benchmark::State & state) {
    giPoint2coDynArr const points = noisy_circle2(n_points(state));
    giPoint2 centre;
    double radius = 1.0, deviation;
    sqLeastSquareEvaluator::evaluate_circle(points, centre, radius, deviation);
    double const at[] = {centre.x(), centre.y(), radius};
    mlVector x(utConvert, at, 3);
    time_pass<round_kernel<2, false>>(state, points, x, doublecoDynArr());
}
BENCHMARK(BM_bare_pass_circle)->Apply(plain_sizes);

void BM_bare_pass_sphere(benchmark::State & state) {
    giPoint3coDynArr const points = noisy_sphere(n_points(state));
    giPoint3 centre;
    double radius = 1.0, deviation;
    sqLeastSquareEvaluator::evaluate_sphere(points, centre, radius, deviation);
    double const at[] = {centre.x(), centre.y(), centre.z(), radius};
    mlVector x(utConvert, at, 4);
    time_pass<round_kernel<3, false>>(state, points, x, doublecoDynArr());
}
BENCHMARK(BM_bare_pass_sphere)->Apply(plain_sizes);

void BM_bare_pass_probed_plane(benchmark::State & state) {
    giPoint3coDynArr const points = noisy_plane(n_points(state));
    giPoint3 point;
    giUnitVec3 normal;
    double deviation;
    sqLeastSquareEvaluator::evaluate_plane(points, point, normal, deviation);
    double const at[] = {normal.dot(point.release()), normal.x(), normal.y(), normal.z()};
    mlVector x(utConvert, at, 4);
    time_pass<flat_kernel<3>>(state, points, x, probe_radii(points.size()));
}
BENCHMARK(BM_bare_pass_probed_plane)->Apply(plain_sizes);

void BM_bare_pass_circle3(benchmark::State & state) {
    giPoint3coDynArr const points = noisy_circle3(n_points(state));
    giPoint3 centre;
    giUnitVec3 normal;
    double radius = 1.0, deviation;
    sqLeastSquareEvaluator::evaluate_circle3(points, centre, normal, radius, deviation);
    double const at[] = {centre.x(), centre.y(), centre.z(), normal.x(), normal.y(), normal.z(), radius};
    mlVector x(utConvert, at, 7);
    time_pass<ring_kernel>(state, points, x, doublecoDynArr());
}
BENCHMARK(BM_bare_pass_circle3)->Apply(plain_sizes);

void BM_bare_pass_cylinder(benchmark::State & state) {
    giPoint3coDynArr const points = noisy_cylinder(n_points(state));
    giPoint3 p;
    giUnitVec3 a;
    double radius = 1.0, deviation;
    sqLeastSquareEvaluator::evaluate_cylinder(points, p, a, radius, deviation, giUnitVec3(), giAngle(), 0);
    double const at[] = {p.x(), p.y(), p.z(), a.x(), a.y(), a.z(), radius};
    mlVector x(utConvert, at, 7);
    time_pass<cylinder_kernel<false>>(state, points, x, doublecoDynArr());
}
BENCHMARK(BM_bare_pass_cylinder)->Apply(search_sizes);

void BM_bare_pass_cone(benchmark::State & state) {
    giPoint3coDynArr const points = noisy_cone(n_points(state));
    giPoint3 p;
    giUnitVec3 a;
    double half_angle = 1.0, deviation;
    sqLeastSquareEvaluator::evaluate_cone(points, p, a, half_angle, deviation, giUnitVec3(), giAngle(), 0);
    double const at[] = {p.x(), p.y(), p.z(), a.x(), a.y(), a.z(), 0.0, half_angle};
    mlVector x(utConvert, at, 8);
    time_pass<cone_kernel<false>>(state, points, x, doublecoDynArr());
}
BENCHMARK(BM_bare_pass_cone)->Apply(search_sizes);

// One read of the points' memory, which no fit of many points can beat.
void BM_bare_read(benchmark::State & state) {
    giPoint3coDynArr const points = noisy_sphere(n_points(state));
    for (auto _ : state) {
        double mean[3];
        mean_of_points(plain(points), 3, points.size(), mean);
        benchmark::DoNotOptimize(mean);
    }
    count_time_per("per_point", state, static_cast<double>(points.size()));
}
BENCHMARK(BM_bare_read)->Apply(plain_sizes);

}  // namespace
}  // namespace datumfit::benchmarks
