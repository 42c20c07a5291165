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
///
/// Seen from points that cover a narrow strip of it, a cylinder's section is a near_surface, and the shifts and the
/// growth of the radius are its steps. A tilt then keeps the place and the slope of that surface.
template <bool Probed>
struct cylinder_kernel : point_first {
    static constexpr int dimension = 3;
    static constexpr int parameters = 7;
    static constexpr int unknowns = axis_frame::unknowns + 1;
    static constexpr int rows = 1;
    static constexpr bool probed = Probed;
    static constexpr bool regular = true;
    static constexpr bool sees_reach = true;

    axis_frame axis;
    double radius = 0.0;
    double reach = 0.0;  // of the points whose fit takes steps; 0 where only the formulas are asked for
    near_surface<2> section;

    void place(mlVector & x) {
        axis_frame::normalize(x);
        take(x);
        section = axis.section(radius, reach);
    }
    void take(mlVector const & x) {
        axis.take(x);
        radius = x[6];
    }

    void move(mlVector const & x, mlVector const & step, mlVector & to) const {
        axis_frame from;
        from.take(x);
        near_surface<2> const here = from.section(x[6], reach);
        axis_frame::move(x, step, to);
        to[6] = x[6] + step[4];
        if (!here.near) return;
        double const bent[3] = {step[0], step[1], step[4]};
        double n[2], distance, r;
        here.move(bent, n, distance, r);
        from.turn_section(n, distance, to);
        to[6] = std::abs(r);
    }
    void difference(mlVector const & from, mlVector const & to, mlVector & step) const {
        axis_frame frame;
        frame.take(from);
        axis_frame::difference(from, to, step);
        step[4] = to[6] - from[6];
        near_surface<2> const here = frame.section(from[6], reach);
        if (!here.near) return;
        double centre[2], bent[3];
        frame.section_of(to.data(), centre);
        here.difference(centre, to[6], bent);
        step[0] = bent[0];
        step[1] = bent[1];
        step[4] = bent[2];
    }
    void scales(double how_far, mlVector & s) const {
        axis_frame::scales(how_far, s);
        s[4] = 1.0;
    }
    double resolution(double how_far) const {
        return std::numeric_limits<double>::epsilon() * (how_far + axis.reach() + std::abs(radius));
    }

    template <class Real>
    DATUMFIT_INLINE void distance(Real const (&q)[3], Real const & offset, Real (&d)[1]) const {
        Real w[2], g;
        axis.see(q, w, g);
        d[0] = square_root(w[0] * w[0] + w[1] * w[1]) + offset - radius;
    }

    template <class Real>
    DATUMFIT_INLINE void row(Real const (&q)[3], Real const & offset, Real (&r)[1][unknowns + 1]) const {
        Real e[2];
        tilts(q, offset, e, r[0]);
        for (int m = 0; m < 2; ++m) r[0][m] = -e[m];
        r[0][4] = Real(-1.0);
    }

    bool is_near() const { return section.near; }

    template <class Real>
    DATUMFIT_INLINE void near_row(Real const (&q)[3], Real const & offset, Real (&r)[1][unknowns + 1]) const {
        Real e[2], bent[3];
        tilts(q, offset, e, r[0]);
        section.row(e, bent);
        r[0][0] = bent[0];
        r[0][1] = bent[1];
        r[0][4] = bent[2];
    }

private:
    // What both rows have: the tilts and the distance.
    template <class Real>
    DATUMFIT_INLINE void tilts(Real const (&q)[3], Real const & offset, Real (&e)[2], Real (&r)[unknowns + 1]) const {
        Real f, g;
        axis.see(q, e, g);
        axis_frame::away(e, f);
        for (int m = 0; m < 2; ++m) r[2 + m] = -(g * e[m]);
        r[unknowns] = f + offset - radius;
    }
};

}  // namespace internal
}  // namespace datumfit
