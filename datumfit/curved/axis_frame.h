#pragma once

#include <datumfit/foundation/geometry/point3.h>
#include <datumfit/foundation/geometry/scale_to_unit.h>
#include <datumfit/foundation/maths/lane_model.h>
#include <datumfit/foundation/maths/vector.h>
#include <datumfit/primitives/near_surface.h>
#include <datumfit/primitives/point_sums.h>

#include <cmath>
#include <memory>

namespace datumfit {
namespace internal {

/// The parameters of kernels whose first three are a point: it alone is counted from the origin of the model.
struct point_first {
    static void from_parameters(double const * origin, mlVector const & p, mlVector & x) {
        for (int k = 0; k < p.dimension(); ++k) x[k] = k < 3 ? p[k] - origin[k] : p[k];
    }
    static void to_parameters(double const * origin, mlVector const & x, mlVector & p) {
        for (int k = 0; k < x.dimension(); ++k) p[k] = k < 3 ? x[k] + origin[k] : x[k];
    }
};

/// An axis in space and two directions across it, for the kernels of round surfaces.
///
/// The first six entries of x are a point of the axis and its direction. The first four of a step say by how much the
/// axis is shifted along the two directions across it, and then how far it is tilted towards them about its point: all
/// the ways in which an axis can change, and each once.
struct axis_frame {
    static constexpr int unknowns = 4;

    double point[3] = {};
    double along[3] = {};
    double across[2][3] = {};

    /// Gives the direction unit length (that of length 0 becomes the x axis) and moves the point along the axis to
    /// where it is nearest to the origin. Gives how far the point moved against the direction.
    static double normalize(mlVector & x) {
        double * const p = x.data();
        double * const a = p + 3;
        if (!scale_to_unit(a, 3) && a[0] == 0.0 && a[1] == 0.0 && a[2] == 0.0) a[0] = 1.0;
        double const s = p[0] * a[0] + p[1] * a[1] + p[2] * a[2];
        for (int k = 0; k < 3; ++k) p[k] -= s * a[k];
        return s;
    }

    /// Takes the axis of x, whose direction need not have unit length.
    void take(mlVector const & x) {
        for (int k = 0; k < 3; ++k) {
            point[k] = x[k];
            along[k] = x[3 + k];
        }
        scale_to_unit(along, 3);

        // Built on the greatest component, the two directions turn as smoothly as the axis, also near a coordinate
        // axis.
        int greatest = 0;
        for (int k = 1; k < 3; ++k) {
            if (std::abs(along[k]) > std::abs(along[greatest])) greatest = k;
        }
        double(&u)[3] = across[0];
        double(&v)[3] = across[1];
        int const next = (greatest + 1) % 3;
        for (int k = 0; k < 3; ++k) u[k] = (k == next ? 1.0 : 0.0) - along[next] * along[k];
        scale_to_unit(u, 3);
        for (int k = 0; k < 3; ++k) {
            int const i = (k + 1) % 3, j = (k + 2) % 3;
            v[k] = along[i] * u[j] - along[j] * u[i];
        }
    }

    static void move(mlVector const & x, mlVector const & step, mlVector & to) {
        axis_frame frame;
        frame.take(x);
        for (int k = 0; k < 3; ++k) {
            to[k] = x[k] + (step[0] * frame.across[0][k] + step[1] * frame.across[1][k]);
            to[3 + k] = x[3 + k] + (step[2] * frame.across[0][k] + step[3] * frame.across[1][k]);
        }
    }

    static void difference(mlVector const & from, mlVector const & to, mlVector & step) {
        axis_frame frame;
        frame.take(from);
        for (int m = 0; m < 2; ++m) {
            step[m] = step[2 + m] = 0.0;
            for (int k = 0; k < 3; ++k) {
                step[m] += (to[k] - from[k]) * frame.across[m][k];
                step[2 + m] += (to[3 + k] - from[3 + k]) * frame.across[m][k];
            }
        }
    }

    /// Shifts count as lengths, tilts by the length of their lever.
    static void scales(double reach, mlVector & s) {
        for (int k = 0; k < unknowns; ++k) s[k] = k < 2 ? 1.0 : reach;
    }

    /// The section through the origin of a surface about this axis that has such a radius there.
    near_surface<2> section(double radius, double how_far) const {
        double centre[2];
        near_surface<2> surface;
        section_of(point, centre);
        surface.see(centre, radius, how_far);
        return surface;
    }

    /// Writes the coordinates across the axis of a point, from the origin.
    void section_of(double const * p, double (&centre)[2]) const {
        for (int m = 0; m < 2; ++m) centre[m] = p[0] * across[m][0] + p[1] * across[m][1] + p[2] * across[m][2];
    }

    /// Puts the axis of x, whose direction is the new one, so far from the origin against a normal, given across this
    /// axis, of the section there.
    void turn_section(double const (&n)[2], double distance, mlVector & x) const {
        double * const a = x.data() + 3;
        double normal[3];
        scale_to_unit(a, 3);
        for (int k = 0; k < 3; ++k) normal[k] = n[0] * across[0][k] + n[1] * across[1][k];
        double const s = normal[0] * a[0] + normal[1] * a[1] + normal[2] * a[2];
        for (int k = 0; k < 3; ++k) normal[k] -= s * a[k];
        scale_to_unit(normal, 3);
        for (int k = 0; k < 3; ++k) x.data()[k] = -distance * normal[k];
    }

    /// How far the point of the axis lies from the origin, at most.
    double reach() const { return std::abs(point[0]) + std::abs(point[1]) + std::abs(point[2]); }

    /// Writes the coordinates of q from the point of the axis, across the axis and along it.
    template <class Real>
    DATUMFIT_INLINE void see(Real const (&q)[3], Real (&w)[2], Real & g) const {
        Real v[3];
        for (int k = 0; k < 3; ++k) v[k] = q[k] - point[k];
        for (int m = 0; m < 2; ++m) w[m] = v[0] * across[m][0] + v[1] * across[m][1] + v[2] * across[m][2];
        g = v[0] * along[0] + v[1] * along[1] + v[2] * along[2];
    }

    /// Writes the distance f from the axis, and the direction away from it; none within 1e-7 of the axis.
    template <class Real>
    DATUMFIT_INLINE static void away(Real (&w)[2], Real & f) {
        constexpr double lost_direction = 1e-7;
        f = square_root(w[0] * w[0] + w[1] * w[1]);
        Real const over = where_above(f, lost_direction, Real(1.0) / f);
        for (int m = 0; m < 2; ++m) w[m] = w[m] * over;
    }
};

/// The passes of a kernel with an axis, over points seen from their mean: tilts about a place near it and shifts hardly
/// mix.
template <class Kernel>
std::unique_ptr<all_points_model> model_about_mean(giPoint3coDynArr const & points, double const * radii) {
    double mean[3] = {};
    if (points.size() > 0) mean_of_points(plain(points), 3, points.size(), mean);
    return std::make_unique<lane_model<Kernel>>(plain(points), radii, points.size(), mean);
}

}  // namespace internal
}  // namespace datumfit
