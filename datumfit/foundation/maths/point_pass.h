#pragma once

#include <datumfit/foundation/maths/lanes.h>

#include <algorithm>

#if !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpsabi"  // no vector crosses a call: all that hold one are inlined into the pass
#endif

namespace datumfit {
namespace internal {

// The points of a block are summed apart, to keep the rounding of long sums down.
constexpr int pass_block = 1024;

template <class Lanes, int Dimension, int Sums, class Add>
DATUMFIT_INLINE void add_up_points(double const * p, int n, Add const & add, double (&total)[Sums]) {
    for (int first = 0; first < n; first += pass_block) {
        int const last = std::min(n, first + pass_block);
        Lanes s[Sums];
        double rest[Sums] = {};
        for (int k = 0; k < Sums; ++k) s[k] = Lanes(0.0);
        int i = first;
        for (; i + lane_count <= last; i += lane_count) {
            double const * const a = p + Dimension * i;
            Lanes q[Dimension];
            for (int k = 0; k < Dimension; ++k) {
                q[k] = Lanes(a[k], a[Dimension + k], a[2 * Dimension + k], a[3 * Dimension + k]);
            }
            add(q, s);
        }
        for (; i < last; ++i) {
            double q[Dimension];
            for (int k = 0; k < Dimension; ++k) q[k] = p[Dimension * i + k];
            add(q, rest);
        }
        for (int k = 0; k < Sums; ++k) total[k] += sum_of_lanes(s[k]) + rest[k];
    }
}

template <int Dimension, int Sums, class Add>
DATUMFIT_WIDE void add_up_points_wide(double const * p, int n, Add const & add, double (&total)[Sums]) {
    add_up_points<wide_lanes, Dimension>(p, n, add, total);
}

/// One pass over n points of plain coordinates: add(q, s), always inlined, adds what is summed of the point q to s, for
/// doubles and for four points side by side. The same bits on every machine.
template <int Dimension, int Sums, class Add>
void sum_over_points(double const * p, int n, Add const & add, double (&total)[Sums]) {
    if (has_wide_lanes()) {
        add_up_points_wide<Dimension>(p, n, add, total);
    } else {
        add_up_points<narrow_lanes, Dimension>(p, n, add, total);
    }
}

/// Adds the squared distance of a point from a circle or a sphere.
template <int Dimension>
struct square_from_round {
    double centre[Dimension];
    double radius;

    template <class Real>
    DATUMFIT_INLINE void operator()(Real const (&q)[Dimension], Real (&s)[1]) const {
        Real square(0.0);
        for (int k = 0; k < Dimension; ++k) {
            Real const d = q[k] - Real(centre[k]);
            square += d * d;
        }
        Real const off = square_root(square) - Real(radius);
        s[0] += off * off;
    }
};

}  // namespace internal
}  // namespace datumfit

#if !defined(__clang__)
#pragma GCC diagnostic pop
#endif
