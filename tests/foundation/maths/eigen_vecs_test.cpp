#include <datumfit/foundation/maths/asym_eigen_vecs3.h>
#include <datumfit/foundation/maths/random.h>
#include <datumfit/foundation/maths/singular_value_decomposition.h>
#include <datumfit/foundation/maths/sym_eigen_vecs.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace {

double length(mlSlice const & v) {
    double sum = 0.0;
    for (int i = 0; i < v.dimension(); ++i) {
        sum += v[i] * v[i];
    }
    return std::sqrt(sum);
}

// Checks the real results against their definition; the size of m is about 1.
void expect_eigenpairs(mlMatrix const & m, mlEigenVecs const & found, double tolerance) {
    for (int k = 0; k < found.num_real_eigen_values(); ++k) {
        mlSlice const v = found.eigen_vector(k);
        EXPECT_NEAR(1.0, length(v), 1e-14);
        mlVector const mv(mlMatrixProduct, m, v);
        for (int i = 0; i < m.rows(); ++i) {
            EXPECT_NEAR(found.eigen_value(k) * v[i], mv[i], tolerance);
        }
        if (k > 0) {
            EXPECT_GE(found.eigen_value(k - 1), found.eigen_value(k));
        }
    }
}

// The smallest singular value of the three eigenvectors: 0 when they are dependent, 1 at right angles.
double independence(mlEigenVecs const & found) {
    mlMatrix m(3, 3);
    for (int k = 0; k < 3; ++k) {
        m[k] = found.eigen_vector(k);
    }
    return mlSingularValueDecomposition(m).diagonal().read(2);
}

mlMatrix random_matrix(int n, mlRandom & random) {
    mlMatrix m(n, n);
    for (int i = 0; i < n * n; ++i) {
        m.row_data(0)[i] = random.minus_one_one();
    }
    return m;
}

TEST(SymEigenVecs, DecomposesMatricesOfAnyOrderAndRank) {
    mlRandom random(1);
    for (int n = 0; n < 9; ++n) {
        for (int rank = 0; rank <= n; ++rank) {
            // Both signs among the eigenvalues.
            mlMatrix half = random_matrix(n, random);
            mlMatrix middle(mlMatrixZero, n, n);
            for (int i = 0; i < rank; ++i) {
                middle(i, i) = i % 2 == 0 ? 1.0 : -1.0;
            }
            mlMatrix const m(mlMatrixProduct, mlMatrix(mlMatrixProduct, half, middle),
                             mlMatrix(mlMatrixTranspose, half));
            mlSymEigenVecs found(m);
            found.calculate();
            ASSERT_EQ(n, found.num_real_eigen_values());
            expect_eigenpairs(m, found, 2e-14);  // the worst seen is 3e-15
            for (int k = 0; k < n; ++k) {
                for (int l = 0; l < k; ++l) {
                    mlVector const a(mlMatrixProduct, mlMatrix(mlMatrixIdentity, n), found.eigen_vector(k));
                    mlVector const b(mlMatrixProduct, mlMatrix(mlMatrixIdentity, n), found.eigen_vector(l));
                    EXPECT_NEAR(0.0, scalar_product(a, b), 1e-14);
                }
            }
        }
    }
}

TEST(SymEigenVecs, KeepsTheDigitsOfSmallRows) {
    // D * A * D with D = diag(1, 2^-25, 2^-50): the eigenvalues multiply to the determinant, which is exact.
    double const elements[] = {2.0, 0x1p-25, 0x1p-50, 0x1p-25, -0x3p-50, 0x1p-75, 0x1p-50, 0x1p-75, 0x1p-100};
    mlSymEigenVecs found(mlMatrix(utConvert, elements, 3, 3));
    found.calculate();
    double const determinant = -4.0 * 0x1p-150;
    EXPECT_NEAR(1.0, found.eigen_value(0) * found.eigen_value(1) * found.eigen_value(2) / determinant, 1e-14);
    EXPECT_GT(found.eigen_value(1), 0.0);
}

