#pragma once

#include <datumfit/align2d/chain2.h>
#include <datumfit/align2d/chain_element2.h>
#include <datumfit/align2d/projector_for_fitting2.h>
#include <datumfit/foundation/geometry/angle.h>

/// Projects probed points to a chain of line segments and arcs that stands off the nominal one by the probe radius.
///
/// The nominal place of a probe centre is its foot on the chain, carried along the normal by the radius, so that the
/// record's deviation is the form deviation, and nothing needs correction for the radius any more.
///
/// Feet are perpendicular. A polyline that approximates a smooth curve has wedges in front of its convex corners, and
/// far behind the hollow ones, from which none of its segments has a foot; there the corner itself is the foot, and the
/// direction to the point the normal, if the corner turns by no more than `smooth_turn`. In front of sharper corners,
/// as beside the ends of an open chain, a point has no foot. The default of 25 degrees is the corner of no regular
/// polygon: from 15 corners on a polygon is taken for a round, and up to 14 for a polygon.
///
/// The time of a projection grows with the logarithm of the number of elements where the nearest foot will do; a point
/// that none lies on the right side of is compared with all.
class sqChainProjector2 : public sqProjectorForFitting2 {
public:
    /// A polyline through the vertices in their order, and back to the first one when closed is not 0. Repeated
    /// vertices count once. With fewer than two different ones, or one not set or not finite, the chain is invalid.
    sqChainProjector2(giPoint2coDynArr const & vertices, int closed,
                      giAngle const & smooth_turn = giAngle(giAngleDegrees, 25.0));

    /// A chain of elements in their order. Where an element ends within 1e-4 of the chain's size of the start of the
    /// next one, the two meet in a corner, and so may the last and the first; where not, the chain is in parts, so that
    /// one projector may hold several contours. An element shorter than 1e-8 of that size doesn't count. With one that
    /// is invalid, or none of a length, the chain is invalid.
    explicit sqChainProjector2(sqChainElement2coDynArr const & elements,
                               giAngle const & smooth_turn = giAngle(giAngleDegrees, 25.0));

    /// Whether there is no chain. Nothing has a projection then.
    bool invalid() const { return chain_.empty(); }

    /// All feet of a point, nearest first, of equally near ones the first along the chain. Feet within 1e-9 of the
    /// chain's size of a corner are one. For the centre of an arc it is the arc's middle.
    void find_feet(giPoint2 const & p, sqChainFoot2coDynArr & feet) const;

    /// Chooses among the feet of the moved centre c.
    ///
    /// The normal n at a foot s is turned to the side of the approximate normal if c lies within 1e-4 of s (in the unit
    /// of the coordinates); else it is the direction of c - s or its opposite, whichever has the approximate normal on
    /// its side. With v the unit vector of c - s, or c - s itself where c is that near, and R the radius, the foot of
    /// the least |n . v - R| is taken: for a positive radius that prefers feet with c on the side of the approximate
    /// normal. Among equals it is the nearest. Where the approximate normal is not set, the left of the chain stands
    /// for it.
    ///
    /// The result is invalid when there is no foot, or when the point is not set or not finite.
    void rotate_and_project(giXform2 const & x, sqProbedPoint2 const * point,
                            sqProjectedPoint2 & result) const override;

    ~sqChainProjector2() override;

private:
    datumfit::internal::chain2 chain_;
};
