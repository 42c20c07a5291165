#pragma once

#include <datumfit/align2d/fit_point_projector2.h>
#include <datumfit/align2d/projected_point2.h>
#include <datumfit/foundation/containers/page_arr.h>
#include <datumfit/foundation/containers/page_arr_iterator.h>
#include <datumfit/foundation/containers/prf.h>

/// Something measured in the plane that can tell where it belongs on a nominal curve.
///
/// The curve fit asks nothing else of a measured point: not what it is, nor what it is aligned to. Both operations
/// write the record as a whole: the measured point under the transform, the place where it should be and the nominal
/// normal there; or an invalid record when there is no such place, and then this pass leaves the point out.
class sqFitPoint2 {
public:
    /// The projection of the point as it was measured, before anything is aligned.
    virtual void initial_projection(sqProjectedPoint2 & result, sqFitPointProjector2 const * projector) const = 0;

    /// The projection of the point moved by x.
    virtual void project_from_position(giXform2 const & x, sqProjectedPoint2 & result,
                                       sqFitPointProjector2 const * projector) const = 0;

    virtual ~sqFitPoint2();
};

using sqFitPoint2coPrf = coPrf<sqFitPoint2>;
using sqFitPoint2PtrcoPageArr = coPageArr<sqFitPoint2coPrf>;
using sqFitPoint2PtrcoPageArrcoIterator = coPageArrcoIterator<sqFitPoint2coPrf>;
