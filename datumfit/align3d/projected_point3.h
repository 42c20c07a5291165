#pragma once

#include <datumfit/foundation/containers/dyn_arr.h>
#include <datumfit/foundation/containers/dyn_arr_iterator.h>
#include <datumfit/foundation/geometry/length.h>
#include <datumfit/foundation/geometry/point3.h>
#include <datumfit/foundation/geometry/unit_vec3.h>
#include <datumfit/foundation/geometry/xform3.h>

/// What the projection of a measured point onto a nominal object gives: the point as it stood, the place where it
/// should be, and the nominal normal there.
///
/// For a probe centre the place is its foot on the object, offset by the probe radius along the normal. The record
/// made by default is invalid: it tells of a point without a projection.
class sqProjectedPoint3 {
public:
    sqProjectedPoint3() = default;
    sqProjectedPoint3(giPoint3 const & measured, giPoint3 const & nominal, giUnitVec3 const & normal)
        : measured_point_(measured), nominal_point_(nominal), nominal_normal_(normal) {}

    giPoint3 const & measured_point() const { return measured_point_; }
    giPoint3 const & nominal_point() const { return nominal_point_; }
    giUnitVec3 const & nominal_normal() const { return nominal_normal_; }

    giLength distance() const { return measured_point_.distance(nominal_point_); }

    /// The distance along the normal, positive on the side that the normal points to.
    double signed_distance() const { return nominal_normal_.dot(measured_point_ - nominal_point_); }

    /// 1 when the measured point is not set, else 0.
    int invalid() const { return measured_point_.invalid() ? 1 : 0; }
    void set_invalid() { measured_point_.set_invalid(); }

private:
    giPoint3 measured_point_;
    giPoint3 nominal_point_;
    giUnitVec3 nominal_normal_;
};

using sqProjectedPoint3coDynArr = coDynArr<sqProjectedPoint3>;
using sqProjectedPoint3coDynArrcoIterator = coDynArrcoIterator<sqProjectedPoint3>;

/// The signed distance of the measured point after a transform, from the place and along the normal as they are.
double signed_norm_dev(sqProjectedPoint3 const & p, giXform3 const & x);

/// The squared distance of the measured point, after a transform, from its nominal place.
double square_dev(sqProjectedPoint3 const & p, giXform3 const & x);

/// How far a transform moves any of the measured points; records that are invalid don't count, and without others it
/// is 0.
double get_maximum_movement(sqProjectedPoint3coDynArr const & points, giXform3 const & x);
