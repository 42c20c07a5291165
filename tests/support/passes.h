#pragma once

#include <datumfit/foundation/maths/lane_model.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <vector>

// The rows of a kernel in both kinds of lanes and point by point; 1030 points end within a block and within a group.
template <class Kernel>
void expect_equal_passes() {
    int const n = 1030;
    std::vector<double> at, radius;
    std::mt19937 draw(1);
    std::uniform_real_distribution<double> number(-2.0, 2.0);
    for (int i = 0; i < Kernel::dimension * n; ++i) at.push_back(number(draw));
    for (int i = 0; i < n; ++i) radius.push_back(0.1 * number(draw));
    datumfit::internal::lane_model<Kernel> model(at.data(), radius.data(), n);
    mlVector x(mlVectorDim, Kernel::parameters);
    for (int k = 0; k < Kernel::parameters; ++k) x[k] = number(draw);
    model.place(x);

    constexpr int columns = Kernel::unknowns + 1, products = columns * (columns + 1) / 2;
    std::vector<double> wide(products), narrow(products), expected(products), block(columns * Kernel::rows);
    double const wide_sum = model.sum_of_squares(HUGE_VAL);
    model.gram(wide.data());
    model.use_wide_lanes(false);
    double const narrow_sum = model.sum_of_squares(HUGE_VAL);
    model.gram(narrow.data());
    EXPECT_EQ(0, std::memcmp(&wide_sum, &narrow_sum, sizeof wide_sum));
    EXPECT_EQ(0, std::memcmp(wide.data(), narrow.data(), products * sizeof(double)));
    EXPECT_GT(model.sum_of_squares(narrow_sum / 2.0), narrow_sum / 2.0);

    for (int i = 0; i < n; ++i) {
        int const rows = model.rows(i, 1, block.data(), Kernel::rows);
        for (int row = 0; row < rows; ++row) {
            int p = 0;
            for (int j = 0; j < columns; ++j) {
                for (int k = j; k < columns; ++k) {
                    expected.data()[p++] += block.data()[j * rows + row] * block.data()[k * rows + row];
                }
            }
        }
    }
    EXPECT_NEAR(expected.back(), wide_sum, 1e-12 * wide_sum);
    for (int p = 0; Kernel::regular && p < products; ++p) {
        EXPECT_NEAR(expected.data()[p], wide.data()[p], 1e-14 * std::max(1e3, std::abs(expected.data()[p])));
    }
}
