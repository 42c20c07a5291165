#include <datumfit/foundation/maths/singular_value_decomposition.h>

#include <gtest/gtest.h>

#include <limits>

#include "matrices.h"

namespace {

constexpr double tolerance = 2e-14;  // the worst seen over these cases is 3e-15

TEST(SingularValueDecomposition, FactorsMatricesOfAnyShapeAndRank) {
    mlRandom random(1);
    for (int i = 0; i < 7 * 7 * 7; ++i) {
        int const rows = i / 49, cols = i / 7 % 7, rank = i % 7;
        if (rank > std::min(rows, cols)) {
            continue;
        }
        SCOPED_TRACE(testing::Message() << rows << " by " << cols << " of rank " << rank);
        mlMatrix const m = product(random_matrix(rows, rank, random), random_matrix(rank, cols, random));
        mlSingularValueDecomposition svd(m);
        mlMatrix const s = diagonal_matrix(svd.diagonal());
        ASSERT_EQ(cols, svd.V().rows());
        EXPECT_LT(largest_difference(m, product(product(svd.U(), s), transposed(svd.V()))), tolerance);
        mlMatrix unit(mlMatrixIdentity, cols);
        EXPECT_LT(largest_difference(product(transposed(svd.V()), svd.V()), unit), tolerance);
        for (int k = 0; k < cols; ++k) {
            unit(k, k) = k < rows ? 1.0 : 0.0;
            EXPECT_LE(svd.diagonal()[k], k == 0 ? 1e9 : svd.diagonal()[k - 1]);
            EXPECT_EQ(k<rank, svd.diagonal()[k]> tolerance);
        }
        EXPECT_LT(largest_difference(product(transposed(svd.U()), svd.U()), unit), tolerance);
        EXPECT_EQ(rank < cols || cols == 0, svd.is_singular(1e-10));

        mlMatrix const inverse = svd.inverse(1e-10);
        EXPECT_LT(largest_difference(product(product(m, inverse), m), m), 1e-12);
        EXPECT_LT(largest_difference(product(inverse, m), transposed(product(inverse, m))), 1e-10);
        mlVector b, x;
        b = random_matrix(1, rows, random)[0];
        svd.solve(b, x);
        mlVector const shortest(mlMatrixProduct, inverse, b);
        EXPECT_LT(largest_difference(diagonal_matrix(x), diagonal_matrix(shortest)), 1e-10);
    }
}

TEST(SingularValueDecomposition, ComparesWithTheTolerances) {
    double const elements[] = {0.0, 0x1p-20, 8.0, 0.0};
    mlSingularValueDecomposition svd(mlMatrix(utConvert, elements, 2, 2));
    EXPECT_TRUE(svd.is_singular(0x1p-23));
    EXPECT_FALSE(svd.is_singular(0x1p-24));
    EXPECT_EQ(0.0, svd.inverse(0x1p-20)(1, 0));
    EXPECT_EQ(0x1p20, std::fabs(svd.inverse(0x1p-21)(0, 0) + svd.inverse(0x1p-21)(1, 0)));
}

TEST(SingularValueDecomposition, ReducesManyRowsWithTheirDigits) {
    // All signs of the sizes: columns at right angles, so that V is the identity.
    constexpr int n = 80000;
    double const sizes[] = {50.0, 3.0, 1e-7};
    mlMatrix m(n, 3);
    for (int i = 0; i < 3 * n; ++i) {
        m(i / 3, i % 3) = (i / 3 >> i % 3) % 2 == 0 ? sizes[i % 3] : -sizes[i % 3];
    }
    for (mlJOB_U const job : {mlJOB_U_NONE, mlJOB_U_WANTED}) {
        // Equal elements round alike, and the reflections with U sum them in one run: the worst seen is 2e-13 there.
        double const rounding = job == mlJOB_U_NONE ? 2e-15 : 1e-12;
        mlSingularValueDecomposition const svd(m, job, mlJOB_V_WANTED);
        for (int k = 0; k < 3; ++k) {
            EXPECT_NEAR(1.0, svd.diagonal()[k] / (std::sqrt(double(n)) * sizes[k]), rounding);
            EXPECT_NEAR(1.0, std::fabs(svd.V()(k, k)), 1e-15);
        }
    }
}

TEST(SingularValueDecomposition, KeepsTheDigitsOfShortColumns) {
    // Points of a circle, whose coordinates are whole numbers, make the columns x^2 + y^2, x, y and 1 dependent.
    constexpr double scale = 0x1p14, radius = 65.0 * scale, a = 10.0 * scale, b = -7.0 * scale;
    int const legs[][2] = {{16, 63}, {33, 56}, {25, 60}, {39, 52}};
    mlMatrix m(16, 4);
    for (int i = 0; i < 16; ++i) {
        double const x = a + scale * legs[i / 4][0] * (i % 2 == 0 ? 1 : -1);
        double const y = b + scale * legs[i / 4][1] * (i % 4 < 2 ? 1 : -1);
        double const row[] = {x * x + y * y, x, y, 1.0};
        std::copy(row, row + 4, m.row_data(i));
    }
    mlSingularValueDecomposition const svd(m, mlJOB_U_NONE, mlJOB_V_WANTED);
    double const null[] = {1.0, -2.0 * a, -2.0 * b, a * a + b * b - radius * radius};
    for (int i = 1; i < 4; ++i) {
        // Errors relative to the longest column would come to 1e-4.
        EXPECT_NEAR(1.0, svd.V()(i, 3) / svd.V()(0, 3) / null[i], 1e-14);
    }
}

TEST(SingularValueDecomposition, IsTheSameAtAnyScaleOfTheElements) {
    mlRandom random(3);
    mlMatrix const m = random_matrix(5, 3, random);
    for (double const scale : {0x1p-1020, 0x1p-500, 0x1p600, 0x1p1020}) {
        mlMatrix scaled(m);
        scaled *= scale;
        mlSingularValueDecomposition const unit(m), svd(scaled);
        EXPECT_LT(largest_difference(unit.V(), svd.V()), tolerance);
        EXPECT_NEAR(unit.diagonal()[2], svd.diagonal()[2] / scale, tolerance);
    }
}

TEST(SingularValueDecomposition, TakesElementsThatAreNotFiniteAsAZeroMatrix) {
    for (double const bad : {std::numeric_limits<double>::quiet_NaN(), -std::numeric_limits<double>::infinity()}) {
        mlMatrix m(mlMatrixIdentity, 3);
        m(1, 2) = bad;
        mlSingularValueDecomposition svd(m);
        EXPECT_TRUE(svd.is_singular(0.0));
        EXPECT_EQ(0.0, largest_difference(svd.inverse(0.0), mlMatrix(mlMatrixZero, 3, 3)));
        EXPECT_EQ(0.0, largest_difference(svd.V(), mlMatrix(mlMatrixIdentity, 3)));
    }
}

}  // namespace
