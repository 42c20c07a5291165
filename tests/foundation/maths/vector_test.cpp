#include "support/vectors.h"

#include <datumfit/foundation/maths/vector.h>

#include <gtest/gtest.h>

#include <vector>

namespace {

using doubles = std::vector<double>;

doubles contents(mlVector const & v) {
    return doubles(v.data(), v.data() + v.dimension());
}

doubles contents(mlMatrix const & m) {
    return doubles(m.row_data(0), m.row_data(m.rows()));
}

TEST(Vector, GrowsWhereItIsWrittenAndTakesASliceOfItself) {
    mlVector v(mlVectorZero, 2);
    v[2] = 7.0;
    EXPECT_EQ(contents(v), (doubles{0.0, 0.0, 7.0}));
    v = mlSlice(v.data(), 2, -1, 3);
    EXPECT_EQ(contents(v), (doubles{7.0, 0.0, 0.0}));
    v.become(utCopy, mlSlice(v.data(), 0, 0, 6));  // grows while it reads
    EXPECT_EQ(contents(v), doubles(6, 7.0));
}

TEST(Vector, IsAProductAlsoWithItself) {
    double const elements[] = {1.0, 2.0, 3.0, 4.0, 5.0, 6.0};
    mlMatrix const m(utConvert, elements, 3, 2);
    mlVector v = vector_of({2.0, 3.0});
    multiply(m, v, v);
    EXPECT_EQ(contents(v), (doubles{8.0, 18.0, 28.0}));
    v.become(mlMatrixProduct, m, mlSlice(v.data(), 2, -2, 2));
    EXPECT_EQ(contents(v), (doubles{44.0, 116.0, 188.0}));
    v += vector_of({1.0, 0.0, 2.0});
    v *= 2.0;
    EXPECT_EQ(90.0 - 232.0 + 3.0 * 380.0, scalar_product(v, vector_of({1.0, -1.0, 3.0})));
}

TEST(Matrix, IsViewedByRowsColumnsAndDiagonal) {
    mlMatrix m(mlMatrixZero, 3, 5);
    m[1] = vector_of({1.0, 2.0, 3.0, 4.0, 5.0});
    m.col(4) = m.diagonal();
    EXPECT_EQ(contents(m), (doubles{0, 0, 0, 0, 0, 1, 2, 3, 4, 2, 0, 0, 0, 0, 0}));
    EXPECT_EQ(3, m.diagonal().dimension());
    EXPECT_EQ(m.row_data(1), m[1].start());
    m(3, 1) = 4.0;
    EXPECT_EQ(4.0, static_cast<mlMatrix const &>(m)(3, 1));
}

TEST(Matrix, IsAProductAlsoWithItself) {
    double const elements[] = {1.0, 2.0, 3.0, 4.0, 5.0, 6.0};
    mlMatrix a(utConvert, elements, 2, 3);
    a.become(mlMatrixProduct, a, mlMatrix(mlMatrixTranspose, a));
    a -= mlMatrix(mlMatrixIdentity, 2);
    EXPECT_EQ(contents(a), (doubles{13.0, 32.0, 32.0, 76.0}));
}

}  // namespace
