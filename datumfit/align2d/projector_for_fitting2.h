#pragma once

#include <datumfit/align2d/fit_point_projector2.h>
#include <datumfit/align2d/projected_point2.h>

class sqProbedPoint2;

/// A projector that probed points can ask. For a nominal curve of its own a host writes one.
class sqProjectorForFitting2 : public sqFitPointProjector2 {
public:
    /// Writes the projection of a probed point, which must be there, moved by x; an invalid record when it has none.
    virtual void rotate_and_project(giXform2 const & x, sqProbedPoint2 const * point,
                                    sqProjectedPoint2 & result) const = 0;

    ~sqProjectorForFitting2() override;
};
