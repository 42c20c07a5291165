#pragma once

#include <datumfit/foundation/geometry/plane.h>
#include <datumfit/foundation/surfaces/placed_surf.h>
#include <datumfit/foundation/surfaces/plane_shape.h>

/// A plane, or a parallelogram of it.
///
/// A point has one foot, or none when that would lie beside the parallelogram; the rim belongs to it. The outward side
/// of a plane is that of its normal. Under all transforms a plane stays one, and a parallelogram too.
///
/// Parameters of a point: those of a parallelogram are the shares of the two half edges, from -1 to 1; those of a plane
/// are lengths along two directions across each other, from the plane's point, before transforms.
class sknPlaneSurf : public datumfit::internal::placed_surf<datumfit::internal::plane_shape> {
public:
    /// Unbounded.
    explicit sknPlaneSurf(giPlane const & plane);

    /// The parallelogram of all points centre + u half_u + v half_v with u and v from -1 to 1. The outward side is that
    /// of half_u × half_v. Half edges without length, or along each other, make it invalid.
    sknPlaneSurf(giPoint3 const & centre, giVector3 const & half_u, giVector3 const & half_v);

    ~sknPlaneSurf() override;

    void clone(sknSurfPtr & copy) const override;
};
