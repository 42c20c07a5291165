#pragma once

#include <datumfit/align3d/projector_for_fitting3.h>
#include <datumfit/foundation/surfaces/surf.h>

/// Projects probed points to a surface that stands off the nominal one by the probe radius.
///
/// The nominal place of a probe centre is its foot on the surface, carried along the normal by the radius, so that the
/// record's deviation is the form deviation, and nothing needs correction for the radius any more.
class sqSurfProjectorForFitting3 : public sqProjectorForFitting3 {
public:
    /// The surface is referred to, not copied: it must outlive the projector.
    explicit sqSurfProjectorForFitting3(sknSurf const & surface) : surface_(&surface) {}

    /// Chooses among the feet that the surface gives for the moved centre c.
    ///
    /// A foot s counts if the surface has a normal there and c lies along it: the sine of the angle between the normal
    /// and c - s is at most 0.01. The normal in the result is the direction of c - s, turned to the side of the
    /// approximate normal; with c nearer than 1e-4 to s (in the unit of the coordinates) it is the surface's own,
    /// turned to that side. With v the unit vector of c - s, or c - s itself where c is that near, and R the radius,
    /// the foot of the least |n . v - R| is taken: for a positive radius that prefers feet with c on the side of the
    /// approximate normal. Among equals it is the first that the surface lists, so that a surface should list the
    /// nearest foot first.
    ///
    /// The result is invalid when no foot counts, as beside the edge of a surface, or when the point or its approximate
    /// normal is not set. The point must be there.
    void rotate_and_project(giXform3 const & x, sqProbedPoint3 const * point,
                            sqProjectedPoint3 & result) const override;

    ~sqSurfProjectorForFitting3() override;

private:
    sknSurf const * surface_;
};
