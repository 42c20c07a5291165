#pragma once

#include <datumfit/foundation/containers/dyn_arr.h>
#include <datumfit/foundation/maths/matrix.h>
#include <datumfit/foundation/maths/slice.h>
#include <datumfit/foundation/utilities/tags.h>

/// Chooses the constructor or the `become` that gives a dimension only.
enum mlVectorDimTag { mlVectorDim };

/// Chooses the constructor or the `become` of a zero vector.
enum mlVectorZeroTag { mlVectorZero };

/// A vector of doubles: an array whose size is the dimension.
///
/// Copied and moved as a plain value; a copy is deep. As in the array, element n written through the non-const
/// operator[] extends dimension n to n + 1, and reading a const vector does not grow it. Without memory for the
/// elements a vector comes out of dimension 0.
class mlVector : public doublecoDynArr {
public:
    mlVector() = default;

    /// The elements hold no defined value until they are written.
    mlVector(mlVectorDimTag, int n) { become(mlVectorDim, n); }
    mlVector(mlVectorZeroTag, int n) { become(mlVectorZero, n); }

    /// The n doubles at p.
    mlVector(utConvertTag, double const * p, int n) { become(utConvert, p, n); }
    mlVector(utCopyTag, mlVector const & v) : mlVector(v) {}

    /// The product of m and the column v, which has as many elements as m has columns.
    mlVector(mlMatrixProductTag, mlMatrix const & m, mlVector const & v) { become(mlMatrixProduct, m, v); }
    mlVector(mlMatrixProductTag, mlMatrix const & m, mlSlice const & v) { become(mlMatrixProduct, m, v); }

    /// The same on an existing vector, whose storage is kept where it suffices. The source may lie in this vector.
    mlVector & become(mlVectorDimTag, int n);
    mlVector & become(mlVectorZeroTag, int n);
    mlVector & become(utConvertTag, double const * p, int n);
    mlVector & become(utCopyTag, mlVector const & v) { return *this = v; }
    mlVector & become(utCopyTag, mlSlice const & v);
    mlVector & become(mlMatrixProductTag, mlMatrix const & m, mlVector const & v);
    mlVector & become(mlMatrixProductTag, mlMatrix const & m, mlSlice const & v);

    /// A copy of the elements that the slice views; the dimension becomes its.
    mlVector & operator=(mlSlice const & v) { return become(utCopy, v); }

    int dimension() const { return size(); }

    /// Every element becomes x.
    void fill(double x);

    /// Element by element; v has as many elements as this vector.
    mlVector & operator+=(mlVector const & v);
    mlVector & operator*=(double factor);

    /// A view of all elements.
    operator mlSlice() { return mlSlice(data(), 0, 1, size()); }
    operator mlSlice const() const {
        // A slice const does not write.
        return mlSlice(const_cast<double *>(data()), 0, 1, size());
    }
};

/// The dot product of two vectors of one dimension.
double scalar_product(mlVector const & a, mlVector const & b);

/// Writes m * v to `result`, which may be v itself.
void multiply(mlMatrix const & m, mlVector const & v, mlVector & result);
