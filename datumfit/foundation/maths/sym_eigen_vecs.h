#pragma once

#include <datumfit/foundation/maths/eigen_vecs.h>

/// The eigenvalues and eigenvectors of a symmetric matrix of any order; all are real.
///
/// The eigenvectors are orthogonal. Where rounding has left the matrix a little unsymmetric, its symmetric part counts.
/// Rows and columns may be of very different sizes: on a matrix D * A * D with D diagonal and A well conditioned, small
/// eigenvalues keep their digits, and so do the small entries of the eigenvectors.
///
/// Cyclic Jacobi rotations (Golub & Van Loan 2013, Matrix Computations, section 8.5), each pair of rows to rounding of
/// its own diagonal (Demmel & Veselic 1992).
class mlSymEigenVecs : public mlEigenVecs {
public:
    explicit mlSymEigenVecs(mlMatrix const & m) : mlEigenVecs(m) {}
    void calculate() override;
};
