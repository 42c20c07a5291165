#include <datumfit/primitives/point_sums.h>

#include <datumfit/foundation/maths/lanes.h>

#include <algorithm>

#if !defined(__clang__)
#pragma GCC diagnostic ignored "-Wpsabi"  // no vector crosses a call: all that hold one are inlined into the pass
#endif

namespace datumfit {
namespace internal {

namespace {

constexpr int block = 1024;  // sums of blocks are added up apart, to keep the rounding of long sums down

template <int Dimension>
DATUMFIT_INLINE void load(double const * p, double const * from, double (&q)[Dimension]) {
    for (int k = 0; k < Dimension; ++k) q[k] = p[k] - from[k];
}

template <int Dimension, class V>
DATUMFIT_INLINE void load(double const * p, double const * from, lanes<V> (&q)[Dimension]) {
    constexpr int d = Dimension;
    for (int k = 0; k < d; ++k) q[k] = lanes<V>(p[k], p[d + k], p[2 * d + k], p[3 * d + k]) - lanes<V>(from[k]);
}

// The coordinates themselves, and the length of the vector: what is summed of each point.
struct coordinates {
    template <class Real, int Dimension>
    static DATUMFIT_INLINE void add(Real const (&q)[Dimension], Real (&s)[Dimension]) {
        for (int k = 0; k < Dimension; ++k) s[k] += q[k];
    }
};
struct length {
    template <class Real, int Dimension>
    static DATUMFIT_INLINE void add(Real const (&q)[Dimension], Real (&s)[1]) {
        Real square = q[0] * q[0];
        for (int k = 1; k < Dimension; ++k) square += q[k] * q[k];
        s[0] += square_root(square);
    }
};

template <class What, class Lanes, int Dimension, int Sums>
DATUMFIT_INLINE void add_up(double const * p, int n, double const * from, double (&total)[Sums]) {
    for (int first = 0; first < n; first += block) {
        int const last = std::min(n, first + block);
        Lanes s[Sums];
        double rest[Sums] = {};
        for (int k = 0; k < Sums; ++k) s[k] = Lanes(0.0);
        int i = first;
        for (; i + lane_count <= last; i += lane_count) {
            Lanes q[Dimension];
            load(p + Dimension * i, from, q);
            What::add(q, s);
        }
        for (; i < last; ++i) {
            double q[Dimension];
            load(p + Dimension * i, from, q);
            What::add(q, rest);
        }
        for (int k = 0; k < Sums; ++k) total[k] += sum_of_lanes(s[k]) + rest[k];
    }
}

template <class What, int Dimension, int Sums>
DATUMFIT_WIDE void add_up_wide(double const * p, int n, double const * from, double (&total)[Sums]) {
    add_up<What, wide_lanes, Dimension>(p, n, from, total);
}

template <class What, int Dimension, int Sums>
void sums(double const * p, int n, double const * from, double (&total)[Sums]) {
    if (has_wide_lanes()) {
        add_up_wide<What, Dimension>(p, n, from, total);
    } else {
        add_up<What, narrow_lanes, Dimension>(p, n, from, total);
    }
}

template <int Dimension>
void mean(double const * p, int n, double * result) {
    double total[Dimension] = {};
    sums<coordinates, Dimension>(p, n, p, total);
    for (int k = 0; k < Dimension; ++k) result[k] = p[k] + total[k] / n;
}

}  // namespace

void mean_of_points(double const * p, int dimension, int n, double * result) {
    dimension == 2 ? mean<2>(p, n, result) : mean<3>(p, n, result);
}

double mean_distance(double const * p, int dimension, int n, double const * from) {
    double total[1] = {};
    dimension == 2 ? sums<length, 2>(p, n, from, total) : sums<length, 3>(p, n, from, total);
    return n > 0 ? total[0] / n : 0.0;
}

}  // namespace internal
}  // namespace datumfit
