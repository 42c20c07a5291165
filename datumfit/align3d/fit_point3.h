#pragma once

#include <datumfit/align3d/projected_point3.h>
#include <datumfit/foundation/containers/page_arr.h>
#include <datumfit/foundation/containers/page_arr_iterator.h>
#include <datumfit/foundation/containers/prf.h>

class sqFitPointProjector3;

/// Something measured that can tell where it belongs on a nominal object.
///
/// The surface fits ask nothing else of a measured point: not what it is, nor what it is aligned to. Both operations
/// write the record as a whole: the measured point under the transform, the place where it should be and the nominal
/// normal there; or an invalid record when there is no such place, and then this pass leaves the point out.
class sqFitPoint3 {
public:
    /// The projection of the point as it was measured, before anything is aligned.
    virtual void initial_projection(sqProjectedPoint3 & result, sqFitPointProjector3 const * projector) const = 0;

    /// The projection of the point moved by x.
    virtual void project_from_position(giXform3 const & x, sqProjectedPoint3 & result,
                                       sqFitPointProjector3 const * projector) const = 0;

    virtual ~sqFitPoint3();
};

using sqFitPoint3coPrf = coPrf<sqFitPoint3>;
using sqFitPoint3PtrcoPageArr = coPageArr<sqFitPoint3coPrf>;
using sqFitPoint3PtrcoPageArrcoIterator = coPageArrcoIterator<sqFitPoint3coPrf>;
