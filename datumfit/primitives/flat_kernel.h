#pragma once

#include <datumfit/foundation/geometry/scale_to_unit.h>
#include <datumfit/foundation/maths/lane_model.h>
#include <datumfit/foundation/maths/vector.h>

#include <cmath>
#include <limits>

namespace datumfit {
namespace internal {

/// Lines of the plane and planes, as the set of x with n · x = d: the distance of q is e - d - r with e = q · n, r the
/// signed probe radius. Its derivatives are -1 by d and q - e n by n, the turn of n alone. Parameters: d, then n.
///
/// The solver counts d from the first point. Counted from the origin of coordinates far away, n would hardly turn
/// without d changing by much more, and the digits of both would be lost.
template <int Dimension>
struct flat_kernel : plain_steps<Dimension + 1> {
    static constexpr int dimension = Dimension;
    using plain_steps<Dimension + 1>::parameters;
    static constexpr int rows = 1;
    static constexpr bool probed = true;
    static constexpr bool regular = false;
    static constexpr bool sees_reach = false;

    double offset = 0.0;
    double normal[Dimension] = {};

    void from_parameters(double const * origin, mlVector const & p, mlVector & x) const {
        x[0] = shifted(p[0], -1.0, p, origin);
        for (int k = 1; k < parameters; ++k) x[k] = p[k];
    }
    void to_parameters(double const * origin, mlVector const & x, mlVector & p) const {
        p[0] = shifted(x[0], 1.0, x, origin);
        for (int k = 1; k < parameters; ++k) p[k] = x[k];
    }
    void place(mlVector & x) {
        normalize(x);
        take(x);
    }
    void take(mlVector const & x) {
        offset = x[0];
        for (int k = 0; k < Dimension; ++k) normal[k] = x[k + 1];
    }
    double resolution(double reach) const {
        return std::numeric_limits<double>::epsilon() * (reach + std::abs(offset));
    }

    /// Gives the normal length 1; one of length 0 becomes the first axis.
    static void normalize(mlVector & p) {
        double n[Dimension];
        for (int k = 0; k < Dimension; ++k) n[k] = p[k + 1];
        bool const has_direction = scale_to_unit(n, Dimension);
        for (int k = 0; k < Dimension; ++k) p[k + 1] = has_direction ? n[k] : (k == 0 ? 1.0 : 0.0);
    }

    template <class Real>
    DATUMFIT_INLINE void distance(Real const (&q)[Dimension], Real const & radius, Real (&d)[1]) const {
        d[0] = along(q) - offset - radius;
    }

    template <class Real>
    DATUMFIT_INLINE void row(Real const (&q)[Dimension], Real const & radius, Real (&r)[1][parameters + 1]) const {
        Real const e = along(q);
        r[0][0] = Real(-1.0);
        for (int k = 0; k < Dimension; ++k) r[0][k + 1] = q[k] - e * normal[k];
        r[0][parameters] = e - offset - radius;
    }

private:
    template <class Real>
    DATUMFIT_INLINE Real along(Real const (&q)[Dimension]) const {
        Real e = q[0] * normal[0];
        for (int k = 1; k < Dimension; ++k) e = e + q[k] * normal[k];
        return e;
    }

    // d + sign (n · origin), the products and sums with their rounding errors carried along.
    static double shifted(double d, double sign, mlVector const & n, double const * origin) {
        double sum = d, rest = 0.0;
        for (int k = 0; k < Dimension; ++k) {
            double const factor = sign * n[k + 1];
            double const product = factor * origin[k];
            double const grown = sum + product;
            double const part = grown - sum;
            rest += std::fma(factor, origin[k], -product) + ((sum - (grown - part)) + (product - part));
            sum = grown;
        }
        return sum + rest;
    }
};

}  // namespace internal
}  // namespace datumfit
