#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

/// The derivative of f at x by central differences of shrinking steps, extrapolated to step 0 (Ridders 1982). The first
/// step is to span a fair part of the function's bend; the error is told by the last two columns of the table.
template <class F>
double derivative(F const & f, double x, double first_step) {
    constexpr int size = 8;
    constexpr double shrink = 1.4;
    double table[size][size];
    double best = 0.0, error = std::numeric_limits<double>::infinity();
    double h = first_step;
    for (int i = 0; i < size; ++i, h /= shrink) {
        table[0][i] = (f(x + h) - f(x - h)) / (2.0 * h);
        double factor = shrink * shrink;
        for (int j = 1; j <= i; ++j, factor *= shrink * shrink) {
            table[j][i] = (table[j - 1][i] * factor - table[j - 1][i - 1]) / (factor - 1.0);
            double const change =
                std::max(std::abs(table[j][i] - table[j - 1][i]), std::abs(table[j][i] - table[j - 1][i - 1]));
            if (change <= error) {
                error = change;
                best = table[j][i];
            }
        }
    }
    return best;
}
