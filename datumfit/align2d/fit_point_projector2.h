#pragma once

/// Knows the nominal curve that measured points are projected to.
///
/// The curve fit only hands a projector on to the points: how they ask it is between the two of them. For points and a
/// projector that are ready to use see sqProbedPoint2 and sqChainProjector2.
class sqFitPointProjector2 {
public:
    virtual ~sqFitPointProjector2();
};
