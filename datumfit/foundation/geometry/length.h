#pragma once

#include <cmath>
#include <limits>
#include <type_traits>

enum giLengthSquaredTag { giLengthSquared };

namespace datumfit {
namespace internal {

/// Marks a length or, with either sign, a coordinate that is not set.
constexpr double not_set = std::numeric_limits<double>::max();

/// The type bool where N is a number: a comparison with an int is then as direct as one with a double.
template <class N>
using comparison_with = std::enable_if_t<std::is_arithmetic<N>::value, bool>;

}  // namespace internal
}  // namespace datumfit

/// A length whose root is taken when it is first read.
///
/// It holds one double: below 0 the negated square of the length, the largest double when the length is not set
/// (invalid), else the length itself. Reading the value stores the root, also in a const object, so that two threads
/// must not read one length at the same time; a length that holds its root already is not written to.
///
/// Comparisons take no root. They are of numbers, with these rules for what is none: an invalid length is both less and
/// greater than anything, and neither at most nor at least anything; every length exceeds a negative number.
class giLength {
public:
    /// An invalid length.
    giLength() : l_(datumfit::internal::not_set) {}

    giLength(double length) : l_(length) {}

    /// Takes the length whose square is given, at least 0.
    giLength & become(giLengthSquaredTag, double square) {
        l_ = -square;
        return *this;
    }

    double value() const {
        if (l_ < 0.0) l_ = std::sqrt(-l_);
        return l_ + 0.0;  // the negated square of a null length is -0.0, and reads as 0.0
    }
    operator double() const { return value(); }
    double l_validate() const { return value(); }

    double squared() const { return l_ < 0.0 ? -l_ : l_ * l_; }

    bool invalid() const { return l_ == datumfit::internal::not_set; }
    void set_invalid() { l_ = datumfit::internal::not_set; }

    /// Whether the length is at most tol; an invalid one is not.
    bool is_zero(double tol) const { return !invalid() && (l_ < 0.0 ? -l_ <= tol * tol : l_ <= tol); }

    /// Multiplies the length by a factor of at least 0; an invalid one stays so.
    giLength & operator*=(double factor) {
        if (invalid()) return *this;
        double const once_more = l_ < 0.0 ? factor : 1.0;
        l_ = l_ * factor * once_more;
        return *this;
    }

    bool operator<=(giLength const & b) const { return !invalid() && !b.invalid() && !exceeds(l_, b.l_); }
    bool operator>=(giLength const & b) const { return b <= *this; }
    bool operator>(giLength const & b) const { return invalid() || b.invalid() || exceeds(l_, b.l_); }
    bool operator<(giLength const & b) const { return b > *this; }

    template <class N>
    datumfit::internal::comparison_with<N> operator<(N bound) const {
        double const d = static_cast<double>(bound);
        return invalid() || (d >= 0.0 && exceeds(d, l_));
    }
    template <class N>
    datumfit::internal::comparison_with<N> operator<=(N bound) const {
        double const d = static_cast<double>(bound);
        return !invalid() && !(d < 0.0) && !exceeds(l_, d);
    }
    template <class N>
    datumfit::internal::comparison_with<N> operator>(N bound) const {
        double const d = static_cast<double>(bound);
        return invalid() || d < 0.0 || exceeds(l_, d);
    }
    template <class N>
    datumfit::internal::comparison_with<N> operator>=(N bound) const {
        double const d = static_cast<double>(bound);
        return !invalid() && !(d >= 0.0 && exceeds(d, l_));
    }

private:
    // Whether one length exceeds another, both valid and held as l_ is.
    static bool exceeds(double a, double b) {
        bool const plain = a >= 0.0 && b >= 0.0;
        return plain ? a > b : square_of(a) > square_of(b);
    }
    static double square_of(double l) { return l < 0.0 ? -l : l * l; }

    mutable double l_;
};

template <class N>
datumfit::internal::comparison_with<N> operator<(N bound, giLength const & a) {
    return a > bound;
}
template <class N>
datumfit::internal::comparison_with<N> operator<=(N bound, giLength const & a) {
    return a >= bound;
}
template <class N>
datumfit::internal::comparison_with<N> operator>(N bound, giLength const & a) {
    return a < bound;
}
template <class N>
datumfit::internal::comparison_with<N> operator>=(N bound, giLength const & a) {
    return a <= bound;
}

template <class N>
std::enable_if_t<std::is_arithmetic<N>::value, giLength> operator*(N factor, giLength a) {
    return a *= static_cast<double>(factor);
}
