#pragma once

#include <datumfit/curved/axis_frame.h>
#include <datumfit/foundation/maths/lane_model.h>
#include <datumfit/foundation/utilities/math.h>

#include <cmath>
#include <limits>

namespace datumfit {
namespace internal {

/// Cones: the distance of q is d = g sin h + f cos h - p + r, with g its coordinate along the axis, f its distance from
/// it and r the signed probe radius. With e the direction away from the axis, a shift of the axis changes d by
/// -e cos h, a tilt about its point by e (f sin h - g cos h), and a growth of h by g cos h - f sin h. Parameters: a
/// point of the axis, its direction towards the apex, the distance p of the point from the surface, the half angle h.
template <bool Probed>
struct cone_kernel : point_first {
    static constexpr int dimension = 3;
    static constexpr int parameters = 8;
    static constexpr int unknowns = axis_frame::unknowns + 2;
    static constexpr int rows = 1;
    static constexpr bool probed = Probed;
    static constexpr bool regular = true;
    static constexpr bool sees_reach = false;

    axis_frame axis;
    double inset = 0.0;
    double sine = 0.0;
    double cosine = 1.0;

    /// Turns the half angle to [0, pi / 2], where the axis points to the apex, and the axis as axis_frame does. Where
    /// that reverses the surface, distances change their sign.
    static void normalize(mlVector & x) {
        constexpr double pi = utMath::pi();
        double & p = x.data()[6];
        double & h = x.data()[7];
        h = utMath::remd(h, 2.0 * pi);
        if (h > pi) {
            p = -p;
            h -= pi;
        }
        bool const reversed = h > pi / 2.0;
        if (reversed) {
            h = pi - h;
            p = -p;
        }
        double moved = axis_frame::normalize(x);
        if (reversed) {
            for (int k = 3; k < 6; ++k) x.data()[k] = -x.data()[k];
            moved = -moved;
        }
        p += moved * std::sin(h);
    }

    void place(mlVector & x) {
        normalize(x);
        take(x);
    }
    void take(mlVector const & x) {
        axis.take(x);
        inset = x[6];
        sine = std::sin(x[7]);
        cosine = std::cos(x[7]);
    }
    void move(mlVector const & x, mlVector const & step, mlVector & to) const {
        axis_frame::move(x, step, to);
        to[6] = x[6] + step[4];
        to[7] = x[7] + step[5];
    }
    void difference(mlVector const & from, mlVector const & to, mlVector & step) const {
        axis_frame::difference(from, to, step);
        // Where a tilt has moved the foot of the origin along the axis, p has changed with it.
        double const moved = from[0] * to[3] + from[1] * to[4] + from[2] * to[5];
        step[4] = to[6] - from[6] - moved * std::sin(to[7]);
        step[5] = to[7] - from[7];
    }
    void scales(double reach, mlVector & s) const {
        axis_frame::scales(reach, s);
        s[4] = 1.0;
        s[5] = reach;
    }
    double resolution(double reach) const {
        return std::numeric_limits<double>::epsilon() * (reach + axis.reach() + std::abs(inset));
    }

    template <class Real>
    DATUMFIT_INLINE void distance(Real const (&q)[3], Real const & offset, Real (&d)[1]) const {
        Real w[2], g;
        axis.see(q, w, g);
        Real const f = square_root(w[0] * w[0] + w[1] * w[1]);
        d[0] = g * sine + f * cosine - inset + offset;
    }

    template <class Real>
    DATUMFIT_INLINE void row(Real const (&q)[3], Real const & offset, Real (&r)[1][unknowns + 1]) const {
        Real e[2], f, g;
        axis.see(q, e, g);
        axis_frame::away(e, f);
        Real const lever = f * sine - g * cosine;
        for (int m = 0; m < 2; ++m) {
            r[0][m] = e[m] * -cosine;
            r[0][2 + m] = e[m] * lever;
        }
        r[0][4] = Real(-1.0);
        r[0][5] = -lever;
        r[0][unknowns] = g * sine + f * cosine - inset + offset;
    }
};

}  // namespace internal
}  // namespace datumfit
