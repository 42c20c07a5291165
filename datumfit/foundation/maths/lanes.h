#pragma once

/// Four doubles that are worked on side by side.
///
/// A pass over all points sums in four lanes, whatever the machine: points 0, 4, 8, ... in lane 0, and so on. So a
/// wider instruction set, chosen at run time, changes the speed and not one bit of the result. `narrow_lanes` keeps the
/// four in two vectors of two doubles (any machine), `wide_lanes` in one vector of four (x86-64 with AVX2).
namespace datumfit {
namespace internal {

#define DATUMFIT_INLINE __attribute__((always_inline)) inline

#if defined(__x86_64__)
#define DATUMFIT_WIDE __attribute__((target("avx2")))
#else
#define DATUMFIT_WIDE
#endif

#if !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpsabi"  // no vector crosses a call: all that hold one are inlined into the pass
#endif

typedef double vector_of_2 __attribute__((vector_size(16)));
typedef double vector_of_4 __attribute__((vector_size(32)));

constexpr int lane_count = 4;

template <class V>
struct lanes {
    static constexpr int width = static_cast<int>(sizeof(V) / sizeof(double));
    static constexpr int parts = lane_count / width;

    V part[parts];

    DATUMFIT_INLINE lanes() = default;
    DATUMFIT_INLINE lanes(double x) : lanes(x, x, x, x) {}  // implicit: a number stands for four equal lanes
    DATUMFIT_INLINE lanes(double x0, double x1, double x2, double x3) {
        if constexpr (parts == 1) {
            part[0] = V{x0, x1, x2, x3};
        } else {
            part[0] = V{x0, x1};
            part[1] = V{x2, x3};
        }
    }
    DATUMFIT_INLINE double operator[](int l) const { return part[l / width][l % width]; }
    DATUMFIT_INLINE lanes & operator+=(lanes const & x) { return *this = *this + x; }

    friend DATUMFIT_INLINE lanes operator-(lanes const & x) {
        lanes r;
        for (int k = 0; k < parts; ++k) r.part[k] = -x.part[k];
        return r;
    }
    friend DATUMFIT_INLINE lanes operator+(lanes const & x, lanes const & y) {
        lanes r;
        for (int k = 0; k < parts; ++k) r.part[k] = x.part[k] + y.part[k];
        return r;
    }
    friend DATUMFIT_INLINE lanes operator-(lanes const & x, lanes const & y) {
        lanes r;
        for (int k = 0; k < parts; ++k) r.part[k] = x.part[k] - y.part[k];
        return r;
    }
    friend DATUMFIT_INLINE lanes operator*(lanes const & x, lanes const & y) {
        lanes r;
        for (int k = 0; k < parts; ++k) r.part[k] = x.part[k] * y.part[k];
        return r;
    }
    friend DATUMFIT_INLINE lanes operator/(lanes const & x, lanes const & y) {
        lanes r;
        for (int k = 0; k < parts; ++k) r.part[k] = x.part[k] / y.part[k];
        return r;
    }
};

using narrow_lanes = lanes<vector_of_2>;
using wide_lanes = lanes<vector_of_4>;

DATUMFIT_INLINE double square_root(double x) {
    return __builtin_sqrt(x);
}

template <class V>
DATUMFIT_INLINE lanes<V> square_root(lanes<V> const & x) {
    return lanes<V>(__builtin_sqrt(x[0]), __builtin_sqrt(x[1]), __builtin_sqrt(x[2]), __builtin_sqrt(x[3]));
}

/// a where x exceeds the limit, else 0. A NaN does not exceed it.
DATUMFIT_INLINE double where_above(double x, double limit, double a) {
    return x > limit ? a : 0.0;
}

template <class V>
DATUMFIT_INLINE lanes<V> where_above(lanes<V> const & x, double limit, lanes<V> const & a) {
    lanes<V> r, bound(limit);
    for (int k = 0; k < lanes<V>::parts; ++k) r.part[k] = x.part[k] > bound.part[k] ? a.part[k] : V{};
    return r;
}

/// The lanes added up, in one fixed order.
DATUMFIT_INLINE double sum_of_lanes(double x) {
    return x;
}

template <class V>
DATUMFIT_INLINE double sum_of_lanes(lanes<V> const & x) {
    return (x[0] + x[1]) + (x[2] + x[3]);
}

/// Whether this machine runs the wide form of a pass.
inline bool has_wide_lanes() {
#if defined(__x86_64__)
    return __builtin_cpu_supports("avx2");
#else
    return false;
#endif
}

#if !defined(__clang__)
#pragma GCC diagnostic pop
#endif

}  // namespace internal
}  // namespace datumfit
