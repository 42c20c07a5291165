#pragma once

#include <datumfit/foundation/surfaces/placed_surf.h>
#include <datumfit/foundation/surfaces/quadric_shape.h>

/// A full sphere; unequal scaling or shear makes it an ellipsoid.
///
/// A point has two feet, or up to six on an ellipsoid. At the centre, where all points are feet, it is two opposite
/// ones; of the circles of feet on an axis of revolution too. Normals point outward.
///
/// Parameters of a point: its longitude, from -2 to 2, and its latitude, from -1 to 1, on the sphere as it was made.
/// They grow with the angle and are right at each eighth of a turn, with 1 for a quarter turn.
class sknSphereSurf : public datumfit::internal::placed_surf<datumfit::internal::quadric_shape> {
public:
    /// Invalid unless the radius is positive and finite.
    sknSphereSurf(giPoint3 const & centre, double radius);
    ~sknSphereSurf() override;

    void clone(sknSurfPtr & copy) const override;
};
