#include <datumfit/foundation/maths/vector.h>

#include <algorithm>
#include <functional>
#include <numeric>

namespace {

// A source within the target's own storage would be overwritten while it is read, or freed.
bool lies_in(mlSlice const & source, mlVector const & target) {
    return source.dimension() > 0 && !std::less<>()(source.start(), target.data()) &&
           std::less<>()(source.start(), target.data() + target.capacity());
}

}  // namespace

mlVector & mlVector::become(mlVectorDimTag, int n) {
    clear(0);
    expand(n);
    return *this;
}

mlVector & mlVector::become(mlVectorZeroTag, int n) {
    become(mlVectorDim, n);
    fill(0.0);
    return *this;
}

mlVector & mlVector::become(utConvertTag, double const * p, int n) {
    // Read only; the slice serves as the common form of a source.
    return become(utCopy, mlSlice(const_cast<double *>(p), 0, 1, n));
}

mlVector & mlVector::become(utCopyTag, mlSlice const & v) {
    if (lies_in(v, *this)) {
        mlVector copy;
        return *this = copy.become(utCopy, v);
    }
    become(mlVectorDim, v.dimension());
    for (int i = 0; i < dimension(); ++i) {
        (*this)[i] = v[i];
    }
    return *this;
}

mlVector & mlVector::become(mlMatrixProductTag, mlMatrix const & m, mlVector const & v) {
    mlSlice const all = v;
    return become(mlMatrixProduct, m, all);
}

mlVector & mlVector::become(mlMatrixProductTag, mlMatrix const & m, mlSlice const & v) {
    if (lies_in(v, *this)) {
        return *this = mlVector(mlMatrixProduct, m, v);
    }
    become(mlVectorDim, m.rows());
    for (int r = 0; r < dimension(); ++r) {
        double sum = 0.0;
        for (int c = 0; c < m.cols(); ++c) {
            sum += m(r, c) * v[c];
        }
        (*this)[r] = sum;
    }
    return *this;
}

void mlVector::fill(double x) {
    std::fill_n(data(), size(), x);
}

mlVector & mlVector::operator+=(mlVector const & v) {
    std::transform(data(), data() + size(), v.data(), data(), std::plus<>());
    return *this;
}

mlVector & mlVector::operator*=(double factor) {
    std::for_each(data(), data() + size(), [=](double & element) { element *= factor; });
    return *this;
}

double scalar_product(mlVector const & a, mlVector const & b) {
    return std::inner_product(a.data(), a.data() + a.size(), b.data(), 0.0);
}

void multiply(mlMatrix const & m, mlVector const & v, mlVector & result) {
    result.become(mlMatrixProduct, m, v);
}
