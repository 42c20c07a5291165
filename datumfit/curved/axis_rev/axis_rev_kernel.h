#pragma once

#include <datumfit/curved/axis_frame.h>
#include <datumfit/foundation/maths/lane_model.h>
#include <datumfit/foundation/maths/vector.h>

#include <limits>

namespace datumfit {
namespace internal {

/// Axes met by lines: q is a point and a direction n of its line, of any length. With w the unit vector of n × a, v the
/// point seen from that of the axis and f the length of the part of n across the axis, the distance is d = v · w. A
/// shift of the axis changes it by -w; a tilt by e turns n × a by n × e, and so d by ((n × e) · v - (n × e) · w d) / f.
/// A line along the axis has neither distance nor derivatives. Parameters: a point of the axis, its direction.
struct axis_rev_kernel : point_first {
    static constexpr int dimension = 6;
    static constexpr int parameters = 6;
    static constexpr int unknowns = axis_frame::unknowns;
    static constexpr int rows = 1;
    static constexpr bool probed = false;
    static constexpr bool sees_reach = false;
    static constexpr bool regular = true;

    // A line whose sine to the axis is no more than this is along it.
    static constexpr double parallel = 1e-7;

    axis_frame axis;

    void place(mlVector & x) {
        axis_frame::normalize(x);
        axis.take(x);
    }
    void move(mlVector const & x, mlVector const & step, mlVector & to) const { axis_frame::move(x, step, to); }
    void difference(mlVector const & from, mlVector const & to, mlVector & step) const {
        axis_frame::difference(from, to, step);
    }
    void scales(double reach, mlVector & s) const { axis_frame::scales(reach, s); }
    double resolution(double reach) const { return std::numeric_limits<double>::epsilon() * (reach + axis.reach()); }

    template <class Real>
    DATUMFIT_INLINE void distance(Real const (&q)[6], Real const &, Real (&d)[1]) const {
        line<Real> const l = see(q);
        d[0] = l.d;
    }

    template <class Real>
    DATUMFIT_INLINE void row(Real const (&q)[6], Real const &, Real (&r)[1][unknowns + 1]) const {
        line<Real> const l = see(q);
        r[0][0] = -l.w[0];
        r[0][1] = -l.w[1];
        r[0][2] = (l.n_along * (l.v[1] - l.w[1] * l.d) - l.n[1] * l.height) * l.over_f;
        r[0][3] = (l.n[0] * l.height - l.n_along * (l.v[0] - l.w[0] * l.d)) * l.over_f;
        r[0][unknowns] = l.d;
    }

private:
    // A line in the axis's frame: two coordinates across the axis, and that along it.
    template <class Real>
    struct line {
        Real v[2], height;
        Real n[2], n_along;
        Real w[2], over_f, d;  // null for a line along the axis
    };

    template <class Real>
    DATUMFIT_INLINE line<Real> see(Real const (&q)[6]) const {
        line<Real> l;
        Real const p[3] = {q[0], q[1], q[2]};
        axis.see(p, l.v, l.height);
        for (int m = 0; m < 2; ++m) {
            double const(&u)[3] = axis.across[m];
            l.n[m] = q[3] * u[0] + q[4] * u[1] + q[5] * u[2];
        }
        l.n_along = q[3] * axis.along[0] + q[4] * axis.along[1] + q[5] * axis.along[2];
        Real const square = l.n[0] * l.n[0] + l.n[1] * l.n[1];
        Real const whole = q[3] * q[3] + q[4] * q[4] + q[5] * q[5];
        l.over_f = where_above(square - whole * (parallel * parallel), 0.0, Real(1.0) / square_root(square));
        l.w[0] = l.n[1] * l.over_f;
        l.w[1] = -l.n[0] * l.over_f;
        l.d = l.v[0] * l.w[0] + l.v[1] * l.w[1];
        return l;
    }
};

}  // namespace internal
}  // namespace datumfit
