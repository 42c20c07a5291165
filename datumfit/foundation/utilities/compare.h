#pragma once

#include <cstdint>
#include <type_traits>

/// Orders integers of unlike types by their true values: a negative number lies below every unsigned one.
struct utNumericHelper {
    template <class A, class B>
    static constexpr bool less(A a, B b) {
        static_assert(std::is_integral<A>::value && std::is_integral<B>::value, "integers are compared");
        if (is_negative(a) || is_negative(b)) {
            return is_negative(a) && (!is_negative(b) || static_cast<std::intmax_t>(a) < static_cast<std::intmax_t>(b));
        }
        return static_cast<std::uintmax_t>(a) < static_cast<std::uintmax_t>(b);
    }

private:
    template <class A>
    static constexpr bool is_negative(A a) {
        if constexpr (std::is_signed<A>::value) {
            return a < 0;
        } else {
            return false;
        }
    }
};

/// An integer that is compared with integers of other types by their true values.
template <class T>
class utCompare {
public:
    explicit constexpr utCompare(T value) : value_(value) {}

    template <class U>
    constexpr bool operator<(U other) const {
        return utNumericHelper::less(value_, other);
    }
    template <class U>
    constexpr bool operator>(U other) const {
        return utNumericHelper::less(other, value_);
    }

private:
    T value_;
};

template <class T>
constexpr utCompare<T> ut_compare(T value) {
    return utCompare<T>(value);
}
