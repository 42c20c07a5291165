#pragma once

#include <datumfit/foundation/surfaces/placed_surf.h>
#include <datumfit/foundation/surfaces/torus_shape.h>

/// A full ring torus, and what unequal scaling and shear make of it.
///
/// A point has four feet: the nearest and the farthest of the tube's circles on its side of the axis and opposite. On
/// the axis and on the centre circle of the tube, where circles of points are feet, it is the same number, opposite
/// ones. On a stretched torus there may be more. These are searched, on a grid that is refined until saddles and
/// extremes of the distance are as many: of feet that only just part from each other, as close to a centre of
/// curvature, such a pair may be left out. Normals point out of the tube.
///
/// Parameters of a point, both from -2 to 2, growing with the angle, with 1 for a quarter turn: the place around the
/// axis and that around the tube from its outside, on the torus as it was made.
class sknTorusSurf : public datumfit::internal::placed_surf<datumfit::internal::torus_shape> {
public:
    /// Invalid unless both radii are finite and 0 < minor < major, which leaves a hole.
    sknTorusSurf(giPoint3 const & centre, giUnitVec3 const & axis_dir, double major, double minor);
    ~sknTorusSurf() override;

    void clone(sknSurfPtr & copy) const override;
};
