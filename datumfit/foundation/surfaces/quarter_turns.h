#pragma once

#include <cmath>

namespace datumfit {
namespace internal {

/// A direction in a plane as one number that grows with its angle, without trigonometry: with |x| + |y| = 1 it is y
/// towards x > 0, and goes on at the same pace to 2 and -2, both towards -x. Whole numbers are quarter turns. 0 for a
/// null vector.
inline double quarter_turns(double x, double y) {
    double const sum = std::abs(x) + std::abs(y);
    if (!(sum > 0.0)) return 0.0;
    double const part = y / sum;
    return x >= 0.0 ? part : std::copysign(2.0, y) - part;
}

/// The unit vector (x, y) of such a number; u counts beyond 2 as 2.
inline void from_quarter_turns(double u, double & x, double & y) {
    double const turns = std::abs(u) < 2.0 ? std::abs(u) : 2.0;
    x = 1.0 - turns;
    y = std::copysign(turns <= 1.0 ? turns : 2.0 - turns, u);
    double const over = 1.0 / std::sqrt(x * x + y * y);
    x *= over;
    y *= over;
}

}  // namespace internal
}  // namespace datumfit
