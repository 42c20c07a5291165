#pragma once

#include <datumfit/foundation/surfaces/affine_placement.h>
#include <datumfit/foundation/surfaces/secular_equation.h>
#include <datumfit/foundation/surfaces/surf_feet.h>

#include <algorithm>

namespace datumfit {
namespace internal {

/// The unit sphere, the cylinder of radius 1 about the z axis or the cone x² + y² = z², the latter two between two
/// heights z, and what stretching makes of them.
///
/// Local coordinates are along the principal axes, in order of rising semi-axes; the third one of a cylinder or cone is
/// its axis. Where the semi-axes across that are equal to rounding, feet are told by closed formulas. Surface
/// parameters are those of the canonical shape: u around the z axis in quarter turns, v its height z, or for the sphere
/// its latitude in quarter turns.
class quadric_shape {
public:
    enum quadric { sphere, cylinder, cone };

    /// Between two heights in either order, which must differ.
    quadric_shape(quadric kind, double from, double to)
        : kind_(kind), low_(std::min(from, to)), high_(std::max(from, to)) {}

    bool third_edge_leads(giVector3 const (&edges)[3]) const;

    /// Takes the form that the placement has stretched the shape to, whose local axes become the principal ones. False
    /// if it has none.
    bool settle(affine_placement & placement);

    /// Adds the feet of the point q, in local coordinates; those beyond the heights by more than the rounding are none.
    void find_feet(affine_placement const & placement, double const (&q)[3], double rounding, surf_feet & feet) const;

    /// The canonical gradient at the place of these parameters, outward; null at the apex of a cone.
    void gradient(double u, double v, double (&g)[3]) const;

private:
    void find_round(double const (&q)[3], secular_equation::feet & found) const;

    quadric kind_;
    double low_, high_;  // infinite without bounds

    bool round_ = false;
    double semi_axis_ = 1.0;            // of a round form
    double sine_ = 0.0, cosine_ = 1.0;  // of the half angle of a round cone
    double height_rounding_ = 0.0;      // how much z may change for a change of 1 in each local coordinate
    secular_equation equation_;         // of the other forms
};

}  // namespace internal
}  // namespace datumfit
