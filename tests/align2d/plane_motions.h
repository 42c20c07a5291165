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

/// Expects that none of the motions makes a sum of squares lower, by more than its rounding.
template <class Sum>
void expect_minimum(Sum const & sum, std::vector<giXform2> const & motions) {
    double const here = sum(giXform2(giXformIdentity));
    for (giXform2 const & x : motions) EXPECT_GE(sum(x), here * (1.0 - 1e-13));
}

/// Four shifts along the axes, and two turns about a point.
inline std::vector<giXform2> small_motions(giPoint2 const & about, double turn, double shift) {
    giVector2 const none(0.0, 0.0), x(shift, 0.0), y(0.0, shift);
    return {motion(about, 0.0, x),  motion(about, 0.0, -x),    motion(about, 0.0, y),
            motion(about, 0.0, -y), motion(about, turn, none), motion(about, -turn, none)};
}

}  // namespace align2d_tests
