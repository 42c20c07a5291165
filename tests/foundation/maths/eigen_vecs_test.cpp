#include <datumfit/foundation/maths/asym_eigen_vecs3.h>
#include <datumfit/foundation/maths/singular_value_decomposition.h>
#include <datumfit/foundation/maths/sym_eigen_vecs.h>

#include <gtest/gtest.h>

#include <limits>

#include "matrices.h"

namespace {

// Checks the definition and the order of n real results, and returns their vectors as columns.
mlMatrix expect_eigenpairs(mlMatrix const & m, mlEigenVecs & found, double tolerance) {
    int const n = m.rows();
    found.calculate();
    EXPECT_EQ(n, found.num_real_eigen_values());
    mlMatrix vectors(n, n);
    mlVector values(mlVectorDim, n);
    for (int k = 0; k < n; ++k) {
        vectors.col(k) = found.eigen_vector(k);
        values[k] = found.eigen_value(k);
        EXPECT_LE(values[k], k == 0 ? 1e9 : values[k - 1]);
        EXPECT_NEAR(1.0, product(transposed(vectors), vectors)(k, k), 1e-14);
    }
    EXPECT_LT(largest_difference(product(m, vectors), product(vectors, diagonal_matrix(values))), tolerance);
    return vectors;
}

TEST(SymEigenVecs, DecomposesMatricesOfAnyOrderAndRank) {
    mlRandom random(1);
    for (int n = 0; n < 9; ++n) {
        for (int rank = 0; rank <= n; ++rank) {
            mlMatrix const half = random_matrix(n, n, random);
            mlMatrix signs(mlMatrixZero, n, n);
            for (int i = 0; i < rank; ++i) {
                signs(i, i) = i % 2 == 0 ? 1.0 : -1.0;
            }
            mlMatrix const m = product(product(half, signs), transposed(half));
            mlSymEigenVecs found(m);
            mlMatrix const v = expect_eigenpairs(m, found, 2e-14);  // the worst seen is 4e-15
            EXPECT_LT(largest_difference(product(transposed(v), v), mlMatrix(mlMatrixIdentity, n)), 1e-14);
        }
    }
}

TEST(SymEigenVecs, KeepsTheDigitsOfSmallRows) {
    // D * A * D with D = diag(1, 2^-25, 2^-50): the eigenvalues multiply to the determinant, which is exact.
    double const elements[] = {2.0, 0x1p-25, 0x1p-50, 0x1p-25, -0x3p-50, 0x1p-75, 0x1p-50, 0x1p-75, 0x1p-100};
    mlSymEigenVecs found(mlMatrix(utConvert, elements, 3, 3));
    found.calculate();
    double const determinant = found.eigen_value(0) * found.eigen_value(1) * found.eigen_value(2);
    EXPECT_NEAR(-4.0, determinant / 0x1p-150, 1e-14);
}

TEST(AsymEigenVecs3, TakesAMultipleValueForRealWhateverItsRounding) {
    mlRandom random(2);
    double const values[][3] = {{5.0, 2.0, -3.0}, {2.0, 2.0, -3.0}, {2.0, -3.0, -3.0}, {4.0, 4.0, 4.0}, {}};
    for (int i = 0; i < 1000; ++i) {
        mlMatrix const p = random_matrix(3, 3, random);
        mlSingularValueDecomposition svd(p);
        if (svd.is_singular(0.1)) {
            continue;
        }
        mlVector const expected(utConvert, values[i % 5], 3);
        mlMatrix const m = product(product(p, diagonal_matrix(expected)), svd.inverse(0.0));
        mlAsymEigenVecs3 found(m);
        // The smallest singular value of unit vectors: 0 when they are dependent, 1 at right angles.
        EXPECT_GT(mlSingularValueDecomposition(expect_eigenpairs(m, found, 1e-12)).diagonal().read(2), 0.05);
        EXPECT_NEAR(expected[1], found.eigen_value(1), 1e-12);
    }
}

TEST(AsymEigenVecs3, TellsComplexPairsFromDoubleValues) {
    // A turn by a small angle about z, and a double value with a single direction.
    double const turn[] = {1.0, -1e-6, 0.0, 1e-6, 1.0, 0.0, 0.0, 0.0, 3.0};
    mlAsymEigenVecs3 turned(mlMatrix(utConvert, turn, 3, 3));
    turned.calculate();
    ASSERT_EQ(1, turned.num_real_eigen_values());
    EXPECT_NEAR(3.0, turned.eigen_value(0), 1e-15);
    EXPECT_NEAR(1.0, std::fabs(turned.eigen_vector(0)[2]), 1e-15);

    double const shear[] = {2.0, 1.0, 0.0, 0.0, 2.0, 0.0, 0.0, 0.0, 1.0};
    mlMatrix const sheared(utConvert, shear, 3, 3);
    mlAsymEigenVecs3 found(sheared);
    EXPECT_NEAR(1.0, std::fabs(expect_eigenpairs(sheared, found, 1e-14)(0, 1)), 1e-14);
}

TEST(EigenVecs, HasNoRealValuesForElementsThatAreNotFinite) {
    mlMatrix m(mlMatrixIdentity, 3);
    m(0, 1) = std::numeric_limits<double>::quiet_NaN();
    mlSymEigenVecs sym(m);
    mlAsymEigenVecs3 asym(m);
    for (mlEigenVecs * const found : {static_cast<mlEigenVecs *>(&sym), static_cast<mlEigenVecs *>(&asym)}) {
        found->calculate();
        EXPECT_EQ(0, found->num_real_eigen_values());
        EXPECT_EQ(0.0, found->eigen_value(2) + found->eigen_vector(2)[2]);
    }
}

}  // namespace
