#pragma once

#include <datumfit/foundation/containers/dyn_arr.h>
#include <datumfit/foundation/containers/page_arr.h>
#include <datumfit/foundation/geometry/axis.h>
#include <datumfit/foundation/geometry/length.h>
#include <datumfit/foundation/geometry/point2.h>
#include <datumfit/foundation/geometry/vector3.h>

#include <cmath>

/// A point in space.
///
/// It is not set (invalid) when x is the most negative double, or when any coordinate is the largest one. The point
/// made by default is invalid. Sums and differences are not checked.
class giPoint3 {
public:
    giPoint3() : z_(0.0) {}
    giPoint3(double x, double y, double z) : xy_(x, y), z_(z) {}
    giPoint3(giOriginTag) : giPoint3(0.0, 0.0, 0.0) {}

    void become(double x, double y, double z) { *this = giPoint3(x, y, z); }

    double x() const { return xy_.x(); }
    double y() const { return xy_.y(); }
    double z() const { return z_; }
    double & x() { return xy_.x(); }
    double & y() { return xy_.y(); }
    double & z() { return z_; }
    double coordinate(gi_Axis axis) const { return axis == giAxisX ? x() : axis == giAxisY ? y() : z(); }
    void set_coordinate(gi_Axis axis, double value) { (axis == giAxisX ? x() : axis == giAxisY ? y() : z()) = value; }

    /// The first two coordinates, as a reference into this point.
    giPoint2 const & xy() const { return xy_; }
    giPoint2 & xy() { return xy_; }

    bool invalid() const { return xy_.invalid() || z_ == datumfit::internal::not_set; }
    void set_invalid() { xy_.set_invalid(); }

    giPoint3 & operator+=(giVector3 const & v) { return *this = giPoint3(x() + v.x(), y() + v.y(), z_ + v.z()); }
    giPoint3 & operator-=(giVector3 const & v) { return *this = giPoint3(x() - v.x(), y() - v.y(), z_ - v.z()); }

    /// The vector of the same coordinates.
    giVector3 release() const { return giVector3(x(), y(), z_); }

    /// The distance, in squared form unless that would leave the range of doubles; invalid when either point is.
    giLength distance(giPoint3 const & b) const {
        double const dx = b.x() - x(), dy = b.y() - y(), dz = b.z_ - z_, square = dx * dx + dy * dy + dz * dz;
        // A coordinate that marks either point as invalid makes the square infinite, unless both points have it.
        bool const plain = square >= datumfit::internal::least_plain_square && square < datumfit::internal::not_set &&
                           std::abs(x()) + std::abs(y()) + std::abs(z_) < datumfit::internal::not_set;
        return plain ? giLength().become(giLengthSquared, square) : extreme_distance(b);
    }

    /// The point at parameter t, exactly this at 0 and exactly b at 1.
    giPoint3 interpolate(giPoint3 const & b, double t) const {
        return giPoint3(datumfit::internal::between(x(), b.x(), t), datumfit::internal::between(y(), b.y(), t),
                        datumfit::internal::between(z_, b.z_, t));
    }

private:
    giLength extreme_distance(giPoint3 const & b) const;

    giPoint2 xy_;
    double z_;
};

using giPoint3coDynArr = coDynArr<giPoint3>;
using giPoint3coPageArr = coPageArr<giPoint3>;

inline giVector3 operator-(giPoint3 const & a, giPoint3 const & b) {
    return giVector3(a.x() - b.x(), a.y() - b.y(), a.z() - b.z());
}
inline giPoint3 operator+(giPoint3 const & p, giVector3 const & v) {
    return giPoint3(p.x() + v.x(), p.y() + v.y(), p.z() + v.z());
}
inline giPoint3 operator-(giPoint3 const & p, giVector3 const & v) {
    return giPoint3(p.x() - v.x(), p.y() - v.y(), p.z() - v.z());
}
inline giLength distance(giPoint3 const & a, giPoint3 const & b) {
    return a.distance(b);
}
inline giPoint3 interpolate(giPoint3 const & a, giPoint3 const & b, double t) {
    return a.interpolate(b, t);
}

inline giPoint3 giPoint2::xyz(double z) const {
    return giPoint3(x_, y_, z);
}

inline giPoint3 giVector3::anchor() const {
    return giPoint3(x_, y_, z_);
}
