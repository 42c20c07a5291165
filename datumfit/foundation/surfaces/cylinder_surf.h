#pragma once

#include <datumfit/foundation/surfaces/placed_surf.h>
#include <datumfit/foundation/surfaces/quadric_shape.h>

#include <limits>

/// The side of a circular cylinder, without end or between two planes across its axis; unequal scaling makes it an
/// elliptic one, and shear its planes oblique.
///
/// A point has two feet, or up to four on an elliptic cylinder, less those beyond the planes, which themselves count.
/// On the axis, where circles of points are feet, it is two opposite ones. Normals point away from the axis.
///
/// Parameters of a point: the place around the axis, from -2 to 2, growing with the angle, with 1 for a quarter turn;
/// and the height along the axis from the axis point. Both are those on the cylinder as it was made.
class sknCylinderSurf : public datumfit::internal::placed_surf<datumfit::internal::quadric_shape> {
public:
    /// Between the heights `from` and `to` along the axis from axis_point, given in either order and, for no end, as
    /// infinities. Invalid unless the radius is positive and finite, and the heights differ.
    sknCylinderSurf(giPoint3 const & axis_point, giUnitVec3 const & axis_dir, double radius,
                    double from = -std::numeric_limits<double>::infinity(),
                    double to = std::numeric_limits<double>::infinity());
    ~sknCylinderSurf() override;

    void clone(sknSurfPtr & copy) const override;
};
