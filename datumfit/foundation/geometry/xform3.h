#pragma once

#include <datumfit/foundation/geometry/angle.h>
#include <datumfit/foundation/geometry/matrix4.h>
#include <datumfit/foundation/geometry/point3.h>
#include <datumfit/foundation/geometry/unit_vec3.h>
#include <datumfit/foundation/geometry/xform_tags.h>
#include <datumfit/foundation/utilities/tags.h>

/// An affine transform of space: p' = A p + t, held as a matrix whose last row is 0 0 0 1 and is not looked at.
///
/// A transform made by default is invalid, and so is every one made from an invalid argument. An invalid transform
/// makes points and vectors invalid, and an invalid point or vector stays so under all.
class giXform3 {
public:
    giXform3() : state_(unset) { matrix_.set_invalid(); }
    giXform3(giXformIdentityTag);

    /// The inverse, by cofactors. Invalid when A is singular, that is, when its rows leave less than rounding of the
    /// volume that they would span at right angles.
    giXform3(giXformInverseTag, giXform3 const & x);

    /// The product a b: b acts first.
    giXform3(giXformProductTag, giXform3 const & a, giXform3 const & b);

    giXform3(giXformTranslateTag, giVector3 const & v);

    /// The rotation about the line through a point along an axis, right-handed. Points on that line stay where they
    /// are, to rounding, also far from the origin.
    giXform3(giXformRotateTag, giPoint3 const & point, giUnitVec3 const & axis, giAngle const & angle);

    /// Scaling along the axes, about the origin.
    giXform3(giXformScaleTag, double sx, double sy, double sz);

    /// From world to local coordinates: origin goes to the local origin, w to the local z axis, and the part of hint
    /// across w to the local y axis. A hint along w says nothing: y is then w.any_normal().
    giXform3(giXformLocalTag, giPoint3 const & origin, giUnitVec3 const & w, giUnitVec3 const & hint);

    /// Becomes what the constructor of the same arguments makes; *this may be among them.
    void become(giXformIdentityTag tag) { *this = giXform3(tag); }
    void become(giXformProductTag tag, giXform3 const & a, giXform3 const & b) { *this = giXform3(tag, a, b); }
    void become(giXformTranslateTag tag, giVector3 const & v) { *this = giXform3(tag, v); }
    void become(giXformRotateTag tag, giPoint3 const & point, giUnitVec3 const & axis, giAngle const & angle) {
        *this = giXform3(tag, point, axis, angle);
    }
    void become(giXformLocalTag tag, giPoint3 const & origin, giUnitVec3 const & w, giUnitVec3 const & hint) {
        *this = giXform3(tag, origin, w, hint);
    }
    void become(utCopyTag, giXform3 const & x) { *this = x; }

    /// Becomes x * this.
    giXform3 & premultiply(giXform3 const & x) { return *this = giXform3(giXformProduct, x, *this); }
    /// Becomes this * x.
    giXform3 & postmultiply(giXform3 const & x) { return *this = giXform3(giXformProduct, *this, x); }

    giPoint3 operator*(giPoint3 const & p) const {
        if (state_ != general || p.invalid()) return identity() ? p : giPoint3();
        giMatrix4 const & m = matrix_;
        return giPoint3(m(0, 0) * p.x() + m(0, 1) * p.y() + m(0, 2) * p.z() + m(0, 3),
                        m(1, 0) * p.x() + m(1, 1) * p.y() + m(1, 2) * p.z() + m(1, 3),
                        m(2, 0) * p.x() + m(2, 1) * p.y() + m(2, 2) * p.z() + m(2, 3));
    }
    /// A vector is not translated.
    giVector3 operator*(giVector3 const & v) const {
        if (state_ != general || v.invalid()) return identity() ? v : giVector3();
        giMatrix4 const & m = matrix_;
        return giVector3(m(0, 0) * v.x() + m(0, 1) * v.y() + m(0, 2) * v.z(),
                         m(1, 0) * v.x() + m(1, 1) * v.y() + m(1, 2) * v.z(),
                         m(2, 0) * v.x() + m(2, 1) * v.y() + m(2, 2) * v.z());
    }

    bool invalid() const { return state_ == unset; }

    /// Whether this was made as the identity; a product that comes out as one is not told apart.
    bool identity() const { return state_ == unity; }

    void set_invalid() {
        state_ = unset;
        matrix_.set_invalid();
    }

    giMatrix4 const & matrix() const { return matrix_; }

private:
    friend class giXform3Acc;

    enum : int { unset = 0, unity = 1, general = 12 };

    // The transform of these rows of A and this t.
    giXform3(giVector3 const & x_row, giVector3 const & y_row, giVector3 const & z_row, giVector3 const & t);

    giVector3 row(int r) const { return giVector3(matrix_(r, 0), matrix_(r, 1), matrix_(r, 2)); }
    giVector3 column(int c) const { return giVector3(matrix_(0, c), matrix_(1, c), matrix_(2, c)); }

    giMatrix4 matrix_;
    int state_;
};

/// Whether both are valid and no element of the one differs from that of the other by more than tol.
bool equal(giXform3 const & a, giXform3 const & b, double tol);
