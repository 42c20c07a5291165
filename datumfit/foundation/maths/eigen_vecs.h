#pragma once

#include <datumfit/foundation/maths/matrix.h>
#include <datumfit/foundation/maths/vector.h>

/// The eigenvalues and eigenvectors of a square matrix.
///
/// calculate() finds them; the results are read afterwards. The real eigenvalues come first, in descending order, and
/// their eigenvectors have unit length and either sense. Values and vectors of the numbers from num_real_eigen_values()
/// on are 0: before calculate() all, and also for a matrix with an element that is not finite, which has none.
class mlEigenVecs {
public:
    virtual void calculate() = 0;
    virtual ~mlEigenVecs();

    /// Accepted and not needed: the results are computed to rounding, whatever the tolerance.
    void set_tolerance(double) {}

    double eigen_value(int i) const { return values_.read(i); }

    /// A view into this object, valid until the next calculate().
    mlSlice const eigen_vector(int i) const { return vectors_.col(i); }

    int num_real_eigen_values() const { return num_real_; }

protected:
    /// For a matrix that is copied; its rows count, and it has as many columns.
    explicit mlEigenVecs(mlMatrix const & m);

    mlMatrix const & matrix() const { return matrix_; }

    /// Makes all results 0, then sets one real pair after the other.
    void clear_results();
    void append_result(double value, mlSlice const & vector);

private:
    mlMatrix matrix_;
    mlVector values_;
    mlMatrix vectors_;
    int num_real_ = 0;
};
