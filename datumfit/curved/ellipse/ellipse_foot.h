#pragma once

#include <datumfit/foundation/maths/lanes.h>

#include <algorithm>

namespace datumfit {
namespace internal {

#if !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpsabi"
#endif

/// The distance of a point from the ellipse x² / a² + y² / b² = 1 with a >= b, and the normal n at its foot.
///
/// Along n the ellipse reaches h = |(a nx, b ny)| from its centre. The signed distance of p is n · p - h, the greatest
/// value of that over all unit n: so an error of n enters the distance by its square only.
///
/// In units of a, with beta = b / a and p = (xi, eta): p lies t (x0, y0 / beta²) from its foot (x0, y0), whose
/// eccentric angle has the cosine xi / A and the sine beta eta / B, with A = 1 + t and B = beta² + t. B is where their
/// squares add up to s = 1. As in the trust regions of Moré & Sorensen 1983, 1 / root(s) is concave in B and nearly
/// straight, so that Newton's method rises to B from any start within a few steps, also in the evolute.
struct ellipse_foot {
    double a = 1.0;
    double b = 1.0;

    template <class Real>
    struct found {
        Real nx, ny, distance;
        Real over_h;  // 1 / h
    };

    /// Takes the lengths of the semi-axes. Those of a segment or a point count as very short.
    void take(double long_axis, double short_axis) {
        a = std::max(long_axis, least_axis);
        b = std::max({short_axis, least_axis, least_ratio * a});
        over_a_ = 1.0 / a;
        over_b_ = 1.0 / b;
        beta_ = b / a;
        over_beta_ = 1.0 / beta_;
        gap_ = (1.0 - beta_) * (1.0 + beta_);
    }

    /// Of two feet, from a point on the long axis within the evolute, the one with positive y is found.
    template <class Real>
    DATUMFIT_INLINE found<Real> find(Real const & x, Real const & y) const {
        Real const xi = x * over_a_, eta = y * over_a_ + off_axis, v = eta * beta_;
        Real const least = greater(magnitude(v), magnitude(xi) - gap_);  // neither cosine nor sine exceeds 1

        // The first step is taken from t = 0, right for points on the ellipse.
        Real cosine = xi, sine = eta * over_beta_;
        Real s = cosine * cosine + sine * sine;
        Real fall = cosine * cosine + sine * sine * over_beta_ * over_beta_ + nothing;
        Real big_b = Real(beta_ * beta_);
        bool near = false;
        for (int step = 0; step < step_limit; ++step) {
            big_b = greater(big_b + s * (square_root(s) - 1.0) / fall, least);
            Real const big_a = big_b + gap_;
            Real const over = Real(1.0) / (big_a * big_b);
            Real const over_big_a = over * big_b, over_big_b = over * big_a;
            cosine = xi * over_big_a;
            sine = v * over_big_b;
            Real const cc = cosine * cosine, ss = sine * sine;
            s = cc + ss;
            if (near) break;
            near = !any_above(magnitude(s - 1.0), nearly_there);
            fall = cc * over_big_a + ss * over_big_b;
        }
        // With the root of s = 1 + e as 1 + e / 2, h belongs to this very n, whatever rounding left of e.
        Real const across = cosine * beta_;
        Real const size = square_root(across * across + sine * sine);
        Real const over_size = Real(1.0) / size;
        found<Real> f;
        f.nx = across * over_size;
        f.ny = sine * over_size;
        f.distance = (across * x + sine * y - (s + 1.0) * (0.5 * b)) * over_size;
        f.over_h = size * over_b_;
        return f;
    }

private:
    // Shorter axes are taken to be as long as this, and those of less than this share of the other one.
    static constexpr double least_axis = 1e-60;
    static constexpr double least_ratio = 1e-50;

    static constexpr double off_axis = 0x1.8p-500;  // decides between two feet, and is lost in any other point
    static constexpr double nothing = 1e-300;       // at the centre there is no first step

    // Each step about squares the error of s; the one behind this is the last.
    static constexpr double nearly_there = 0x1p-27;
    static constexpr int step_limit = 64;

    template <class Real>
    static DATUMFIT_INLINE Real magnitude(Real const & x) {
        return where_above(x, 0.0, x) - where_above(-x, 0.0, x);
    }
    template <class Real>
    static DATUMFIT_INLINE Real greater(Real const & x, Real const & y) {
        Real const more = x - y;
        return where_above(more, 0.0, x) + (y - where_above(more, 0.0, y));
    }
    template <class Real>
    static DATUMFIT_INLINE bool any_above(Real const & x, double limit) {
        return sum_of_lanes(where_above(x, limit, Real(1.0))) > 0.0;
    }

    double over_a_ = 1.0, over_b_ = 1.0, beta_ = 1.0, over_beta_ = 1.0, gap_ = 0.0;
};

#if !defined(__clang__)
#pragma GCC diagnostic pop
#endif

}  // namespace internal
}  // namespace datumfit
