#pragma once

#include <datumfit/foundation/containers/dyn_arr.h>
#include <datumfit/foundation/geometry/axis.h>
#include <datumfit/foundation/geometry/length.h>
#include <datumfit/foundation/geometry/vector2.h>

#include <cmath>

class giPoint3;

enum giOriginTag { giOrigin };

namespace datumfit {
namespace internal {

/// a at t = 0 and b at t = 1, both exactly; counted from the nearer end, so that no digit is lost far from 0.
inline double between(double a, double b, double t) {
    double const step = b - a;
    return t < 0.5 ? a + t * step : b - (1.0 - t) * step;
}

/// The squares of distances from here up, as far as they are finite, have all their digits.
constexpr double least_plain_square = 0x1p-960;

}  // namespace internal
}  // namespace datumfit

/// A point in the plane.
///
/// It is not set (invalid) when x is the most negative double, or when either coordinate is the largest one. The point
/// made by default is invalid. Sums and differences are not checked.
class giPoint2 {
public:
    giPoint2() : giPoint2(-datumfit::internal::not_set, 0.0) {}
    giPoint2(double x, double y) : x_(x), y_(y) {}
    giPoint2(giOriginTag) : giPoint2(0.0, 0.0) {}

    void become(double x, double y) { *this = giPoint2(x, y); }

    double x() const { return x_; }
    double y() const { return y_; }
    double & x() { return x_; }
    double & y() { return y_; }
    double coordinate(gi_Axis axis) const { return axis == giAxisX ? x_ : y_; }

    /// On a point set by set_invalid() (or not at all) this leaves the other coordinate to be given: until then the
    /// point stays invalid.
    void set_x(double x) {
        y_ = unset() ? datumfit::internal::not_set : y_;
        x_ = x;
    }
    /// See set_x().
    void set_y(double y) {
        x_ = unset() ? datumfit::internal::not_set : x_;
        y_ = y;
    }
    void set_coordinate(gi_Axis axis, double value) { axis == giAxisX ? set_x(value) : set_y(value); }

    bool invalid() const { return unset() || x_ == datumfit::internal::not_set || y_ == datumfit::internal::not_set; }
    void set_invalid() { x_ = -datumfit::internal::not_set; }

    giPoint2 & operator+=(giVector2 const & v) { return *this = giPoint2(x_ + v.x(), y_ + v.y()); }
    giPoint2 & operator-=(giVector2 const & v) { return *this = giPoint2(x_ - v.x(), y_ - v.y()); }

    /// The vector of the same coordinates.
    giVector2 release() const { return giVector2(x_, y_); }

    /// The distance, in squared form unless that would leave the range of doubles; invalid when either point is.
    giLength distance(giPoint2 const & b) const {
        double const dx = b.x_ - x_, dy = b.y_ - y_, square = dx * dx + dy * dy;
        // A coordinate that marks either point as invalid makes the square infinite, unless both points have it.
        bool const plain = square >= datumfit::internal::least_plain_square && square < datumfit::internal::not_set &&
                           std::abs(x_) + std::abs(y_) < datumfit::internal::not_set;
        return plain ? giLength().become(giLengthSquared, square) : extreme_distance(b);
    }

    /// Whether the points are valid and within tol of each other; with tol 0, whether they are equal.
    bool coincident(giPoint2 const & b, double tol) const { return distance(b) <= tol; }

    /// The point at parameter t, exactly this at 0 and exactly b at 1.
    giPoint2 interpolate(giPoint2 const & b, double t) const {
        return giPoint2(datumfit::internal::between(x_, b.x_, t), datumfit::internal::between(y_, b.y_, t));
    }

    inline giPoint3 xyz(double z) const;

private:
    bool unset() const { return x_ == -datumfit::internal::not_set; }
    giLength extreme_distance(giPoint2 const & b) const;

    double x_, y_;
};

using giPoint2coDynArr = coDynArr<giPoint2>;

inline giVector2 operator-(giPoint2 const & a, giPoint2 const & b) {
    return giVector2(a.x() - b.x(), a.y() - b.y());
}
inline giPoint2 operator+(giPoint2 const & p, giVector2 const & v) {
    return giPoint2(p.x() + v.x(), p.y() + v.y());
}
inline giPoint2 operator-(giPoint2 const & p, giVector2 const & v) {
    return giPoint2(p.x() - v.x(), p.y() - v.y());
}
inline giLength distance(giPoint2 const & a, giPoint2 const & b) {
    return a.distance(b);
}
inline bool coincident(giPoint2 const & a, giPoint2 const & b, double tol) {
    return a.coincident(b, tol);
}
inline giPoint2 interpolate(giPoint2 const & a, giPoint2 const & b, double t) {
    return a.interpolate(b, t);
}

inline giPoint2 giVector2::anchor() const {
    return giPoint2(x_, y_);
}
