#pragma once

#include <datumfit/foundation/containers/dyn_arr.h>
#include <datumfit/foundation/containers/dyn_arr_iterator.h>
#include <datumfit/foundation/geometry/plane.h>
#include <datumfit/foundation/geometry/point3.h>
#include <datumfit/foundation/geometry/vector3.h>

/// A measured point and the nominal plane that it should lie on.
///
/// Under a transform X the signed deviation is (X point - plane_point) . normal: as the normal carries the weight, it
/// is the deviation in the unit of the coordinates, times the weight.
struct sqPlaneAndPoint {
    /// Points and normal are invalid, and the rest says: not located, no band, weight 0.
    sqPlaneAndPoint() = default;

    /// Scales the normal by the weight, which may be any number. Ends of the band (-DBL_MAX and DBL_MAX for none) are
    /// lengths, not weighted.
    sqPlaneAndPoint(giPoint3 const & point, giPoint3 const & plane_point, giVector3 const & normal, int located,
                    double lower, double upper, double weight);
    sqPlaneAndPoint(giPoint3 const & point, giPlane const & plane, int located, double lower, double upper,
                    double weight);

    giPoint3 plane_point;  ///< a point of the plane; with `located`, the nominal place of `point` itself
    giVector3 normal;      ///< of the plane, times the weight
    giPoint3 point;        ///< the measured point, which a transform moves
    int located = 0;       ///< not 0 when plane_point is the nominal place of `point`, not just a point of the plane
    double lower = 0.0, upper = 0.0, weight = 0.0;
};

using sqPlaneAndPointcoDynArr = coDynArr<sqPlaneAndPoint>;
using sqPlaneAndPointcoDynArrcoIterator = coDynArrcoIterator<sqPlaneAndPoint>;
