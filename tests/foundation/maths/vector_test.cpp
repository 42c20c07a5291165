#include <datumfit/foundation/maths/vector.h>

#include <gtest/gtest.h>

#include <vector>

namespace {

std::vector<double> contents(mlVector const & v) {
    return std::vector<double>(v.data(), v.data() + v.dimension());
}

std::vector<double> contents(mlMatrix const & m) {
    return std::vector<double>(m.row_data(0), m.row_data(m.rows()));
}

mlVector vector_of(std::vector<double> const & v) {
    return mlVector(utConvert, v.data(), static_cast<int>(v.size()));
}

mlMatrix matrix_of(int rows, int cols, std::vector<double> const & elements) {
    return mlMatrix(utConvert, elements.data(), rows, cols);
}

TEST(Vector, GrowsWhereItIsWrittenAndNotWhereItIsRead) {
    mlVector v(mlVectorZero, 2);
    v[2] = 7.0;
    EXPECT_EQ(contents(v), (std::vector<double>{0.0, 0.0, 7.0}));
    mlVector const & read = v;
    EXPECT_EQ(7.0, read[2]);
    EXPECT_EQ(3, read.dimension());
}

TEST(Vector, TakesASliceAlsoOfItself) {
    mlVector v = vector_of({1.0, 2.0, 3.0, 4.0});
    v = mlSlice(v.data(), 3, -1, 4);
    EXPECT_EQ(contents(v), (std::vector<double>{4.0, 3.0, 2.0, 1.0}));
    v.become(utCopy, mlSlice(v.data(), 1, 0, 6));
    EXPECT_EQ(contents(v), std::vector<double>(6, 3.0));
    v.become(utConvert, v.data() + 1, 2);
    EXPECT_EQ(contents(v), std::vector<double>(2, 3.0));
}

TEST(Vector, IsAProductAlsoWithItself) {
    mlMatrix const m = matrix_of(3, 2, {1.0, 2.0, 3.0, 4.0, 5.0, 6.0});
    std::vector<double> const product = {8.0, 18.0, 28.0};
    mlVector v = vector_of({2.0, 3.0});
    EXPECT_EQ(contents(mlVector(mlMatrixProduct, m, v)), product);
    multiply(m, v, v);
    EXPECT_EQ(contents(v), product);
    v = vector_of({3.0, 0.0, 2.0});
    v.become(mlMatrixProduct, m, mlSlice(v.data(), 2, -2, 2));
    EXPECT_EQ(contents(v), product);
}

TEST(Vector, CalculatesElementByElement) {
    mlVector v = vector_of({1.0, -2.0, 3.0});
    v += vector_of({1.0, 1.0, 2.0});
    v *= 3.0;
    EXPECT_EQ(contents(v), (std::vector<double>{6.0, -3.0, 15.0}));
    EXPECT_EQ(6.0 * 2.0 - 3.0 * 3.0 + 15.0 * 5.0, scalar_product(v, vector_of({2.0, 3.0, 5.0})));
}

TEST(Matrix, IsViewedByRowsColumnsAndDiagonal) {
    mlMatrix m(mlMatrixZero, 3, 5);
    EXPECT_EQ(3, m.diagonal().dimension());
    EXPECT_EQ(3, m.col(4).dimension());
    m[1] = vector_of({1.0, 2.0, 3.0, 4.0, 5.0});
    m.col(4) = m.diagonal();
    EXPECT_EQ(contents(m), (std::vector<double>{0, 0, 0, 0, 0, 1, 2, 3, 4, 2, 0, 0, 0, 0, 0}));
    mlSlice const row = static_cast<mlMatrix const &>(m)[1];
    EXPECT_EQ(4.0, row[3]);
    EXPECT_EQ(m.row_data(1), row.start());
}

TEST(Matrix, GrowsWhereItIsWritten) {
    mlMatrix m(2, 3);
    m(2, 1) = 4.0;
    EXPECT_EQ(4.0, static_cast<mlMatrix const &>(m)(2, 1));
    EXPECT_EQ(2, m.rows());
}

TEST(Matrix, IsAProductAlsoWithItself) {
    mlMatrix a = matrix_of(2, 3, {1.0, 2.0, 3.0, 4.0, 5.0, 6.0});
    mlMatrix const transpose(mlMatrixTranspose, a);
    EXPECT_EQ(contents(transpose), (std::vector<double>{1.0, 4.0, 2.0, 5.0, 3.0, 6.0}));
    a.become(mlMatrixProduct, a, transpose);
    EXPECT_EQ(contents(a), (std::vector<double>{14.0, 32.0, 32.0, 77.0}));
    a -= mlMatrix(mlMatrixIdentity, 2);
    a += a;
    a /= 2.0;
    EXPECT_EQ(contents(a), (std::vector<double>{13.0, 32.0, 32.0, 76.0}));
}

}  // namespace
