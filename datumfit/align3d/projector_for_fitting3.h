#pragma once

#include <datumfit/align3d/fit_point_projector3.h>
#include <datumfit/align3d/probed_point3.h>
#include <datumfit/foundation/containers/prf.h>

/// The base of projectors that know what to do with a probed point; itself it knows of no nominal object.
class sqProjectorForFitting3 : public sqFitPointProjector3 {
public:
    /// Moves a probed point by x and projects it. This one leaves the result as it is; those derived from it write the
    /// whole record.
    virtual void rotate_and_project(giXform3 const & x, sqProbedPoint3 const * point, sqProjectedPoint3 & result) const;

    ~sqProjectorForFitting3() override;
};

using sqProjectorForFitting3coPrf = coPrf<sqProjectorForFitting3>;
