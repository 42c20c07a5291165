#include <benchmarks/support/time_fit.h>
#include <datumfit/datumfit.h>

#include <algorithm>
#include <cmath>
#include <random>

// A public library's smallest circle, as a measure: header files only, of the Debian package libcgal-dev.
#if __has_include(<CGAL/Min_sphere_of_spheres_d.h>)
#define DATUMFIT_HAS_PUBLIC_CIRCLE
#include <CGAL/Min_sphere_of_points_d_traits_2.h>
#include <CGAL/Min_sphere_of_spheres_d.h>
#include <CGAL/Simple_cartesian.h>
#endif

namespace datumfit::benchmarks {
namespace {

using points2 = std::vector<giPoint2>;
using numbers = std::vector<double>;

constexpr double probe_radius = 1.5;

enum order { random_order, sorted_order, worst_order };

// Measured points of a disc, or of its rim with noise when it is hollow, or of an order that is bad for the enclosing
// circle: each point is outside of all circles about those before it.
points2 points_of(int n, bool hollow, order order) {
    std::mt19937_64 engine(20240229);
    auto const uniform = [&] { return static_cast<double>(engine() >> 11) * 0x1p-53; };
    points2 points;
    for (int i = 0; i < n; ++i) {
        double const turn = 2.0 * utMath::pi() * uniform(), u = uniform(), out = 1.0 + static_cast<double>(i) / n;
        double const radius = hollow ? 40.0 + 0.01 * (u - 0.5) : 40.0 * std::sqrt(u);
        giVector2 v(radius * std::cos(turn), radius * std::sin(turn));
        if (order == worst_order) v = giVector2(i % 2 ? 20.0 * out : -20.0 * out, 20.0 * out * out);
        points.push_back(giPoint2(311.7, -142.3) + v);
    }
    auto const by_x = [](giPoint2 const & a, giPoint2 const & b) { return a.x() < b.x(); };
    if (order == sorted_order) std::sort(points.begin(), points.end(), by_x);
    return points;
}

template <class Fit>
void time_circle(benchmark::State & state, bool hollow, order order, Fit fit) {
    points2 const points = points_of(n_points(state), hollow, order);
    numbers const radii(points.size(), probe_radius);
    double radius = 0.0;
    for (auto _ : state) {
        radius = fit(points, radii);
        benchmark::DoNotOptimize(radius);
    }
    count_time_per("per_point", state, static_cast<double>(points.size()));
    state.counters["radius"] = radius;
}

double enclosing(points2 const & points, numbers const &) {
    return sqMinimumCircumscribedCircle::fit_smallest_enclosing_circle(points).radius();
}
double enclosing_probed(points2 const & points, numbers const & radii) {
    return sqMinimumCircumscribedCircle::fit_smallest_enclosing_circle_probed(points, radii, true).radius();
}
double inscribed(points2 const & points, numbers const &) {
    return sqMaximumInscribedCircle::calculate_maximum_inscribed_circle(points, {}).radius();
}
double inscribed_probed(points2 const & points, numbers const & radii) {
    return sqMaximumInscribedCircle::calculate_maximum_inscribed_circle_probed(points, radii, true, {}).radius();
}
double min_max(points2 const & points, numbers const &) {
    double zone = 0.0;
    sqMinMaxCircleFit::fit(points, zone);
    return zone;
}
double min_max_probed(points2 const & points, numbers const & radii) {
    double zone = 0.0;
    sqMinMaxCircleFit::fit_probed(points, radii, true, zone);
    return zone;
}

void circle_sizes(benchmark::internal::Benchmark * b) {
    for (int const n : {10, 100, 1000, 10000, 100000}) b->Arg(n)->Unit(benchmark::kMicrosecond);
}
// The time grows with the cube of the number of points.
void worst_sizes(benchmark::internal::Benchmark * b) {
    for (int const n : {10, 100, 1000}) b->Arg(n)->Unit(benchmark::kMicrosecond);
}

BENCHMARK_CAPTURE(time_circle, enclosing_disc, false, random_order, enclosing)->Apply(circle_sizes);
BENCHMARK_CAPTURE(time_circle, enclosing_rim, true, random_order, enclosing)->Apply(circle_sizes);
BENCHMARK_CAPTURE(time_circle, enclosing_sorted, false, sorted_order, enclosing)->Apply(circle_sizes);
BENCHMARK_CAPTURE(time_circle, enclosing_worst, false, worst_order, enclosing)->Apply(worst_sizes);
BENCHMARK_CAPTURE(time_circle, enclosing_probed_disc, false, random_order, enclosing_probed)->Apply(circle_sizes);
BENCHMARK_CAPTURE(time_circle, enclosing_probed_rim, true, random_order, enclosing_probed)->Apply(circle_sizes);
BENCHMARK_CAPTURE(time_circle, enclosing_probed_sorted, false, sorted_order, enclosing_probed)->Apply(worst_sizes);
BENCHMARK_CAPTURE(time_circle, inscribed_disc, false, random_order, inscribed)->Apply(circle_sizes);
BENCHMARK_CAPTURE(time_circle, inscribed_rim, true, random_order, inscribed)->Apply(circle_sizes);
BENCHMARK_CAPTURE(time_circle, inscribed_sorted, true, sorted_order, inscribed)->Apply(circle_sizes);
BENCHMARK_CAPTURE(time_circle, inscribed_probed_rim, true, random_order, inscribed_probed)->Apply(circle_sizes);
BENCHMARK_CAPTURE(time_circle, min_max_rim, true, random_order, min_max)->Apply(circle_sizes);
BENCHMARK_CAPTURE(time_circle, min_max_sorted, true, sorted_order, min_max)->Apply(circle_sizes);
BENCHMARK_CAPTURE(time_circle, min_max_probed_rim, true, random_order, min_max_probed)->Apply(circle_sizes);

#ifdef DATUMFIT_HAS_PUBLIC_CIRCLE
// On the same points, in its own form; it takes them in an order of its own.
void time_public_circle(benchmark::State & state, bool hollow, order order) {
    using kernel = CGAL::Simple_cartesian<double>;
    using circle = CGAL::Min_sphere_of_spheres_d<CGAL::Min_sphere_of_points_d_traits_2<kernel, double>>;
    std::vector<kernel::Point_2> points;
    for (giPoint2 const & p : points_of(n_points(state), hollow, order)) points.emplace_back(p.x(), p.y());
    double radius = 0.0;
    for (auto _ : state) {
        radius = circle(points.begin(), points.end()).radius();
        benchmark::DoNotOptimize(radius);
    }
    count_time_per("per_point", state, static_cast<double>(points.size()));
    state.counters["radius"] = radius;
}
BENCHMARK_CAPTURE(time_public_circle, disc, false, random_order)->Apply(circle_sizes);
BENCHMARK_CAPTURE(time_public_circle, rim, true, random_order)->Apply(circle_sizes);
BENCHMARK_CAPTURE(time_public_circle, sorted, false, sorted_order)->Apply(circle_sizes);
BENCHMARK_CAPTURE(time_public_circle, worst, false, worst_order)->Apply(worst_sizes);
#endif

}  // namespace
}  // namespace datumfit::benchmarks
