#include <datumfit/foundation/maths/singular_value_decomposition.h>

#include <datumfit/foundation/maths/random.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

mlMatrix product(mlMatrix const & a, mlMatrix const & b) {
    return mlMatrix(mlMatrixProduct, a, b);
}

mlMatrix transposed(mlMatrix const & m) {
    return mlMatrix(mlMatrixTranspose, m);
}

mlMatrix random_matrix(int rows, int cols, mlRandom & random) {
    mlMatrix m(rows, cols);
    for (int i = 0; i < rows * cols; ++i) {
        m.row_data(0)[i] = random.minus_one_one();
    }
    return m;
}

double largest_difference(mlMatrix const & a, mlMatrix const & b) {
    EXPECT_EQ(a.rows(), b.rows());
    EXPECT_EQ(a.cols(), b.cols());
    double largest = 0.0;
    for (int i = 0; i < a.rows() * a.cols(); ++i) {
        largest = std::max(largest, std::fabs(a.row_data(0)[i] - b.row_data(0)[i]));
    }
    return largest;
}

mlMatrix diagonal_matrix(mlVector const & values) {
    mlMatrix m(mlMatrixZero, values.dimension(), values.dimension());
    m.diagonal() = values;
    return m;
}

constexpr double tolerance = 2e-14;  // the worst seen over these cases is 4e-15

void expect_decomposition(mlMatrix const & m, int rank) {
    mlSingularValueDecomposition svd(m);
    mlVector const & values = svd.diagonal();
    ASSERT_EQ(m.cols(), values.dimension());
    EXPECT_LT(largest_difference(m, product(product(svd.U(), diagonal_matrix(values)), transposed(svd.V()))),
              tolerance);
    EXPECT_LT(largest_difference(product(transposed(svd.V()), svd.V()), mlMatrix(mlMatrixIdentity, m.cols())),
              tolerance);
    mlMatrix expected(mlMatrixZero, m.cols(), m.cols());
    for (int k = 0; k < m.cols(); ++k) {
        expected(k, k) = k < m.rows() ? 1.0 : 0.0;
        EXPECT_GE(k == 0 ? 1e9 : values[k - 1], values[k]);
        EXPECT_EQ(k<rank, values[k]> tolerance);
    }
    EXPECT_LT(largest_difference(product(transposed(svd.U()), svd.U()), expected), tolerance);
    EXPECT_EQ(rank < m.cols() || rank == 0, svd.is_singular(1e-10));
}

TEST(SingularValueDecomposition, FactorsMatricesOfAnyShapeAndRank) {
    mlRandom random(1);
    for (int rows = 0; rows < 7; ++rows) {
        for (int cols = 0; cols < 7; ++cols) {
            for (int rank = 0; rank <= std::min(rows, cols); ++rank) {
                SCOPED_TRACE(testing::Message() << rows << " by " << cols << " of rank " << rank);
                expect_decomposition(product(random_matrix(rows, rank, random), random_matrix(rank, cols, random)),
                                     rank);
            }
        }
    }
}

TEST(SingularValueDecomposition, InvertsWhatIsAboveTheThreshold) {
    mlRandom random(2);
    for (int const rows : {3, 5, 9}) {
        mlMatrix const a = product(random_matrix(rows, 3, random), random_matrix(3, 5, random));
        mlSingularValueDecomposition svd(a);
        mlMatrix const inverse = svd.inverse(1e-9);
        // The conditions of Penrose, which only the pseudo-inverse meets.
        mlMatrix const left = product(inverse, a);
        mlMatrix const right = product(a, inverse);
        EXPECT_LT(largest_difference(product(right, a), a), 1e-12);
        EXPECT_LT(largest_difference(product(left, inverse), inverse), 1e-12);
        EXPECT_LT(largest_difference(left, transposed(left)), 1e-12);
        EXPECT_LT(largest_difference(right, transposed(right)), 1e-12);

        mlVector const b(utConvert, random_matrix(1, rows, random).row_data(0), rows);
        mlVector x;
        svd.solve(b, x);
        mlVector const expected(mlMatrixProduct, inverse, b);
        for (int i = 0; i < 5; ++i) {
            EXPECT_NEAR(expected[i], x[i], 1e-12);
        }
    }
}

TEST(SingularValueDecomposition, ComparesWithTheTolerances) {
    double const elements[] = {0.0, 0x1p-20, 8.0, 0.0};
    mlSingularValueDecomposition svd(mlMatrix(utConvert, elements, 2, 2));
    EXPECT_TRUE(svd.is_singular(0x1p-23));
    EXPECT_FALSE(svd.is_singular(0x1p-24));
    EXPECT_EQ(0.0, svd.inverse(0x1p-20)(1, 0));
    EXPECT_EQ(0x1p20, std::fabs(svd.inverse(0x1p-21)(1, 0)));
}

TEST(SingularValueDecomposition, ReducesManyRowsWithTheirDigits) {
    // All signs of (a, b, c): columns at right angles.
    constexpr int n = 80000;
    double const sizes[] = {3.0, 1e-7, 50.0};
    mlMatrix m(n, 3);
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < 3; ++j) {
            m(i, j) = (i >> j) % 2 == 0 ? sizes[j] : -sizes[j];
        }
    }
    for (mlJOB_U const job : {mlJOB_U_NONE, mlJOB_U_WANTED}) {
        // Equal elements round alike, and the reflections with U sum them in one run.
        double const rounding = job == mlJOB_U_NONE ? 2e-15 : 1e-12;
        mlSingularValueDecomposition const svd(m, job, mlJOB_V_WANTED);
        for (int k = 0; k < 3; ++k) {
            double const expected = std::sqrt(double(n)) * sizes[k == 0 ? 2 : k - 1];
            EXPECT_NEAR(1.0, svd.diagonal()[k] / expected, rounding);  // the worst seen are 7e-16 and 1.5e-13
            EXPECT_NEAR(1.0, std::fabs(svd.V()(k == 0 ? 2 : k - 1, k)), 1e-15);
        }
        EXPECT_EQ(job == mlJOB_U_NONE ? 0 : n, svd.U().rows());
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
    EXPECT_TRUE(svd.is_singular(1e-20));
    double const null[] = {1.0, -2.0 * a, -2.0 * b, a * a + b * b - radius * radius};
    for (int i = 1; i < 4; ++i) {
        // Errors relative to the longest column would come to 1e-4.
        EXPECT_NEAR(1.0, svd.V()(i, 3) / svd.V()(0, 3) / null[i], 1e-12);
    }
}

TEST(SingularValueDecomposition, IsTheSameAtAnyScaleOfTheElements) {
    mlRandom random(3);
    mlMatrix const m = random_matrix(5, 3, random);
    mlSingularValueDecomposition const unit(m);
    for (double const scale : {0x1p-1020, 0x1p-500, 0x1p600, 0x1p1020}) {
        mlMatrix scaled(m);
        scaled *= scale;
        mlSingularValueDecomposition const svd(scaled);
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
        EXPECT_EQ(0.0, svd.diagonal()[0]);
        EXPECT_EQ(0.0, largest_difference(svd.inverse(0.0), mlMatrix(mlMatrixZero, 3, 3)));
        EXPECT_EQ(0.0, largest_difference(svd.V(), mlMatrix(mlMatrixIdentity, 3)));
    }
}

}  // namespace
