#pragma once

#include <datumfit/foundation/geometry/angle.h>
#include <datumfit/foundation/geometry/point2.h>
#include <datumfit/foundation/geometry/unit_vec2.h>
#include <datumfit/foundation/geometry/xform_tags.h>
#include <datumfit/foundation/utilities/tags.h>

/// A rigid transform of the plane: a rotation, then a shift.
///
/// A transform made by default is invalid, and so is every one made from an invalid argument. An invalid transform
/// makes points invalid, and an invalid point stays so under all.
class giXform2 {
public:
    giXform2() : giXform2(giVector2(), giVector2()) {}
    giXform2(giXformIdentityTag) : giXform2(giAxisX, giVector2(0.0, 0.0)) {}

    /// The rotation about a point, counterclockwise. The point stays where it is, to rounding.
    giXform2(giXformRotateTag, giPoint2 const & point, giAngle const & angle);

    /// The rotation about a point that turns one vector into the direction of another; none when either is null.
    giXform2(giXformRotateTag, giPoint2 const & point, giVector2 const & from, giVector2 const & to);

    giXform2(giXformTranslateTag, giVector2 const & v);

    /// The product a b: b acts first.
    giXform2(giXformProductTag, giXform2 const & a, giXform2 const & b);

    /// From world to local coordinates: origin goes to the local origin and x_axis to the local x axis.
    giXform2(giXformLocalTag, giPoint2 const & origin, giUnitVec2 const & x_axis);

    /// Becomes what the constructor of the same arguments makes; *this may be among them.
    void become(giXformProductTag tag, giXform2 const & a, giXform2 const & b) { *this = giXform2(tag, a, b); }
    void become(giXformLocalTag tag, giPoint2 const & origin, giUnitVec2 const & x_axis) {
        *this = giXform2(tag, origin, x_axis);
    }
    void become(utCopyTag, giXform2 const & x) { *this = x; }

    bool invalid() const { return turn_.invalid(); }

    giPoint2 operator*(giPoint2 const & p) const {
        return invalid() || p.invalid() ? giPoint2() : (rotated(p.release()) + shift_).anchor();
    }

private:
    giXform2(giVector2 const & turn, giVector2 const & shift) : turn_(turn), shift_(shift) {}

    giVector2 rotated(giVector2 const & v) const {
        return giVector2(turn_.x() * v.x() - turn_.y() * v.y(), turn_.y() * v.x() + turn_.x() * v.y());
    }

    giVector2 turn_;  // cosine and sine of the rotation: the image of the x axis
    giVector2 shift_;
};
