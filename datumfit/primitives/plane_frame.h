#pragma once

#include <datumfit/foundation/geometry/point2.h>
#include <datumfit/foundation/geometry/point3.h>
#include <datumfit/foundation/geometry/unit_vec3.h>
#include <datumfit/foundation/geometry/xform3.h>

namespace datumfit {
namespace internal {

/// Coordinates within a plane.
///
/// Points are seen from the plane's origin before they are turned, so that an origin near them keeps all their digits,
/// however far both lie from the origin of space; a transform's matrix cannot.
class plane_frame {
public:
    /// The plane's y axis is the part within the plane of the x axis, or of the y axis when |normal.x| exceeds
    /// |normal.y|.
    plane_frame(giPoint3 const & origin, giUnitVec3 const & normal);

    /// The frame of the same plane and axes whose origin is the foot of a point on the plane.
    static plane_frame near(giPoint3 const & point, giPoint3 const & origin, giUnitVec3 const & normal) {
        return plane_frame(point - normal.dot(point - origin) * normal, normal);
    }

    /// From space to the plane's frame.
    giXform3 const & xform() const { return xform_; }

    /// Coordinates of points in the plane, in their order.
    void project(giPoint3coDynArr const & points, giPoint2coDynArr & result) const;

    /// Back to space.
    giPoint3 point(giPoint2 const & p) const { return origin_ + vector(p.release()); }
    giVector3 vector(giVector2 const & v) const { return v.x() * x_axis_ + v.y() * y_axis_; }

private:
    giPoint3 origin_;
    giXform3 xform_;
    giVector3 x_axis_, y_axis_;
};

}  // namespace internal
}  // namespace datumfit
