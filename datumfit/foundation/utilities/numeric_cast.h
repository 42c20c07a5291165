#pragma once

#include <datumfit/foundation/utilities/compare.h>

#include <limits>

/// An integer truncated to another integer type: its low bits. out_of_range tells whether that changed the value.
template <class To, class From>
constexpr To ut_numeric_cast(From value, bool & out_of_range) {
    out_of_range =
        ut_compare(value) < std::numeric_limits<To>::min() || ut_compare(value) > std::numeric_limits<To>::max();
    return static_cast<To>(value);
}
