#pragma once

#include <datumfit/foundation/geometry/axis.h>
#include <datumfit/foundation/geometry/length.h>
#include <datumfit/foundation/geometry/scale_to_unit.h>

class giAngle;
class giPoint2;
class giUnitVec2;
class giVector3;

/// A vector in the plane that remembers its length: x, y and a length slot, which is invalid until it is asked for.
///
/// A vector whose x is the most negative double is not set (invalid), as is the one made by default. Its sums and
/// products are not checked.
class giVector2 {
public:
    giVector2() : giVector2(-datumfit::internal::not_set, 0.0) {}
    giVector2(double x, double y) : x_(x), y_(y) {}

    /// The vector whose length is known, as after a change of sign.
    giVector2(double x, double y, giLength const & length) : x_(x), y_(y), length_(length) {}

    /// The unit vector along giAxisX or giAxisY.
    giVector2(gi_Axis axis) : giVector2(axis == giAxisX ? 1.0 : 0.0, axis == giAxisX ? 0.0 : 1.0, 1.0) {}

    double x() const { return x_; }
    double y() const { return y_; }
    double i() const { return x_; }
    double j() const { return y_; }
    double coordinate(gi_Axis axis) const { return axis == giAxisX ? x_ : y_; }

    void set_x(double x) { set(x, y_); }
    void set_y(double y) { set(x_, y); }
    void set_coordinate(gi_Axis axis, double value) {
        (axis == giAxisX ? x_ : y_) = value;
        l_cancel();
    }
    void set(double x, double y) { *this = giVector2(x, y); }

    bool invalid() const { return x_ == -datumfit::internal::not_set; }
    void set_invalid() { x_ = -datumfit::internal::not_set; }

    giLength const & length() const {
        l_check();
        return length_;
    }
    /// Stores the length in its squared form, unless it is known.
    int l_check() const {
        if (length_.invalid()) length_.become(giLengthSquared, dot(*this));
        return 0;
    }
    /// Forgets the length.
    void l_cancel() { length_.set_invalid(); }

    /// Whether the vector is valid and no longer than tol.
    bool is_zero(double tol) const { return !invalid() && length().is_zero(tol); }

    double dot(giVector2 const & b) const { return x_ * b.x_ + y_ * b.y_; }

    /// x1 y2 - y1 x2, the area of the parallelogram: positive when b is to the left.
    double cross(giVector2 const & b) const { return x_ * b.y_ - y_ * b.x_; }

    /// The angle by which this vector turns into b, counterclockwise positive, in (-180, 180] degrees; zero when either
    /// is null.
    giAngle signed_angle(giVector2 const & b) const;

    /// This vector turned left by a right angle.
    giVector2 orthogonal() const { return giVector2(-y_, x_, length_); }

    giVector2 operator-() const { return giVector2(-x_, -y_, length_); }
    giVector2 & operator+=(giVector2 const & b) { return *this = giVector2(x_ + b.x_, y_ + b.y_); }
    giVector2 & operator-=(giVector2 const & b) { return *this = giVector2(x_ - b.x_, y_ - b.y_); }
    giVector2 & operator*=(double s) { return *this = giVector2(s * x_, s * y_); }

    /// Scales the vector to unit length, whatever its size. A null vector, or one that is not finite, becomes invalid.
    giVector2 & unitize() {
        double const l = length();
        bool const plain = l > datumfit::internal::least_plain_length && l < datumfit::internal::greatest_plain_length;
        if (!plain) return unitize_extreme();
        return *this = giVector2(x_ / l, y_ / l, 1.0);
    }
    inline giUnitVec2 unit() const;

    inline giPoint2 anchor() const;
    inline giVector3 xyz(double z) const;

private:
    giVector2 & unitize_extreme();

    double x_, y_;
    mutable giLength length_;
};

inline giVector2 operator+(giVector2 const & a, giVector2 const & b) {
    return giVector2(a.x() + b.x(), a.y() + b.y());
}
inline giVector2 operator-(giVector2 const & a, giVector2 const & b) {
    return giVector2(a.x() - b.x(), a.y() - b.y());
}
inline giVector2 operator*(double s, giVector2 const & v) {
    return giVector2(s * v.x(), s * v.y());
}
inline double dot(giVector2 const & a, giVector2 const & b) {
    return a.dot(b);
}
inline double cross(giVector2 const & a, giVector2 const & b) {
    return a.cross(b);
}
