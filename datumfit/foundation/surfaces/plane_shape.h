#pragma once

#include <datumfit/foundation/surfaces/affine_placement.h>
#include <datumfit/foundation/surfaces/surf_feet.h>

namespace datumfit {
namespace internal {

/// The plane z = 0, or the part of it with |x| and |y| up to `bound`. Local coordinates have z = 0 there too. Surface
/// parameters are x and y.
class plane_shape {
public:
    explicit plane_shape(double bound) : bound_(bound) {}

    bool third_edge_leads(giVector3 const (&)[3]) const { return false; }
    bool settle(affine_placement &) { return true; }

    /// Adds the foot of the point q, in local coordinates, unless it is out of bounds by more than the rounding.
    void find_feet(affine_placement const & placement, double const (&q)[3], double rounding, surf_feet & feet) const {
        double const y[] = {q[0], q[1], 0.0};
        double x[3];
        placement.unstretch().times(y, x);
        for (int k = 0; k < 2; ++k) {
            double const * const row = placement.unstretch().rows[k];
            if (!(std::abs(x[k]) <= bound_ + rounding * (std::abs(row[0]) + std::abs(row[1])))) return;
        }
        feet.add(y, x[0], x[1]);
    }

    void gradient(double, double, double (&g)[3]) const {
        g[0] = g[1] = 0.0;
        g[2] = 1.0;
    }

private:
    double bound_;
};

}  // namespace internal
}  // namespace datumfit
