#pragma once

#include <datumfit/foundation/containers/dyn_arr.h>
#include <datumfit/foundation/containers/dyn_arr_iterator.h>
#include <datumfit/foundation/geometry/length.h>
#include <datumfit/foundation/geometry/point2.h>
#include <datumfit/foundation/geometry/unit_vec2.h>
#include <datumfit/foundation/geometry/xform2.h>

/// What the projection of a measured point onto a nominal curve gives: the point as it stood, the place where it should
/// be, and the nominal normal there.
///
/// For a probe centre the place is its foot on the curve, offset by the probe radius along the normal. The record made
/// by default is invalid: it tells of a point without a projection.
class sqProjectedPoint2 {
public:
    sqProjectedPoint2() = default;
    sqProjectedPoint2(giPoint2 const & measured, giPoint2 const & nominal, giUnitVec2 const & normal)
        : measured_point_(measured), nominal_point_(nominal), nominal_normal_(normal) {}

    giPoint2 const & measured_point() const { return measured_point_; }
    giPoint2 const & nominal_point() const { return nominal_point_; }
    giUnitVec2 const & nominal_normal() const { return nominal_normal_; }

    giLength distance() const { return measured_point_.distance(nominal_point_); }

    /// The distance along the normal, positive on the side that the normal points to.
    double signed_distance() const { return nominal_normal_.dot(measured_point_ - nominal_point_); }

    /// 1 when the measured point is not set, else 0.
    int invalid() const { return measured_point_.invalid() ? 1 : 0; }
    void set_invalid() { measured_point_.set_invalid(); }

private:
    giPoint2 measured_point_;
    giPoint2 nominal_point_;
    giUnitVec2 nominal_normal_;
};

using sqProjectedPoint2coDynArr = coDynArr<sqProjectedPoint2>;
using sqProjectedPoint2coDynArrcoIterator = coDynArrcoIterator<sqProjectedPoint2>;

/// How far a transform moves any of the measured points; records that are invalid don't count, and without others it
/// is 0.
double get_maximum_movement(sqProjectedPoint2coDynArr const & points, giXform2 const & transform);
