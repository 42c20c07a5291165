#include <datumfit/foundation/maths/matrix.h>

#include <algorithm>
#include <functional>
#include <limits>

mlMatrix::mlMatrix(mlMatrixZeroTag, int rows, int cols) : mlMatrix(rows, cols) {
    std::fill(begin(), end(), 0.0);
}

mlMatrix::mlMatrix(mlMatrixIdentityTag, int n) : mlMatrix(mlMatrixZero, n, n) {
    for (int i = 0; i < rows_; ++i) {
        (*this)(i, i) = 1.0;
    }
}

mlMatrix::mlMatrix(utConvertTag, double const * elements, int rows, int cols) : mlMatrix(rows, cols) {
    std::copy_n(elements, rows_ * cols_, begin());
}

mlMatrix::mlMatrix(mlMatrixTransposeTag, mlMatrix const & m) : mlMatrix(m.cols_, m.rows_) {
    for (int r = 0; r < rows_; ++r) {
        for (int c = 0; c < cols_; ++c) {
            (*this)(r, c) = m(c, r);
        }
    }
}

mlMatrix & mlMatrix::become(int rows, int cols) {
    clear(0);
    long long const count = static_cast<long long>(rows) * cols;
    if (count <= std::numeric_limits<int>::max() && elements_.expand(static_cast<int>(count))) {
        rows_ = rows;
        cols_ = cols;
    }
    return *this;
}

mlMatrix & mlMatrix::become(mlMatrixProductTag, mlMatrix const & a, mlMatrix const & b) {
    if (this == &a || this == &b) {
        return *this = mlMatrix(mlMatrixProduct, a, b);
    }
    become(a.rows_, b.cols_);
    std::fill(begin(), end(), 0.0);
    for (int r = 0; r < rows_; ++r) {
        double * const row = row_data(r);
        // By rows of b, which lie in one piece.
        for (int k = 0; k < a.cols_; ++k) {
            double const factor = a(r, k);
            double const * const b_row = b.row_data(k);
            for (int c = 0; c < cols_; ++c) {
                row[c] += factor * b_row[c];
            }
        }
    }
    return *this;
}

mlMatrix & mlMatrix::operator+=(mlMatrix const & m) {
    std::transform(begin(), end(), m.begin(), begin(), std::plus<>());
    return *this;
}

mlMatrix & mlMatrix::operator-=(mlMatrix const & m) {
    std::transform(begin(), end(), m.begin(), begin(), std::minus<>());
    return *this;
}

mlMatrix & mlMatrix::operator*=(double factor) {
    std::for_each(begin(), end(), [=](double & element) { element *= factor; });
    return *this;
}

mlMatrix & mlMatrix::operator/=(double divisor) {
    std::for_each(begin(), end(), [=](double & element) { element /= divisor; });
    return *this;
}
