#pragma once

#include <cmath>

/// Comparison of plain numbers.
class mlMath {
public:
    /// Whether a and b differ by at most tol.
    static bool coincident(double a, double b, double tol) { return std::abs(a - b) <= tol; }
};
