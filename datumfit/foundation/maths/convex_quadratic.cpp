#include <datumfit/foundation/maths/convex_quadratic.h>

#include <datumfit/foundation/maths/sym_eigen_vecs.h>
#include <datumfit/foundation/utilities/hypotenuse.h>

#include <algorithm>
#include <cmath>

namespace datumfit {
namespace internal {

namespace {

// Eigenvalues up to this share of the greatest are rounding: a sum over thousands of points leaves 1e-13 of it.
constexpr double idle_share = 1e-12;

// Slopes up to this share of their terms are what such eigenvalues give where the minimum is less than 1e6 times
// farther off along them than along others.
constexpr double flat_share = 1e-6;

// The curvature that H has in idle directions, as a share of the greatest. Rounding of a row, 1e-16 of it, draws the
// minimum by 1e-16 over this share along them; and this share of a move there bends the choice of the active rows.
constexpr double idle_curvature = 1e-8;

double length(double const * v, int n) {
    double sum = 0.0;
    for (int j = 0; j < n; ++j) sum += v[j] * v[j];
    return std::sqrt(sum);
}

double component(double const * unit, double const * v, int n) {
    double along = 0.0;
    for (int j = 0; j < n; ++j) along += unit[j] * v[j];
    return along;
}

void remove_components(mlMatrix const & units, mlVector & v) {
    for (int k = 0; k < units.rows(); ++k) {
        double const along = component(units.row_data(k), v.data(), v.dimension());
        for (int j = 0; j < v.dimension(); ++j) v[j] -= along * units(k, j);
    }
}

}  // namespace

convex_quadratic::convex_quadratic(mlVector const & centre)
    : centre_(centre), slope_(mlVectorZero, centre.dimension()), curvature_(mlMatrixIdentity, centre.dimension()),
      spread_(mlMatrixIdentity, centre.dimension()), slope_size_(length(centre.data(), centre.dimension())) {}

convex_quadratic::convex_quadratic(mlMatrix const & A, mlVector const & g, mlVector const & centre)
    : centre_(centre), slope_(mlMatrixProduct, A, centre), curvature_(A) {
    int const n = unknowns();
    slope_ += g;
    curvature_size_ = length(A.row_data(0), n * n);
    slope_size_ = curvature_size_ * length(centre.data(), n) + length(g.data(), n);
    if (!std::isfinite(slope_size_)) return;
    mlSymEigenVecs eigen(A);
    eigen.calculate();
    double const greatest = std::max(eigen.eigen_value(0), 0.0);
    int curved = 0;
    while (curved < n && eigen.eigen_value(curved) > idle_share * greatest) ++curved;
    flat_.become(n - curved, n);
    double idle_slope = 0.0;
    for (int k = curved; k < n; ++k) {
        flat_[k - curved] = eigen.eigen_vector(k);
        idle_slope =
            hypotenuse(idle_slope, component(flat_.row_data(k - curved), slope_.data(), n));
    }
    if (idle_slope > flat_share * slope_size_) flat_.become(0, n);
    remove_components(flat_, slope_);
    // Where nothing curves, the only measure is the slope.
    double const measure = curved > 0 ? greatest : idle_slope > 0.0 ? idle_slope : 1.0;
    spread_.become(n, n);
    for (int k = 0; k < n; ++k) {
        double const root = std::sqrt(k < curved ? eigen.eigen_value(k) : idle_curvature * measure);
        for (int j = 0; j < n; ++j) spread_(k, j) = eigen.eigen_vector(k)[j] / root;
    }
}

void convex_quadratic::gradient(mlVector const & x, mlVector & gradient) const {
    gradient = slope_;
    for (int i = 0; i < unknowns(); ++i) {
        double sum = 0.0;
        for (int j = 0; j < unknowns(); ++j) sum += curvature_(i, j) * (x[j] - centre_[j]);
        gradient[i] += sum;
    }
    remove_components(flat_, gradient);
}

}  // namespace internal
}  // namespace datumfit
