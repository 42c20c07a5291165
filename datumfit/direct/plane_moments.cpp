#include <datumfit/direct/plane_moments.h>

#include <datumfit/foundation/maths/point_pass.h>

#include <cmath>
#include <limits>

#if !defined(__clang__)
#pragma GCC diagnostic ignored "-Wpsabi"  // no vector crosses a call: all that hold one are inlined into the pass
#endif

namespace datumfit {
namespace internal {

namespace {

constexpr int sample_size = 32;
constexpr int most_passes = 4;

// How far mean, deviations and skewness may be from 0, 1 and 0, as a factor or a difference: this costs no digit.
constexpr double slack = 4.0;

// A variance below this share of what it is the rest of is rounding.
constexpr double lost_share = 4.0 * std::numeric_limits<double>::epsilon();

struct add_products {
    skew_frame f;
    double per_ux, per_vy;

    explicit add_products(skew_frame const & frame) : f(frame), per_ux(1.0 / f.ux), per_vy(1.0 / f.vy) {}

    template <class Real>
    DATUMFIT_INLINE void operator()(Real const (&q)[2], Real (&s)[15]) const {
        Real const u = (q[0] - Real(f.centre[0])) * Real(per_ux);
        Real const v = (q[1] - Real(f.centre[1]) - Real(f.uy) * u) * Real(per_vy);
        Real const uu = u * u, uv = u * v, vv = v * v;
        s[1] += u;
        s[2] += v;
        s[3] += uu;
        s[4] += uv;
        s[5] += vv;
        s[6] += uu * u;
        s[7] += uu * v;
        s[8] += u * vv;
        s[9] += vv * v;
        s[10] += uu * uu;
        s[11] += uu * uv;
        s[12] += uu * vv;
        s[13] += uv * vv;
        s[14] += vv * vv;
    }
};

void finish(plane_moments & m, int n) {
    for (double & mean : m.mean) mean /= n;
    m.mean[0] = 1.0;
}

// A direction in which the points have no extent keeps its unit.
double deviation(double variance, double whole) {
    return variance > lost_share * whole ? std::sqrt(variance) : 1.0;
}

bool is_near_one(double deviation) {
    return deviation > 1.0 / slack && deviation < slack;
}

// The frame that the moments tell, by the triangular root of the covariance. Gives whether theirs was near it.
bool follow(plane_moments const & m, skew_frame & f) {
    double const u = m(1, 0), v = m(0, 1), cuu = m(2, 0) - u * u, cuv = m(1, 1) - u * v, cvv = m(0, 2) - v * v;
    double const su = deviation(cuu, m(2, 0)), skew = cuv / su;
    double const sv = deviation(cvv - skew * skew, m(0, 2));
    f = m.frame;
    f.centre[0] += f.ux * u;
    f.centre[1] += f.uy * u + f.vy * v;
    f.uy = f.uy * su + f.vy * skew;
    f.ux *= su;
    f.vy *= sv;
    return is_near_one(su) && is_near_one(sv) && std::abs(skew) < slack && std::abs(u) < slack && std::abs(v) < slack;
}

}  // namespace

plane_moments find_plane_moments(double const * p, int n) {
    plane_moments m = {{{p[0], p[1]}, 1.0, 0.0, 1.0}, {}};
    int const step = (n - 1) / sample_size + 1;
    add_products const add_sample(m.frame);
    int sampled = 0;
    for (int i = 0; i < n; i += std::min(step, n - i), ++sampled) {
        double const q[] = {p[2 * i], p[2 * i + 1]};
        add_sample(q, m.mean);
    }
    finish(m, sampled);
    skew_frame next;
    follow(m, next);
    bool near = false;
    for (int pass = 0; pass < most_passes && !near; ++pass) {
        m = {next, {}};
        sum_over_points<2>(p, n, add_products(m.frame), m.mean);
        finish(m, n);
        near = follow(m, next);
    }
    return m;
}

}  // namespace internal
}  // namespace datumfit
