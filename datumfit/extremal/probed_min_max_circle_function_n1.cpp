#include <datumfit/extremal/probed_min_max_circle_function_n1.h>

#include <datumfit/foundation/maths/lanes.h>

#include <algorithm>
#include <cmath>
#include <limits>

#if !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpsabi"  // no vector crosses a call: all that hold one are inlined into the pass
#endif

namespace {

using namespace datumfit::internal;

struct extremes {
    double greatest = std::numeric_limits<double>::lowest(), least = std::numeric_limits<double>::max();

    void take(double e) {
        greatest = std::max(greatest, e);
        least = std::min(least, e);
    }
};

// Takes the points 0 to n - 1, n being a multiple of four. False where the square of a distance is no plain number, and
// then what was found counts for nothing.
template <class V>
DATUMFIT_INLINE bool take_fours(double const * p, double const * radii, std::size_t n, giPoint2 const & centre,
                                extremes & found) {
    lanes<V> const x(centre.x()), y(centre.y()), low(least_plain_square), high(not_set);
    lanes<V> greatest(found.greatest), least(found.least);
    decltype(V{} < V{}) strange = {};
    for (std::size_t i = 0; i < n; i += lane_count, p += 2 * lane_count) {
        lanes<V> const dx = lanes<V>(p[0], p[2], p[4], p[6]) - x, dy = lanes<V>(p[1], p[3], p[5], p[7]) - y;
        lanes<V> const square = dx * dx + dy * dy;
        lanes<V> const e = square_root(square) - lanes<V>(radii[i], radii[i + 1], radii[i + 2], radii[i + 3]);
        for (int k = 0; k < lanes<V>::parts; ++k) {
            strange |= (square.part[k] < low.part[k]) | (square.part[k] >= high.part[k]);
            greatest.part[k] = e.part[k] > greatest.part[k] ? e.part[k] : greatest.part[k];
            least.part[k] = e.part[k] < least.part[k] ? e.part[k] : least.part[k];
        }
    }
    for (int l = 0; l < lane_count; ++l) {
        found.greatest = std::max(found.greatest, greatest[l]);
        found.least = std::min(found.least, least[l]);
    }
    long long any = 0;
    for (int l = 0; l < lanes<V>::width; ++l) any |= strange[l];
    return any == 0;
}

DATUMFIT_WIDE bool take_fours_wide(double const * p, double const * radii, std::size_t n, giPoint2 const & centre,
                                   extremes & found) {
    return take_fours<vector_of_4>(p, radii, n, centre, found);
}

bool is_plain(giPoint2 const & centre) {
    return std::abs(centre.x()) + std::abs(centre.y()) < not_set;
}

}  // namespace

#if !defined(__clang__)
#pragma GCC diagnostic pop
#endif

double sqProbedMinMaxCircleFunctionN1::function(mlSlice const & x) const {
    if (points_.empty()) return 0.0;
    giPoint2 const centre(x[0], x[1]);
    std::size_t const n = points_.size(), fours = is_plain(centre) ? n - n % lane_count : 0;
    double const *const p = reinterpret_cast<double const *>(points_.data()), *const r = radii_.data();
    extremes found;
    bool const plain = has_wide_lanes() ? take_fours_wide(p, r, fours, centre, found)
                                        : take_fours<vector_of_2>(p, r, fours, centre, found);
    if (!plain) found = extremes();
    for (std::size_t i = plain ? fours : 0; i < n; ++i) found.take(distance(points_[i], centre) - radii_[i]);
    return found.greatest - found.least;
}
