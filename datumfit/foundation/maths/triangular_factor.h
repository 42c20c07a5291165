#pragma once

#include <vector>

namespace datumfit {
namespace internal {

/// The triangular factor of a tall least-squares problem J x = -d, gathered block by block.
///
/// Holds the upper triangular R of J = Q R and the head b of Qᵀd. The rows of J and d are seen once and not kept, and
/// the condition of J is not squared (Golub & Van Loan 2013, 5.2). The alternative is the Cholesky factor of the Gram
/// matrix of [J d], which costs fewer operations a row but loses twice the digits: it is refused when that would tell.
class triangular_factor {
public:
    /// Room for that many columns of J. All other operations allocate nothing.
    explicit triangular_factor(int columns);

    int columns() const { return columns_; }

    /// Starts anew, without rows, with as many columns as told (at most those that there is room for).
    void clear(int columns);

    /// Keeps only so many columns of J, the first ones.
    void cut(int columns);

    /// Adds rows of [J d]: column k stands at block + k * stride, d behind the last one. The block is destroyed.
    void absorb(double * block, int rows, int stride);

    /// Takes the factor of a Gram matrix of [J d], whose upper triangle stands row by row. False, with the factor in
    /// no defined state, when a column depends on those before it so much that fewer than half of the digits remain.
    bool take_gram(double const * upper);

    /// The least share of its squared length that a column of the Gram matrix taken last keeps beside those before it.
    /// The digits of a step are those of the reflections, less the digits of the root of this.
    double weakest_pivot() const { return weakest_pivot_; }

    double operator()(int row, int column) const { return at_.data()[row * (capacity_ + 1) + column]; }
    double & operator()(int row, int column) { return at_.data()[row * (capacity_ + 1) + column]; }

    /// Element of b.
    double head(int row) const { return (*this)(row, columns_); }
    double & head(int row) { return (*this)(row, columns_); }

    /// The sum of the squares of d.
    double sum_of_squares() const { return sum_; }

    /// Writes the x with R x = -b, by back-substitution; R must have no zero on its diagonal.
    void solve(double * x) const;

private:
    int capacity_;
    int columns_;
    double sum_;
    double weakest_pivot_ = 1.0;
    std::vector<double> at_;  // row by row, with b as one more column
};

}  // namespace internal
}  // namespace datumfit
