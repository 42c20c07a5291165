#pragma once

#include <datumfit/align3d/fit_point3.h>
#include <datumfit/foundation/geometry/unit_vec3.h>

/// A reading of a touch probe: the centre of its ball, off the surface by the ball's radius.
class sqProbedPoint3 : public sqFitPoint3 {
public:
    /// A point that is not set. It has no projection.
    sqProbedPoint3() = default;

    /// @param normal  from the surface to the centre, as far as the measurement knows it: it only chooses the side
    /// @param radius  of the ball, in the unit of the centre; 0 for points of the surface itself
    sqProbedPoint3(giPoint3 const & centre, giUnitVec3 const & normal, double radius)
        : measured_point_(centre), approximate_normal_(normal), radius_(radius) {}

    /// The projection under the identity.
    void initial_projection(sqProjectedPoint3 & result, sqFitPointProjector3 const * projector) const override;

    /// Asks rotate_and_project() of the projector, which therefore must be a sqProjectorForFitting3, whatever its type
    /// here says: no other projector may be given to a probed point. Without a projector the result is invalid.
    void project_from_position(giXform3 const & x, sqProjectedPoint3 & result,
                               sqFitPointProjector3 const * projector) const override;

    ~sqProbedPoint3() override;

    virtual giPoint3 const & measured_point() const;
    virtual giUnitVec3 const & approximate_normal() const;
    virtual double radius() const;

private:
    giPoint3 measured_point_;
    giUnitVec3 approximate_normal_;
    double radius_ = 0.0;
};
