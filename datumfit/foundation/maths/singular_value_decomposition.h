#pragma once

#include <datumfit/foundation/maths/matrix.h>
#include <datumfit/foundation/maths/vector.h>

/// Whether the left singular vectors are computed.
enum mlJOB_U { mlJOB_U_NONE = 0, mlJOB_U_WANTED = 1 };

/// Whether the right singular vectors are computed.
enum mlJOB_V { mlJOB_V_NONE = 0, mlJOB_V_WANTED = 1 };

/// The singular value decomposition m = U * diag * V^T of a matrix of any shape, also without rows.
///
/// With r rows and c columns:
/// 1. diagonal() has c values, in descending order, none negative. When r is below c the last c - r are 0.
/// 2. V is c by c and orthogonal.
/// 3. U is r by c. Its columns are orthonormal, except that when r is below c the last c - r are 0.
/// 4. Scaling a column of m by a power of two costs no digits of the smaller singular values: the error is relative to
///    each column, not to the whole. Values below 1e-130 of the largest element are given as 0.
/// 5. A matrix with an element that is not finite is taken as a zero matrix: singular, and with the inverse zero.
///
/// Without U the cost is linear in the rows and no copy of m is made; with U one copy is.
///
/// The rows are reduced by Householder reflections, pairwise from blocks of rows, to a triangle, whose columns Jacobi
/// rotations make orthogonal (Demmel & Veselic 1992, SIAM J. Matrix Anal. Appl. 13(4), 1204).
class mlSingularValueDecomposition {
public:
    explicit mlSingularValueDecomposition(mlMatrix const & m);

    /// Computes U and V where wanted; one that is not stays 0 by 0.
    mlSingularValueDecomposition(mlMatrix const & m, mlJOB_U job_u, mlJOB_V job_v);

    mlVector const & diagonal() const { return diagonal_; }

    /// Column k belongs to singular value k.
    mlMatrix const & U() const { return u_; }
    mlMatrix const & V() const { return v_; }

    /// Whether the smallest singular value is at most tol times the largest, or the largest is 0; true for a matrix
    /// that has fewer rows than columns.
    bool is_singular(double tol) const;

    /// The pseudo-inverse, c by r, in which singular values at or below tol itself count as 0. It belongs to this
    /// object until the next call. Needs U and V; 0 by 0 without them.
    mlMatrix const & inverse(double tol);

    /// Writes the x of least |m * x - b| to x, and of these the shortest; singular values within rounding of 0 count as
    /// 0. b has r elements, x will have c. Needs U and V; x comes out of dimension 0 without them.
    void solve(mlVector const & b, mlVector & x) const;

private:
    bool has_both_factors() const { return u_.cols() > 0 && v_.cols() > 0; }

    mlVector diagonal_;
    mlMatrix u_, v_;
    mlMatrix inverse_;
};
