#pragma once

#include <datumfit/curved/ellipse/ellipse_foot.h>
#include <datumfit/foundation/maths/lane_model.h>
#include <datumfit/foundation/maths/vector.h>
#include <datumfit/foundation/utilities/math.h>

#include <cmath>
#include <limits>
#include <utility>

namespace datumfit {
namespace internal {

/// Ellipses in the plane: the distance is that of ellipse_foot, d = n · p - h.
///
/// Steps change the symmetric matrix that carries the unit circle to the ellipse, seen along the axes: a and b are its
/// diagonal, and its other entry turns them. That stays regular at a circle, where an angle would say nothing. As d is
/// stationary in n, its derivatives are those of -h: -a nx² / h, -b ny² / h and -(a + b) nx ny / h. The centre moves
/// along the axes, with -n. Parameters: the semi-axes a and b, the centre, the angle of the first axis.
struct ellipse_kernel {
    static constexpr int dimension = 2;
    static constexpr int parameters = 5;
    static constexpr int unknowns = 5;
    static constexpr int rows = 1;
    static constexpr bool probed = false;
    static constexpr bool regular = true;
    static constexpr bool sees_reach = false;

    double centre[2] = {};
    double cosine = 1.0;
    double sine = 0.0;
    ellipse_foot foot;

    void from_parameters(double const * origin, mlVector const & p, mlVector & x) const {
        for (int k = 0; k < parameters; ++k) x[k] = k == 2 || k == 3 ? p[k] - origin[k - 2] : p[k];
    }
    void to_parameters(double const * origin, mlVector const & x, mlVector & p) const {
        for (int k = 0; k < parameters; ++k) p[k] = k == 2 || k == 3 ? x[k] + origin[k - 2] : x[k];
    }

    /// Makes both semi-axes positive, the first one the longer, and the angle at most a right one to either side.
    void place(mlVector & x) {
        x[0] = std::abs(x[0]);
        x[1] = std::abs(x[1]);
        double turn = x[4];
        if (x[0] < x[1]) {
            std::swap(x[0], x[1]);
            turn += 0.5 * utMath::pi();
        }
        x[4] = std::remainder(turn, utMath::pi());
        take(x);
    }
    void take(mlVector const & x) {
        centre[0] = x[2];
        centre[1] = x[3];
        cosine = std::cos(x[4]);
        sine = std::sin(x[4]);
        foot.take(x[0], x[1]);
    }

    /// The axes of the changed matrix, by one rotation of Jacobi.
    void move(mlVector const & x, mlVector const & step, mlVector & to) const {
        double const a = x[0] + step[0], b = x[1] + step[1], shear = step[4];
        double const difference = 0.5 * (a - b);
        double const denominator =
            difference + std::copysign(std::sqrt(difference * difference + shear * shear), difference);
        double const tangent = denominator != 0.0 ? shear / denominator : 0.0;
        double const c = std::cos(x[4]), s = std::sin(x[4]);
        to[0] = a + tangent * shear;
        to[1] = b - tangent * shear;
        to[2] = x[2] + (c * step[2] - s * step[3]);
        to[3] = x[3] + (s * step[2] + c * step[3]);
        to[4] = x[4] + std::atan(tangent);
    }
    void difference(mlVector const & from, mlVector const & to, mlVector & step) const {
        double const c = std::cos(from[4]), s = std::sin(from[4]);
        double const dx = to[2] - from[2], dy = to[3] - from[3];
        double const turn = to[4] - from[4], eccentric = to[0] - to[1];
        double const turned = eccentric * std::sin(turn) * std::sin(turn);
        step[0] = to[0] - from[0] - turned;
        step[1] = to[1] - from[1] + turned;
        step[2] = c * dx + s * dy;
        step[3] = c * dy - s * dx;
        step[4] = eccentric * std::sin(turn) * std::cos(turn);
    }
    void scales(double, mlVector & s) const { s.fill(1.0); }
    double resolution(double reach) const {
        return std::numeric_limits<double>::epsilon() * (reach + std::abs(centre[0]) + std::abs(centre[1]) + foot.a);
    }

    template <class Real>
    DATUMFIT_INLINE void distance(Real const (&q)[2], Real const &, Real (&d)[1]) const {
        d[0] = find(q).distance;
    }

    template <class Real>
    DATUMFIT_INLINE void row(Real const (&q)[2], Real const &, Real (&r)[1][unknowns + 1]) const {
        auto const f = find(q);
        Real const wx = f.nx * f.over_h, wy = f.ny * f.over_h;
        r[0][0] = f.nx * wx * -foot.a;
        r[0][1] = f.ny * wy * -foot.b;
        r[0][2] = -f.nx;
        r[0][3] = -f.ny;
        r[0][4] = f.nx * wy * -(foot.a + foot.b);
        r[0][unknowns] = f.distance;
    }

private:
    template <class Real>
    DATUMFIT_INLINE ellipse_foot::found<Real> find(Real const (&q)[2]) const {
        Real const dx = q[0] - centre[0], dy = q[1] - centre[1];
        return foot.find<Real>(dx * cosine + dy * sine, dy * cosine - dx * sine);
    }
};

}  // namespace internal
}  // namespace datumfit
