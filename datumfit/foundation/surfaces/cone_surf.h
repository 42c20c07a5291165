#pragma once

#include <datumfit/foundation/geometry/angle.h>
#include <datumfit/foundation/surfaces/placed_surf.h>
#include <datumfit/foundation/surfaces/quadric_shape.h>

#include <limits>

/// The side of a circular cone: a nappe, the frustum between two planes across its axis, or both nappes; unequal
/// scaling makes it an elliptic one, and shear its planes oblique.
///
/// On both nappes together a point has two feet, or up to four on an elliptic cone. Those beyond the planes are none;
/// the planes themselves count. The apex is the foot of points that lie over it at right angles to a line of the cone,
/// and the surface has no normal there; it is not listed where it is only the nearest point. On the axis, where
/// circles of points are feet, it is two opposite ones. Normals point away from the axis.
///
/// Parameters of a point: the place around the axis, from -2 to 2, growing with the angle, with 1 for a quarter turn;
/// and the depth below the apex. Both are those on the cone as it was made.
class sknConeSurf : public datumfit::internal::placed_surf<datumfit::internal::quadric_shape> {
public:
    /// axis_dir points from the surface to the apex, as fits of cones tell it. The surface lies between the depths
    /// `from` and `to` below the apex, against axis_dir, given in either order: without end when infinite, and on the
    /// nappe beyond the apex where negative. Invalid unless the half angle is above 0 and below 90 degrees, and the
    /// depths differ.
    sknConeSurf(giPoint3 const & apex, giUnitVec3 const & axis_dir, giAngle const & half_angle, double from = 0.0,
                double to = std::numeric_limits<double>::infinity());
    ~sknConeSurf() override;

    void clone(sknSurfPtr & copy) const override;
};
