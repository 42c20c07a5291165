#include <datumfit/primitives/circle_fits.h>

#include <datumfit/foundation/maths/random.h>
#include <datumfit/foundation/utilities/math.h>
#include <datumfit/primitives/point_sums.h>

#include <algorithm>
#include <cmath>

namespace datumfit {
namespace internal {

namespace {

constexpr int probed_starts = 10;
constexpr double smallest_start = 0.1;  // of a radius, as a share of the mean distance from the centroid

double mean_distance_from(giPoint2coDynArr const & points, giPoint2 const & from) {
    double const at[2] = {from.x(), from.y()};
    return mean_distance(plain(points), 2, points.size(), at);
}

double greatest_radius(doublecoDynArr const & radii, int n) {
    double greatest = 0.0;
    for (int i = 0; i < n; ++i) greatest = std::max(greatest, std::abs(radii[i]));
    return greatest;
}

}  // namespace

double fit_circle(sqLeastSquareCircle2 & problem, mlLevenbergMarquardt & solver, giPoint2coDynArr const & points,
                  mlVector & circle) {
    giPoint2 const m = problem.centroid();
    circle[0] = m.x();
    circle[1] = m.y();
    circle[2] = mean_distance_from(points, m);
    return solver.fit(circle, circle);
}

double fit_probed_circle(sqLeastSquareProbedCircle2 & problem, mlLevenbergMarquardt & solver,
                         giPoint2coDynArr const & points, doublecoDynArr const & radii, mlVector & scratch,
                         mlVector & circle) {
    giPoint2 const m = problem.centroid();
    double const r0 = mean_distance_from(points, m);
    double const q = greatest_radius(radii, points.size());
    mlRandom random(1);
    double best = utMath::max_double();
    for (int k = 0; k < probed_starts; ++k) {
        scratch[0] = m.x() + random.rnd(-q, q);
        scratch[1] = m.y() + random.rnd(-q, q);
        scratch[2] = utMath::max(r0 + random.rnd(-q, q), smallest_start * r0);
        double const deviation = std::sqrt(solver.fit(scratch, scratch));
        if (best > deviation) {
            best = deviation;
            circle = scratch;
        }
    }
    return best;
}

}  // namespace internal
}  // namespace datumfit
