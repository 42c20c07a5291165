#pragma once

#include <datumfit/foundation/containers/dyn_arr.h>
#include <datumfit/foundation/geometry/axis.h>
#include <datumfit/foundation/geometry/length.h>
#include <datumfit/foundation/geometry/scale_to_unit.h>
#include <datumfit/foundation/geometry/vector2.h>

class giPoint3;
class giUnitVec3;

/// A vector in space that remembers its length: x, y, z and a length slot, which is invalid until it is asked for.
///
/// A vector whose x is the most negative double is not set (invalid), as is the one made by default. Its sums and
/// products are not checked.
class giVector3 {
public:
    giVector3() : giVector3(-datumfit::internal::not_set, 0.0, 0.0) {}
    giVector3(double x, double y, double z) : x_(x), y_(y), z_(z) {}

    /// The vector whose length is known, as after a change of sign.
    giVector3(double x, double y, double z, giLength const & length) : x_(x), y_(y), z_(z), length_(length) {}

    /// The unit vector along an axis.
    giVector3(gi_Axis axis)
        : giVector3(axis == giAxisX ? 1.0 : 0.0, axis == giAxisY ? 1.0 : 0.0, axis == giAxisZ ? 1.0 : 0.0, 1.0) {}

    double x() const { return x_; }
    double y() const { return y_; }
    double z() const { return z_; }
    double i() const { return x_; }
    double j() const { return y_; }
    double k() const { return z_; }
    double coordinate(gi_Axis axis) const { return axis == giAxisX ? x_ : axis == giAxisY ? y_ : z_; }

    void set_x(double x) { set(x, y_, z_); }
    void set_y(double y) { set(x_, y, z_); }
    void set_z(double z) { set(x_, y_, z); }
    void set_coordinate(gi_Axis axis, double value) {
        (axis == giAxisX ? x_ : axis == giAxisY ? y_ : z_) = value;
        l_cancel();
    }
    void set(double x, double y, double z) { *this = giVector3(x, y, z); }

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

    double dot(giVector3 const & b) const { return x_ * b.x_ + y_ * b.y_ + z_ * b.z_; }
    giVector3 cross(giVector3 const & b) const {
        return giVector3(y_ * b.z_ - z_ * b.y_, z_ * b.x_ - x_ * b.z_, x_ * b.y_ - y_ * b.x_);
    }

    giVector3 operator-() const { return giVector3(-x_, -y_, -z_, length_); }
    giVector3 & operator+=(giVector3 const & b) { return *this = giVector3(x_ + b.x_, y_ + b.y_, z_ + b.z_); }
    giVector3 & operator-=(giVector3 const & b) { return *this = giVector3(x_ - b.x_, y_ - b.y_, z_ - b.z_); }
    giVector3 & operator*=(double s) { return *this = giVector3(s * x_, s * y_, s * z_); }

    /// Scales the vector to unit length, whatever its size. A null vector, or one that is not finite, becomes invalid.
    giVector3 & unitize() {
        double const l = length();
        bool const plain = l > datumfit::internal::least_plain_length && l < datumfit::internal::greatest_plain_length;
        if (!plain) return unitize_extreme();
        return *this = giVector3(x_ / l, y_ / l, z_ / l, 1.0);
    }
    inline giUnitVec3 unit() const;

    inline giPoint3 anchor() const;

private:
    giVector3 & unitize_extreme();

    double x_, y_, z_;
    mutable giLength length_;
};

using giVector3coDynArr = coDynArr<giVector3>;

inline giVector3 operator+(giVector3 const & a, giVector3 const & b) {
    return giVector3(a.x() + b.x(), a.y() + b.y(), a.z() + b.z());
}
inline giVector3 operator-(giVector3 const & a, giVector3 const & b) {
    return giVector3(a.x() - b.x(), a.y() - b.y(), a.z() - b.z());
}
inline giVector3 operator*(double s, giVector3 const & v) {
    return giVector3(s * v.x(), s * v.y(), s * v.z());
}
inline double dot(giVector3 const & a, giVector3 const & b) {
    return a.dot(b);
}
inline giVector3 cross(giVector3 const & a, giVector3 const & b) {
    return a.cross(b);
}

inline giVector3 giVector2::xyz(double z) const {
    return giVector3(x_, y_, z);
}
