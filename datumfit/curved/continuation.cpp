#include <datumfit/curved/continuation.h>

#include <datumfit/foundation/maths/levenberg_marquardt.h>

#include <algorithm>
#include <cmath>

namespace datumfit {
namespace internal {

namespace {

// How far new points may lie off: so many times the old distances, or this share of the range of the points.
constexpr double old_distances = 10.0;
constexpr double share_of_range = 0.001;

// With no more points than this, the worst tenth of the old distances is left out of that.
constexpr int few_points = 20;
constexpr double share_of_few = 0.9;

// How far the fit may leave a point off: so many times the greatest old distance, or this share of the range.
constexpr double greatest_old_distance = 1.1;
constexpr double rounding_of_range = 1e-6;

double greatest(double const * from, double const * to) {
    return from == to ? 0.0 : *std::max_element(from, to);
}

}  // namespace

bool continue_fit(sqLeastSquareDistance3 & problem, int n, int new_points, int fewest, mlVector const & earlier,
                  double & square, mlVector & parameters) {
    int const old_points = n - new_points;
    if (new_points > 0 && old_points < fewest) return false;
    double const range = problem.range();
    mlVector p(earlier), distances;
    double greatest_old = 0.0;
    auto const look = [&] {
        problem.distances(p, distances);
        for (int i = 0; i < n; ++i) distances[i] = std::abs(distances[i]);
    };
    if (new_points > 0) {
        look();
        double * const d = distances.data();
        double const greatest_new = greatest(d + old_points, d + n);
        int const j = n > few_points ? old_points - 1 : static_cast<int>(share_of_few * (old_points - 1));
        std::nth_element(d, d + j, d + old_points);
        greatest_old = greatest(d + j, d + old_points);
        if (!(std::max(old_distances * d[j], share_of_range * range) > greatest_new)) return false;
    }
    double const s = mlLevenbergMarquardt(problem).fit(p, p);
    if (!std::isfinite(s)) return false;
    if (new_points > 0) {
        look();
        double const allowed = std::max(greatest_old_distance * greatest_old, rounding_of_range * range);
        if (!(allowed > greatest(distances.data(), distances.data() + n))) return false;
    }
    square = s;
    parameters = p;
    return true;
}

}  // namespace internal
}  // namespace datumfit
