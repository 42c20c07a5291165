#pragma once

#include <datumfit/foundation/surfaces/affine_placement.h>
#include <datumfit/foundation/surfaces/surf_feet.h>

#include <cstdint>

namespace datumfit {
namespace internal {

/// The torus about the z axis with these radii, major > minor, and what stretching makes of it. Surface parameters are
/// those of the torus before the stretch, both in quarter turns: u around the axis, v around the tube from its outside.
///
/// A torus that is not stretched has closed formulas. A stretched one is searched: the two derivatives of the square
/// distance by u and v are looked at on a grid, and from each cell where both may vanish Newton's method goes to the
/// foot. As many feet are minima and maxima as are saddles (by Morse, the Euler characteristic of the torus being 0):
/// where they are not, a finer grid follows.
class torus_shape {
public:
    torus_shape(double major, double minor) : major_(major), minor_(minor) {}

    bool third_edge_leads(giVector3 const (&)[3]) const { return false; }

    /// Takes the form that the placement has stretched the torus to.
    bool settle(affine_placement & placement);

    /// Adds the feet of the point q, in local coordinates.
    void find_feet(affine_placement const & placement, double const (&q)[3], double, surf_feet & feet) const;

    /// The canonical normal at the place of these parameters, outward.
    void gradient(double u, double v, double (&g)[3]) const;

private:
    // A place on the torus: cosines and sines around the axis and around the tube.
    struct place {
        double cu, su, cv, sv;
    };
    struct critical {
        place at;
        double square;  // of the distance
        int index;      // 1 for minima and maxima, -1 for saddles, 0 where they run together
    };
    struct criticals;
    struct dual_point;
    struct signs;

    void find_round(affine_placement const & placement, double const (&q)[3], surf_feet & feet) const;
    void find_stretched(matrix3 const & S, double const (&q)[3], criticals & found) const;
    void search(matrix3 const & S, double const (&q)[3], int stride, criticals & found) const;
    signs signs_along(dual_point const & q, int row, int stride) const;
    bool polish(matrix3 const & S, double const (&q)[3], critical & c) const;
    void local_place(matrix3 const & S, place const & at, double (&y)[3]) const;

    // The grid: one direction e = (c, s, 0) and that across it, e', with products by G = S^T S, z the unit vector.
    static constexpr int finest = 64;
    struct direction {
        double c, s;
        double e_G_e, f_G_e, z_G_e, z_G_f;  // f = e'
    };

    double major_, minor_;
    bool round_ = false;
    double z_G_z_ = 1.0;
    double bend_ = 0.0;  // of the square distance, for a point at the centre
    direction directions_[finest] = {};
};

}  // namespace internal
}  // namespace datumfit
