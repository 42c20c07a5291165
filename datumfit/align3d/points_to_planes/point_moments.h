#pragma once

#include <datumfit/align3d/points_to_planes/normal_equations.h>

#if !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpsabi"
#endif

namespace datumfit {
namespace internal {

/// What a rotation about the pivot does to points: u moves by r x u, so that with K v = u x v the normal equations are
/// K^T K and K e.
struct point_moments {
    static constexpr int sums = 9;  // of the squares and products of the coordinates of u, and of u x e

    template <class Real>
    static DATUMFIT_INLINE void add(seen_record<Real> const & r, Real * s) {
        triple<Real> const m = r.u.cross(r.e);
        s[0] += r.u.x * r.u.x;
        s[1] += r.u.y * r.u.y;
        s[2] += r.u.z * r.u.z;
        s[3] += r.u.x * r.u.y;
        s[4] += r.u.x * r.u.z;
        s[5] += r.u.y * r.u.z;
        s[6] += m.x;
        s[7] += m.y;
        s[8] += m.z;
    }

    /// The rotation unknowns are number `first` and the next two.
    static void write(double const * s, int first, scaled_equations & equations) {
        int const x = first, y = first + 1, z = first + 2;
        equations.add(x, x, s[1] + s[2]);
        equations.add(y, y, s[0] + s[2]);
        equations.add(z, z, s[0] + s[1]);
        equations.add(y, x, -s[3]);
        equations.add(z, x, -s[4]);
        equations.add(z, y, -s[5]);
        for (int k = 0; k < 3; ++k) equations.add(first + k, s[6 + k]);
    }

    /// That of the distances of the points from the pivot.
    static double sum_of_squares(double const * s) { return s[0] + s[1] + s[2]; }
};

}  // namespace internal
}  // namespace datumfit

#if !defined(__clang__)
#pragma GCC diagnostic pop
#endif
