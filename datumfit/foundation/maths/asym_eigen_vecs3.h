#pragma once

#include <datumfit/foundation/maths/eigen_vecs.h>

/// The real eigenvalues and eigenvectors of a 3 by 3 matrix that need not be symmetric.
///
/// There are 3, or 1 where two are complex. |m * v - value * v| is within rounding of |m| for each value and its v.
/// A double eigenvalue is given twice: with two orthogonal eigenvectors where its eigenspace is a plane, else with its
/// one eigenvector twice. Rounding of the elements turns a double eigenvalue into a complex pair as easily as into two
/// real ones. So a pair that a change by 2^-40 |m| makes real counts as real, with its real part as the double value;
/// the error above is at most that change then.
class mlAsymEigenVecs3 : public mlEigenVecs {
public:
    explicit mlAsymEigenVecs3(mlMatrix const & m) : mlEigenVecs(m) {}
    void calculate() override;
};
