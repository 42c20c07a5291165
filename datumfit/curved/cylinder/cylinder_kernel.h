#pragma once

#include <datumfit/curved/axis_frame.h>
#include <datumfit/foundation/maths/lane_model.h>

#include <cmath>
#include <limits>

namespace datumfit {
namespace internal {

/// Cylinders: the distance of q is d = f + r - R, f its distance from the axis, r the signed probe radius. With e the
/// direction away from the axis and g the coordinate along it, a shift of the axis changes d by -e and a tilt about its
/// point by -g e. Parameters: a point of the axis, its direction, the radius.
template <bool Probed>
struct cylinder_kernel {
    static constexpr int dimension = 3;
    static constexpr int parameters = 7;
    static constexpr int unknowns = axis_frame::unknowns + 1;
    static constexpr int rows = 1;
    static constexpr bool probed = Probed;
    static constexpr bool regular = true;

    axis_frame axis;
    double radius = 0.0;

    void from_parameters(double const * origin, mlVector const & p, mlVector & x) const {
        axis_frame::from_parameters(origin, p, x);
    }
    void to_parameters(double const * origin, mlVector const & x, mlVector & p) const {
        axis_frame::to_parameters(origin, x, p);
    }
    void place(mlVector & x) {
        axis_frame::normalize(x);
        take(x);
    }
    void take(mlVector const & x) {
        axis.take(x);
        radius = x[6];
    }
    void move(mlVector const & x, mlVector const & step, mlVector & to) const {
        axis_frame::move(x, step, to);
        to[6] = x[6] + step[4];
    }
    void difference(mlVector const & from, mlVector const & to, mlVector & step) const {
        axis_frame::difference(from, to, step);
        step[4] = to[6] - from[6];
    }
    void scales(double reach, mlVector & s) const {
        axis_frame::scales(reach, s);
        s[4] = 1.0;
    }
    double resolution(double reach) const {
        return std::numeric_limits<double>::epsilon() * (reach + axis.reach() + std::abs(radius));
    }

    template <class Real>
    DATUMFIT_INLINE void distance(Real const (&q)[3], Real const & offset, Real (&d)[1]) const {
        Real w[2], g;
        axis.see(q, w, g);
        d[0] = square_root(w[0] * w[0] + w[1] * w[1]) + offset - radius;
    }

    template <class Real>
    DATUMFIT_INLINE void row(Real const (&q)[3], Real const & offset, Real (&r)[1][unknowns + 1]) const {
        Real e[2], f, g;
        axis.see(q, e, g);
        axis_frame::away(e, f);
        for (int m = 0; m < 2; ++m) {
            r[0][m] = -e[m];
            r[0][2 + m] = -(g * e[m]);
        }
        r[0][4] = Real(-1.0);
        r[0][unknowns] = f + offset - radius;
    }
};

}  // namespace internal
}  // namespace datumfit
