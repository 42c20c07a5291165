#pragma once

#include <datumfit/foundation/maths/lane_model.h>
#include <datumfit/foundation/maths/vector.h>
#include <datumfit/primitives/near_surface.h>

#include <cmath>
#include <limits>

namespace datumfit {
namespace internal {

/// Circles of the plane and spheres: the distance of q from centre C and radius R is d = |q - C| + r - R, r the signed
/// probe radius. With u = q - C: dd/dC = -u / |u| and dd/dR = -1. Parameters: the centre, the radius.
template <int Dimension, bool Probed>
struct round_kernel : plain_steps<Dimension + 1> {
    static constexpr int dimension = Dimension;
    using plain_steps<Dimension + 1>::parameters;
    static constexpr int rows = 1;
    static constexpr bool probed = Probed;
    static constexpr bool regular = true;
    static constexpr bool sees_reach = true;

    // Nearer to the centre than this the direction of u is mostly rounding, and a unit gradient along it would throw
    // the solver off.
    static constexpr double lost_direction = 1e-7;

    double centre[Dimension] = {};
    double radius = 0.0;
    double reach = 0.0;  // of the points whose fit takes steps; 0 where only the formulas are asked for
    near_surface<Dimension> surface;

    void from_parameters(double const * origin, mlVector const & p, mlVector & x) const {
        for (int k = 0; k < Dimension; ++k) x[k] = p[k] - origin[k];
        x[Dimension] = p[Dimension];
    }
    void to_parameters(double const * origin, mlVector const & x, mlVector & p) const {
        for (int k = 0; k < Dimension; ++k) p[k] = x[k] + origin[k];
        p[Dimension] = x[Dimension];
    }
    void place(mlVector const & x) {
        take(x);
        surface.see(centre, radius, reach);
    }
    void move(mlVector const & x, mlVector const & step, mlVector & to) const {
        near_surface<Dimension> from;
        from.see(x.data(), x[Dimension], reach);
        if (!from.near) return plain_steps<Dimension + 1>::move(x, step, to);
        double n[Dimension], d, r;
        from.move(step.data(), n, d, r);
        for (int k = 0; k < Dimension; ++k) to[k] = -d * n[k];
        to[Dimension] = std::abs(r);
    }
    void difference(mlVector const & from, mlVector const & to, mlVector & step) const {
        near_surface<Dimension> here;
        here.see(from.data(), from[Dimension], reach);
        if (!here.near) return plain_steps<Dimension + 1>::difference(from, to, step);
        here.difference(to.data(), to[Dimension], step.data());
    }
    void take(mlVector const & x) {
        for (int k = 0; k < Dimension; ++k) centre[k] = x[k];
        radius = x[Dimension];
    }

    // The subtractions round to the size of the circle and of the way to its centre.
    double resolution(double) const {
        double size = std::abs(radius);
        for (int k = 0; k < Dimension; ++k) size += std::abs(centre[k]);
        return std::numeric_limits<double>::epsilon() * size;
    }

    template <class Real>
    DATUMFIT_INLINE void distance(Real const (&q)[Dimension], Real const & offset, Real (&d)[1]) const {
        Real u[Dimension], rho;
        from_centre(q, u, rho);
        d[0] = rho + offset - radius;
    }

    template <class Real>
    DATUMFIT_INLINE void row(Real const (&q)[Dimension], Real const & offset, Real (&r)[1][parameters + 1]) const {
        Real u[Dimension], rho;
        from_centre(q, u, rho);
        Real const w = where_above(rho, lost_direction, Real(-1.0) / rho);
        for (int k = 0; k < Dimension; ++k) r[0][k] = u[k] * w;
        r[0][Dimension] = Real(-1.0);
        r[0][parameters] = rho + offset - radius;
    }

    bool is_near() const { return surface.near; }

    template <class Real>
    DATUMFIT_INLINE void near_row(Real const (&q)[Dimension], Real const & offset, Real (&r)[1][parameters + 1]) const {
        Real e[Dimension], columns[Dimension + 1], rho;
        from_centre(q, e, rho);
        Real const w = where_above(rho, lost_direction, Real(1.0) / rho);
        for (int k = 0; k < Dimension; ++k) e[k] = e[k] * w;
        surface.row(e, columns);
        for (int k = 0; k <= Dimension; ++k) r[0][k] = columns[k];
        r[0][parameters] = rho + offset - radius;
    }

private:
    template <class Real>
    DATUMFIT_INLINE void from_centre(Real const (&q)[Dimension], Real (&u)[Dimension], Real & rho) const {
        u[0] = q[0] - centre[0];
        Real square = u[0] * u[0];
        for (int k = 1; k < Dimension; ++k) {
            u[k] = q[k] - centre[k];
            square = square + u[k] * u[k];
        }
        rho = square_root(square);
    }
};

}  // namespace internal
}  // namespace datumfit
