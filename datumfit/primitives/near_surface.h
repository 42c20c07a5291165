#pragma once

#include <datumfit/foundation/maths/lanes.h>

#include <algorithm>
#include <cmath>

namespace datumfit {
namespace internal {

/// A round surface as it looks from the points, when these cover a small part of it only.
///
/// There a centre that moves away and a radius that grows do almost the same, and a fit by them creeps along a valley;
/// the way to a surface that bends to the other side leads through infinity. What the points tell is how far the
/// surface is off, how it slopes and how it bends. So steps are: the shift n of the surface along its normal, its
/// slopes, each times the reach of the points, and the sagitta of its bend within that reach. A bend of 0 is a place
/// like any other. The origin lies among the points.
template <int Dimension>
struct near_surface {
    static constexpr int sides = Dimension - 1;

    bool near = false;  // whether the surface is seen in this way
    double reach = 0.0;
    double normal[Dimension] = {};  // from the centre to the origin
    double side[sides][Dimension] = {};
    double distance = 0.0;  // of the origin from the centre
    double radius = 0.0;

    void see(double const * centre, double r, double how_far) {
        reach = how_far;
        radius = r;
        double square = 0.0;
        for (int k = 0; k < Dimension; ++k) square += centre[k] * centre[k];
        distance = std::sqrt(square);
        near = reach > 0.0 && radius > reach && distance > 0.5 * radius && std::isfinite(distance);
        if (!near) return;
        for (int k = 0; k < Dimension; ++k) normal[k] = -centre[k] / distance;
        find_sides();
    }

    /// Of a step (n, slopes, sagitta), the unit normal and the signed distance and radius behind it: negative when the
    /// surface has come to bend to the other side. The centre is at minus the distance times the normal.
    void move(double const * step, double (&n)[Dimension], double & d, double & r) const {
        double square = 0.0;
        for (int k = 0; k < Dimension; ++k) {
            n[k] = normal[k];
            for (int j = 0; j < sides; ++j) n[k] -= step[1 + j] / reach * side[j][k];
            square += n[k] * n[k];
        }
        for (int k = 0; k < Dimension; ++k) n[k] /= std::sqrt(square);
        double const bend = 1.0 / radius - 2.0 * step[1 + sides] / (reach * reach);
        double const least = least_bend / reach;
        r = 1.0 / (std::abs(bend) > least ? bend : std::copysign(least, bend));
        d = r + ((distance - radius) - step[0]);
    }

    /// The step to a surface of another centre and radius.
    void difference(double const * centre, double r, double * step) const {
        double along = 0.0, square = 0.0;
        for (int k = 0; k < Dimension; ++k) {
            along -= centre[k] * normal[k];
            square += centre[k] * centre[k];
        }
        double const sense = along < 0.0 ? -1.0 : 1.0;
        double const d = sense * std::sqrt(square);
        step[0] = (distance - radius) - (d - sense * r);
        for (int j = 0; j < sides; ++j) {
            step[1 + j] = 0.0;
            for (int k = 0; k < Dimension; ++k) step[1 + j] += reach * (centre[k] / d) * side[j][k];
        }
        step[1 + sides] = 0.5 * reach * reach * (1.0 / radius - sense / r);
    }

    /// The derivatives of a point's distance by the step, for the direction e from the centre to the point.
    template <class Real>
    DATUMFIT_INLINE void row(Real const (&e)[Dimension], Real (&r)[Dimension + 1]) const {
        Real c = e[0] * normal[0];
        for (int k = 1; k < Dimension; ++k) c = c + e[k] * normal[k];
        Real across(0.0);
        for (int j = 0; j < sides; ++j) {
            Real s = e[0] * side[j][0];
            for (int k = 1; k < Dimension; ++k) s = s + e[k] * side[j][k];
            across = across + s * s;
            r[1 + j] = s * (-distance / reach);
        }
        r[0] = -c;
        // 1 - c, without cancellation where c is near 1.
        Real const versine = where_above(c, 0.0, across / (c + 1.0)) + where_above(-c, 0.0, Real(1.0) - c) +
                             (Real(1.0) - where_above(c, 0.0, Real(1.0)) - where_above(-c, 0.0, Real(1.0)));
        r[1 + sides] = versine * (-2.0 * (radius / reach) * (radius / reach));
    }

private:
    // The least bend, times the reach, that is told from none.
    static constexpr double least_bend = 0x1p-46;

    void find_sides() {
        if constexpr (Dimension == 2) {
            side[0][0] = -normal[1];
            side[0][1] = normal[0];
        } else {
            int greatest = 0;
            for (int k = 1; k < 3; ++k) {
                if (std::abs(normal[k]) > std::abs(normal[greatest])) greatest = k;
            }
            int const next = (greatest + 1) % 3;
            double square = 0.0;
            for (int k = 0; k < 3; ++k) {
                side[0][k] = (k == next ? 1.0 : 0.0) - normal[next] * normal[k];
                square += side[0][k] * side[0][k];
            }
            for (int k = 0; k < 3; ++k) side[0][k] /= std::sqrt(square);
            for (int k = 0; k < 3; ++k) {
                int const i = (k + 1) % 3, j = (k + 2) % 3;
                side[1][k] = normal[i] * side[0][j] - normal[j] * side[0][i];
            }
        }
    }
};

}  // namespace internal
}  // namespace datumfit
