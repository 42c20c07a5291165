#pragma once

#include <datumfit/curved/axis_frame.h>

#include <cmath>
#include <limits>

namespace datumfit {
namespace internal {

/// Tori: with g the coordinate of q along the axis from the centre and f its distance from the axis, the distance of q
/// is d = t - r + s: t = |(f - R, g)| its distance from the tube's centre circle and s the signed probe radius. With e
/// the direction away from the axis, and c and h the cosine and sine of the place around the tube, (f - R) / t and
/// g / t, a shift of the centre changes d by -c e and by -h along the axis, a tilt by e (h f - c g), and R by -c.
/// Parameters: the centre, the axis direction, R, r.
template <bool Probed>
struct torus_kernel : point_first {
    static constexpr int dimension = 3;
    static constexpr int parameters = 8;
    static constexpr int unknowns = 7;  // the shift across and along the axis, the tilt, the radii
    static constexpr int rows = 1;
    static constexpr bool probed = Probed;
    static constexpr bool regular = true;
    static constexpr bool sees_reach = false;

    // Nearer to the tube's centre circle than this a point has no direction from it.
    static constexpr double lost_direction = 1e-7;

    axis_frame axis;
    double major = 0.0;
    double minor = 0.0;

    /// Gives the direction unit length; that of length 0 becomes the x axis.
    static void normalize(mlVector & x) {
        double * const a = x.data() + 3;
        if (!scale_to_unit(a, 3) && a[0] == 0.0 && a[1] == 0.0 && a[2] == 0.0) a[0] = 1.0;
    }

    void place(mlVector & x) {
        normalize(x);
        take(x);
    }
    void take(mlVector const & x) {
        axis.take(x);
        major = x[6];
        minor = x[7];
    }
    void move(mlVector const & x, mlVector const & step, mlVector & to) const {
        axis_frame from;
        from.take(x);
        for (int k = 0; k < 3; ++k) {
            to[k] = x[k] + (step[0] * from.across[0][k] + step[1] * from.across[1][k] + step[2] * from.along[k]);
            to[3 + k] = x[3 + k] + (step[3] * from.across[0][k] + step[4] * from.across[1][k]);
        }
        to[6] = x[6] + step[5];
        to[7] = x[7] + step[6];
    }
    void difference(mlVector const & from, mlVector const & to, mlVector & step) const {
        axis_frame frame;
        frame.take(from);
        step.fill(0.0);
        for (int k = 0; k < 3; ++k) {
            for (int m = 0; m < 2; ++m) {
                step[m] += (to[k] - from[k]) * frame.across[m][k];
                step[3 + m] += (to[3 + k] - from[3 + k]) * frame.across[m][k];
            }
            step[2] += (to[k] - from[k]) * frame.along[k];
        }
        step[5] = to[6] - from[6];
        step[6] = to[7] - from[7];
    }
    void scales(double reach, mlVector & s) const {
        for (int k = 0; k < unknowns; ++k) s[k] = k == 3 || k == 4 ? reach : 1.0;
    }
    double resolution(double reach) const {
        return std::numeric_limits<double>::epsilon() * (reach + axis.reach() + std::abs(major) + std::abs(minor));
    }

    template <class Real>
    DATUMFIT_INLINE void distance(Real const (&q)[3], Real const & offset, Real (&d)[1]) const {
        Real w[2], g;
        axis.see(q, w, g);
        Real const a = square_root(w[0] * w[0] + w[1] * w[1]) - major;
        d[0] = square_root(a * a + g * g) + offset - minor;
    }

    template <class Real>
    DATUMFIT_INLINE void row(Real const (&q)[3], Real const & offset, Real (&r)[1][unknowns + 1]) const {
        Real e[2], f, g;
        axis.see(q, e, g);
        axis_frame::away(e, f);
        Real const a = f - major;
        Real const t = square_root(a * a + g * g);
        Real const over = where_above(t, lost_direction, Real(1.0) / t);
        Real const c = a * over, h = g * over, lever = h * f - c * g;
        for (int m = 0; m < 2; ++m) {
            r[0][m] = -(c * e[m]);
            r[0][3 + m] = e[m] * lever;
        }
        r[0][2] = -h;
        r[0][5] = -c;
        r[0][6] = Real(-1.0);
        r[0][unknowns] = t + offset - minor;
    }
};

}  // namespace internal
}  // namespace datumfit
