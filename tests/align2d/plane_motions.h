#pragma once

#include "support/shapes.h"

#include <datumfit/align2d/projected_point2.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <vector>

namespace align2d_tests {

constexpr double unbounded = std::numeric_limits<double>::max();

/// A turn about a point, then a shift.
inline giXform2 motion(giPoint2 const & about, double angle, giVector2 const & shift) {
    return giXform2(giXformProduct, giXform2(giXformTranslate, shift),
                    giXform2(giXformRotate, about, giAngle(giAngleRadians, angle)));
}

inline giXform2 product(giXform2 const & a, giXform2 const & b) {
    return giXform2(giXformProduct, a, b);
}

/// How far apart two transforms carry the points at most.
inline double difference(giXform2 const & a, giXform2 const & b, giPoint2coDynArr const & points) {
    double largest = 0.0;
    for (int i = 0; i < points.size(); ++i) {
        largest = std::max(largest, (a * points.read(i)).distance(b * points.read(i)).value());
    }
    return largest;
}

inline std::vector<int> numbers_in(intcoDynArr const & list) {
    return std::vector<int>(list.data(), list.data() + list.size());
}

}  // namespace align2d_tests
