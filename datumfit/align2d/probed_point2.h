#pragma once

#include <datumfit/align2d/fit_point2.h>
#include <datumfit/foundation/geometry/unit_vec2.h>

/// A reading of a touch probe in the plane: the centre of its ball, off the curve by the ball's radius. With radius 0,
/// a point of the curve itself, as a camera sees it.
class sqProbedPoint2 : public sqFitPoint2 {
public:
    /// A point that is not set. It has no projection.
    sqProbedPoint2() = default;

    /// @param normal  from the curve to the centre, as far as the measurement knows it: it only chooses the side. One
    ///                that is not set leaves the choice to the projector.
    /// @param radius  of the ball, in the unit of the centre
    explicit sqProbedPoint2(giPoint2 const & centre, giUnitVec2 const & normal = giUnitVec2(), double radius = 0.0)
        : measured_point_(centre), approximate_normal_(normal), radius_(radius) {}

    /// The projection under the identity.
    void initial_projection(sqProjectedPoint2 & result, sqFitPointProjector2 const * projector) const override;

    /// Asks rotate_and_project() of the projector. With none, or one that is no sqProjectorForFitting2, the result is
    /// invalid.
    void project_from_position(giXform2 const & x, sqProjectedPoint2 & result,
                               sqFitPointProjector2 const * projector) const override;

    ~sqProbedPoint2() override;

    virtual giPoint2 const & measured_point() const;
    virtual giUnitVec2 const & approximate_normal() const;
    virtual double radius() const;

private:
    giPoint2 measured_point_;
    giUnitVec2 approximate_normal_;
    double radius_ = 0.0;
};
