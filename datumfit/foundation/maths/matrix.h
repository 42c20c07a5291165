#pragma once

#include <datumfit/foundation/containers/dyn_arr.h>
#include <datumfit/foundation/maths/slice.h>
#include <datumfit/foundation/utilities/tags.h>

#include <algorithm>

/// Chooses the constructor or the `become` that makes a product, of two matrices or of a matrix and a column.
enum mlMatrixProductTag { mlMatrixProduct };

/// Chooses the constructor of a zero matrix.
enum mlMatrixZeroTag { mlMatrixZero };

/// Chooses the constructor of an identity matrix.
enum mlMatrixIdentityTag { mlMatrixIdentity };

/// Chooses the constructor that transposes.
enum mlMatrixTransposeTag { mlMatrixTranspose };

/// A dense matrix of doubles, row by row: element (r, c) is number cols * r + c of one array.
///
/// Copied and moved as a plain value; a copy is deep. Indices are not checked. Without memory for the elements a matrix
/// comes out 0 by 0.
class mlMatrix {
public:
    mlMatrix() = default;

    /// The elements hold no defined value until they are written.
    mlMatrix(int rows, int cols) { become(rows, cols); }
    mlMatrix(mlMatrixZeroTag, int rows, int cols);
    mlMatrix(mlMatrixIdentityTag, int n);

    /// From rows * cols doubles, row by row.
    mlMatrix(utConvertTag, double const * elements, int rows, int cols);
    mlMatrix(utCopyTag, mlMatrix const & m) : mlMatrix(m) {}
    mlMatrix(mlMatrixTransposeTag, mlMatrix const & m);

    /// The product a * b; a has as many columns as b has rows.
    mlMatrix(mlMatrixProductTag, mlMatrix const & a, mlMatrix const & b) { become(mlMatrixProduct, a, b); }

    /// The same on an existing matrix, whose storage is kept where it suffices. A factor of the product may be this
    /// matrix itself.
    mlMatrix & become(int rows, int cols);
    mlMatrix & become(utCopyTag, mlMatrix const & m) { return *this = m; }
    mlMatrix & become(mlMatrixProductTag, mlMatrix const & a, mlMatrix const & b);

    /// Element (r, c). Written beyond the end, the array grows to hold it; rows() and cols() stay.
    double & operator()(int r, int c) { return elements_[cols_ * r + c]; }
    double const & operator()(int r, int c) const { return elements_[cols_ * r + c]; }

    /// The first element of row r; the others of the row follow it.
    double * row_data(int r) { return elements_.data() + cols_ * r; }
    double const * row_data(int r) const { return elements_.data() + cols_ * r; }

    int rows() const { return rows_; }
    int cols() const { return cols_; }

    /// Makes the matrix 0 by 0; the storage is kept when release is 0.
    void clear(int release) {
        elements_.clear(release);
        rows_ = cols_ = 0;
    }

    /// Element by element; the other matrix has the same shape.
    mlMatrix & operator+=(mlMatrix const & m);
    mlMatrix & operator-=(mlMatrix const & m);
    mlMatrix & operator*=(double factor);
    mlMatrix & operator/=(double divisor);

    /// Views of row r, of column k and of the diagonal, and of any elements by their numbers.
    mlSlice operator[](int r) { return slice(cols_ * r, 1, cols_); }
    mlSlice const operator[](int r) const { return slice(cols_ * r, 1, cols_); }
    mlSlice col(int k) { return slice(k, cols_, rows_); }
    mlSlice const col(int k) const { return slice(k, cols_, rows_); }
    mlSlice diagonal() { return slice(0, cols_ + 1, std::min(rows_, cols_)); }
    mlSlice const diagonal() const { return slice(0, cols_ + 1, std::min(rows_, cols_)); }
    mlSlice slice(int start, int stride, int count) { return mlSlice(elements_.data(), start, stride, count); }
    mlSlice const slice(int start, int stride, int count) const {
        // A slice const does not write.
        return mlSlice(const_cast<double *>(elements_.data()), start, stride, count);
    }

private:
    double * begin() { return elements_.data(); }
    double * end() { return begin() + rows_ * cols_; }
    double const * begin() const { return elements_.data(); }

    doublecoDynArr elements_;
    int cols_ = 0, rows_ = 0;
};
