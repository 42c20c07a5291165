#include <datumfit/foundation/maths/triangular_factor.h>

#include <algorithm>
#include <cmath>

namespace datumfit {
namespace internal {

namespace {

// A column keeps at least this share of its squared length beside the columns before it, or the Gram matrix has lost
// more than the half of the digits that the solver needs to converge fast.
constexpr double weakest_gram_pivot = 1e-6;

// In four partial sums, so that the compiler may work on them side by side without changing a bit.
double dot(double const * a, double const * b, int n) {
    double s0 = 0.0, s1 = 0.0, s2 = 0.0, s3 = 0.0;
    int i = 0;
    for (; i + 4 <= n; i += 4) {
        s0 += a[i] * b[i];
        s1 += a[i + 1] * b[i + 1];
        s2 += a[i + 2] * b[i + 2];
        s3 += a[i + 3] * b[i + 3];
    }
    for (; i < n; ++i) s0 += a[i] * b[i];
    return (s0 + s1) + (s2 + s3);
}

} // namespace

triangular_factor::triangular_factor(int columns)
    : capacity_(columns), columns_(columns), sum_(0.0),
      at_(static_cast<std::size_t>(columns + 1) * static_cast<std::size_t>(columns + 1), 0.0) {}

void triangular_factor::clear(int columns) {
    columns_ = columns;
    sum_ = 0.0;
    std::fill(at_.begin(), at_.end(), 0.0);
}

void triangular_factor::cut(int columns) {
    for (int row = 0; row < columns; ++row) (*this)(row, columns) = head(row);
    columns_ = columns;
}

void triangular_factor::absorb(double * block, int rows, int stride) {
    double const * const d = block + columns_ * stride;
    sum_ += dot(d, d, rows);
    for (int k = 0; k < columns_; ++k) {
        // One reflection takes column k of the block to nothing; it touches row k of R and the block alone.
        double * const v = block + k * stride;
        double const below = dot(v, v, rows);
        if (below == 0.0) continue;
        double const alpha = (*this)(k, k);
        double const length = std::sqrt(alpha * alpha + below);
        double const head = alpha > 0.0 ? alpha + length : alpha - length; // the sum that does not cancel
        double const scale = 1.0 / (length * (length + std::abs(alpha)));  // 2 / (square of the whole vector)
        (*this)(k, k) = alpha > 0.0 ? -length : length;
        for (int j = k + 1; j <= columns_; ++j) {
            double * const c = block + j * stride;
            double const w = scale * (head * (*this)(k, j) + dot(v, c, rows));
            (*this)(k, j) -= w * head;
            for (int i = 0; i < rows; ++i) c[i] -= w * v[i];
        }
    }
}

bool triangular_factor::take_gram(double const * upper) {
    for (int j = 0; j < columns_; ++j) {
        for (int k = j; k <= columns_; ++k) {
            double a = *upper++;
            double const whole = a;
            for (int i = 0; i < j; ++i) a -= (*this)(i, j) * (*this)(i, k);
            if (k > j) {
                (*this)(j, k) = a / (*this)(j, j);
            } else if (a > weakest_gram_pivot * whole) { // a NaN is refused too
                (*this)(j, j) = std::sqrt(a);
            } else {
                return false;
            }
        }
    }
    sum_ = *upper;
    return true;
}

void triangular_factor::solve(double * x) const {
    for (int k = columns_ - 1; k >= 0; --k) {
        double s = -head(k);
        for (int j = k + 1; j < columns_; ++j) s -= (*this)(k, j) * x[j];
        x[k] = s / (*this)(k, k);
    }
}

} // namespace internal
} // namespace datumfit
