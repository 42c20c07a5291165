#pragma once

#include <datumfit/foundation/maths/matrix.h>
#include <datumfit/foundation/maths/vector.h>

namespace datumfit {
namespace internal {

/// A function ½ xᵀ A x + gᵀ x with A symmetric and positive semidefinite, told from a centre.
///
/// Directions in which A does not curve are idle. The little slope that rounding leaves along them is taken away; a
/// greater one stays. Beside A stands H, which is A with a little curvature in the idle directions, and so definite.
class convex_quadratic {
public:
    /// ½ |x - centre|²
    explicit convex_quadratic(mlVector const & centre);

    /// Sizes agree. Negative curvature counts as none.
    convex_quadratic(mlMatrix const & A, mlVector const & g, mlVector const & centre);

    int unknowns() const { return centre_.dimension(); }
    mlVector const & centre() const { return centre_; }

    /// 0 when A or the gradient at the centre holds a number that is not finite.
    int valid() const { return spread_.rows() == unknowns(); }

    void gradient(mlVector const & x, mlVector & gradient) const;

    /// The size of the terms that make up the gradient at an x of this size: its rounding is some 1e-16 of that.
    double gradient_size(double size) const { return slope_size_ + curvature_size_ * size; }

    /// Its rows t are as many as unknowns, and the sum of t tᵀ is the inverse of H.
    mlMatrix const & spread() const { return spread_; }

private:
    mlVector centre_, slope_;  // the slope is the gradient at the centre
    mlMatrix curvature_, spread_;
    double slope_size_, curvature_size_ = 1.0;  // of the terms of the slope, and of A
    mlMatrix flat_;  // rows of unit length: the idle directions along which there is no slope
};

}  // namespace internal
}  // namespace datumfit
