#include <datumfit/foundation/maths/triangular_factor.h>

#include <datumfit/foundation/maths/lanes.h>

#include <algorithm>
#include <cmath>

#if !defined(__clang__)
#pragma GCC diagnostic ignored "-Wpsabi"  // no vector crosses a call: all that hold one are inlined into the pass
#endif

namespace datumfit {
namespace internal {

namespace {

// A column keeps at least this share of its squared length beside the columns before it, or the Gram matrix has lost
// more than the half of the digits that the solver needs to converge fast.
constexpr double weakest_gram_pivot = 1e-6;

template <class Lanes>
DATUMFIT_INLINE Lanes load(double const * a) {
    return Lanes(a[0], a[1], a[2], a[3]);
}

template <class Lanes>
DATUMFIT_INLINE double dot(double const * a, double const * b, int n) {
    Lanes s(0.0);
    double rest = 0.0;
    int i = 0;
    for (; i + lane_count <= n; i += lane_count) s += load<Lanes>(a + i) * load<Lanes>(b + i);
    for (; i < n; ++i) rest += a[i] * b[i];
    return sum_of_lanes(s) + rest;
}

// c -= w v
DATUMFIT_INLINE void subtract(double * __restrict c, double w, double const * __restrict v, int n) {
    for (int i = 0; i < n; ++i) c[i] -= w * v[i];
}

// The rows of R, each `width` long, and the block, whose columns are `stride` apart. One reflection for each column
// takes it to nothing; it touches its own row of R and the block alone. Gives the sum of the squares of d.
template <class Lanes>
DATUMFIT_INLINE double reflect(double * R, int columns, int width, double * block, int rows, int stride) {
    double const * const d = block + columns * stride;
    double const sum = dot<Lanes>(d, d, rows);
    for (int k = 0; k < columns; ++k) {
        double const * const v = block + k * stride;
        double * const row = R + k * width;
        double const below = dot<Lanes>(v, v, rows);
        if (below == 0.0) continue;
        double const alpha = row[k];
        double const length = std::sqrt(alpha * alpha + below);
        double const head = alpha > 0.0 ? alpha + length : alpha - length;  // the sum that does not cancel
        double const weight = 1.0 / (length * (length + std::abs(alpha)));  // 2 / (square of the whole vector)
        row[k] = alpha > 0.0 ? -length : length;
        for (int j = k + 1; j <= columns; ++j) {
            double * const c = block + j * stride;
            double const w = weight * (head * row[j] + dot<Lanes>(v, c, rows));
            row[j] -= w * head;
            subtract(c, w, v, rows);
        }
    }
    return sum;
}

DATUMFIT_WIDE double reflect_wide(double * R, int columns, int width, double * block, int rows, int stride) {
    return reflect<wide_lanes>(R, columns, width, block, rows, stride);
}

}  // namespace

triangular_factor::triangular_factor(int columns)
    : capacity_(columns), columns_(columns), sum_(0.0),
      at_(static_cast<std::size_t>(columns + 1) * static_cast<std::size_t>(columns + 1), 0.0) {}

void triangular_factor::clear(int columns) {
    columns_ = columns;
    sum_ = 0.0;
    weakest_pivot_ = 1.0;
    std::fill(at_.begin(), at_.end(), 0.0);
}

void triangular_factor::cut(int columns) {
    for (int row = 0; row < columns; ++row) (*this)(row, columns) = head(row);
    columns_ = columns;
}

void triangular_factor::absorb(double * block, int rows, int stride) {
    int const width = capacity_ + 1;
    sum_ += has_wide_lanes() ? reflect_wide(at_.data(), columns_, width, block, rows, stride)
                             : reflect<narrow_lanes>(at_.data(), columns_, width, block, rows, stride);
}

bool triangular_factor::take_gram(double const * upper) {
    for (int j = 0; j < columns_; ++j) {
        for (int k = j; k <= columns_; ++k) {
            double a = *upper++;
            double const whole = a;
            for (int i = 0; i < j; ++i) a -= (*this)(i, j) * (*this)(i, k);
            if (k > j) {
                (*this)(j, k) = a / (*this)(j, j);
            } else if (a > weakest_gram_pivot * whole) {  // a NaN is refused too
                weakest_pivot_ = std::fmin(weakest_pivot_, a / whole);
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

}  // namespace internal
}  // namespace datumfit
