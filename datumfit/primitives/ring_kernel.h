#pragma once

#include <datumfit/foundation/geometry/scale_to_unit.h>
#include <datumfit/foundation/maths/lane_model.h>
#include <datumfit/foundation/maths/vector.h>

#include <cmath>
#include <limits>

namespace datumfit {
namespace internal {

/// Circles in space. A point q lies f = |n × v| from the axis and g = n · v above the plane, with v = q - C: its
/// squared distance from the circle is (f - R)² + g². The two go into the least-squares problem as rows of their own,
/// whose squares add up to that; the distance itself is a norm, bent at 0, on which Gauss-Newton steps converge slowly.
/// Parameters: the centre C, the normal n, the radius R.
struct ring_kernel : plain_steps<7> {
    static constexpr int dimension = 3;
    static constexpr int rows = 2;
    static constexpr bool probed = false;
    static constexpr bool regular = false;
    static constexpr bool sees_reach = false;

    // Nearer to the axis than this a point has no radial direction.
    static constexpr double lost_direction = 1e-7;

    double centre[3] = {};
    double normal[3] = {};
    double radius = 0.0;

    void from_parameters(double const * origin, mlVector const & p, mlVector & x) const {
        for (int k = 0; k < parameters; ++k) x[k] = k < 3 ? p[k] - origin[k] : p[k];
    }
    void to_parameters(double const * origin, mlVector const & x, mlVector & p) const {
        for (int k = 0; k < parameters; ++k) p[k] = k < 3 ? x[k] + origin[k] : x[k];
    }
    void place(mlVector & x) {
        normalize(x);
        take(x);
    }
    void take(mlVector const & x) {
        for (int k = 0; k < 3; ++k) {
            centre[k] = x[k];
            normal[k] = x[3 + k];
        }
        radius = x[6];
    }
    void scales(double, mlVector & s) const {
        for (int k = 0; k < unknowns; ++k) s[k] = k >= 3 && k < 6 ? radius : 1.0;
    }
    double resolution(double) const {
        double const reach = std::abs(radius) + std::abs(centre[0]) + std::abs(centre[1]) + std::abs(centre[2]);
        return std::numeric_limits<double>::epsilon() * reach;
    }

    /// Gives the normal length 1; one of length 0 becomes the x axis.
    static void normalize(mlVector & p) {
        double n[3] = {p[3], p[4], p[5]};
        bool const has_direction = scale_to_unit(n, 3);
        for (int k = 0; k < 3; ++k) p[3 + k] = has_direction ? n[k] : (k == 0 ? 1.0 : 0.0);
    }

    template <class Real>
    DATUMFIT_INLINE void distance(Real const (&q)[3], Real const &, Real (&d)[2]) const {
        Real v[3];
        parts(q, v, d[0], d[1]);
        d[0] = d[0] - radius;
    }

    template <class Real>
    DATUMFIT_INLINE void row(Real const (&q)[3], Real const &, Real (&r)[2][parameters + 1]) const {
        Real v[3], f, g;
        parts(q, v, f, g);
        Real const w = where_above(f, lost_direction, Real(1.0) / f);
        for (int k = 0; k < 3; ++k) {
            Real const across = g * normal[k] - v[k];  // towards the axis, f long
            r[0][k] = across * w;
            r[0][3 + k] = g * r[0][k];
            r[1][k] = Real(-normal[k]);
            r[1][3 + k] = -across;
        }
        r[0][3 + 3] = Real(-1.0);
        r[1][3 + 3] = Real(0.0);
        r[0][parameters] = f - radius;
        r[1][parameters] = g;
    }

private:
    template <class Real>
    DATUMFIT_INLINE void parts(Real const (&q)[3], Real (&v)[3], Real & f, Real & g) const {
        for (int k = 0; k < 3; ++k) v[k] = q[k] - centre[k];
        g = v[0] * normal[0] + v[1] * normal[1] + v[2] * normal[2];
        Real const x = v[2] * normal[1] - v[1] * normal[2];
        Real const y = v[0] * normal[2] - v[2] * normal[0];
        Real const z = v[1] * normal[0] - v[0] * normal[1];
        f = square_root(x * x + y * y + z * z);
    }
};

}  // namespace internal
}  // namespace datumfit
