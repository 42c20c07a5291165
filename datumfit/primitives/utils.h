#pragma once

#include <datumfit/foundation/geometry/point2.h>
#include <datumfit/foundation/geometry/point3.h>
#include <datumfit/foundation/geometry/unit_vec2.h>
#include <datumfit/foundation/geometry/vector3.h>
#include <datumfit/foundation/geometry/xform3.h>

/// Small geometry that fits of all kinds share.
class sqUtils {
public:
    /// Writes the coordinates of points in the plane through origin with that normal, one entry a point in their order;
    /// heights above the plane are dropped. The plane's y axis is the part within the plane of the x axis, or of the y
    /// axis when |normal.x| exceeds |normal.y|. When `xform` is not null it becomes the transform from space to the
    /// plane's frame, whose inverse takes (x, y, 0) back.
    static void ProjectPointsToPlane(giPoint3coDynArr const & points, giPoint3 const & origin, giVector3 const & normal,
                                     giPoint2coDynArr & result, giXform3 * xform);

    /// The direction half way along the counter-clockwise arc from a to b; a when the two coincide within 2^-23.
    static giUnitVec2 bisector(giUnitVec2 const & a, giUnitVec2 const & b);

    /// A number that grows with the counter-clockwise angle from a to b, without trigonometry: -2 for none, -1 for a
    /// quarter turn, 0 for half a turn, towards 2 for a full one.
    static double quick_angle(giUnitVec2 const & a, giUnitVec2 const & b);

    /// A unit vector at right angles to v: v × x axis, or v × y axis when |v.x| exceeds |v.y|. Of a zero vector,
    /// invalid.
    static void get_orthogonal(giVector3 const & v, giVector3 & result);

    /// The parameter t at which the line p1 + t d1 meets the line p2 + s d2. False, and t as it was, when |d1 × d2| is
    /// below 2^-23.
    static bool intersect_lines(giPoint2 const & p1, giVector2 const & d1, giPoint2 const & p2, giVector2 const & d2,
                                double & t);
};