TEST(AsymEigenVecs3, FindsDistinctAndMultipleValues) {
    // P with its inverse, both of whole numbers.
    double const p[] = {1.0, 2.0, 3.0, 0.0, 1.0, 4.0, 5.0, 6.0, 0.0};
    double const inverse[] = {-24.0, 18.0, 5.0, 20.0, -15.0, -4.0, -5.0, 4.0, 1.0};
    for (std::vector<double> const & values :
         {std::vector<double>{5.0, 2.0, -3.0}, {7.0, 7.0, -3.0}, {7.0, -3.0, -3.0}, {4.0, 4.0, 4.0}, {0.0, 0.0, 0.0}}) {
        mlMatrix middle(mlMatrixZero, 3, 3);
        middle.diagonal() = mlVector(utConvert, values.data(), 3);
        mlMatrix const m(mlMatrixProduct, mlMatrix(mlMatrixProduct, mlMatrix(utConvert, p, 3, 3), middle),
                         mlMatrix(utConvert, inverse, 3, 3));
        mlAsymEigenVecs3 found(m);
        found.calculate();
        ASSERT_EQ(3, found.num_real_eigen_values());
        expect_eigenpairs(m, found, 1e-12);  // elements of about 600
        for (int k = 0; k < 3; ++k) {
            EXPECT_NEAR(values[static_cast<std::size_t>(k)], found.eigen_value(k), 1e-9);
        }
        EXPECT_GT(independence(found), 0.004);  // that of P's columns is 0.0044
    }
}

TEST(AsymEigenVecs3, TakesADoubleValueForRealWhateverItsRounding) {
    mlRandom random(2);
    int tried = 0;
    while (tried < 500) {
        mlMatrix const p = random_matrix(3, random);
        mlSingularValueDecomposition svd(p);
        if (svd.is_singular(0.1)) {
            continue;
        }
        ++tried;
        mlMatrix middle(mlMatrixIdentity, 3);
        middle(2, 2) = -1.0 + 0.5 * random.zero_one();
        mlMatrix const m(mlMatrixProduct, mlMatrix(mlMatrixProduct, p, middle), svd.inverse(0.0));
        mlAsymEigenVecs3 found(m);
        found.calculate();
        ASSERT_EQ(3, found.num_real_eigen_values());
        expect_eigenpairs(m, found, 1e-13);
        EXPECT_GT(independence(found), 0.05);
    }
}

TEST(AsymEigenVecs3, TellsComplexPairsFromDoubleValues) {
    // A turn by a small angle about z, and a double value with a single direction.
    double const angle = 1e-6;
    double const turn[] = {
        std::cos(angle), -std::sin(angle), 0.0, std::sin(angle), std::cos(angle), 0.0, 0.0, 0.0, 3.0};
    mlAsymEigenVecs3 turned(mlMatrix(utConvert, turn, 3, 3));
    turned.calculate();
    ASSERT_EQ(1, turned.num_real_eigen_values());
    EXPECT_NEAR(3.0, turned.eigen_value(0), 1e-15);
    EXPECT_NEAR(1.0, std::fabs(turned.eigen_vector(0)[2]), 1e-15);
    EXPECT_EQ(0.0, length(turned.eigen_vector(1)));

    double const single[] = {2.0, 1.0, 0.0, 0.0, 2.0, 0.0, 0.0, 0.0, 1.0};
    mlAsymEigenVecs3 sheared(mlMatrix(utConvert, single, 3, 3));
    sheared.calculate();
    ASSERT_EQ(3, sheared.num_real_eigen_values());
    EXPECT_NEAR(1.0, std::fabs(sheared.eigen_vector(1)[0]), 1e-14);
}

TEST(EigenVecs, HasNoRealValuesForElementsThatAreNotFinite) {
    mlMatrix m(mlMatrixIdentity, 3);
    m(0, 1) = std::numeric_limits<double>::quiet_NaN();
    mlSymEigenVecs sym(m);
    mlAsymEigenVecs3 asym(m);
    for (mlEigenVecs * const found : {static_cast<mlEigenVecs *>(&sym), static_cast<mlEigenVecs *>(&asym)}) {
        found->calculate();
        EXPECT_EQ(0, found->num_real_eigen_values());
        EXPECT_EQ(0.0, found->eigen_value(2));
        EXPECT_EQ(0.0, length(found->eigen_vector(2)));
    }
}

}  // namespace
