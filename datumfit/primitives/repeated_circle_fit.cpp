#include <datumfit/primitives/repeated_circle_fit.h>

#include <algorithm>
#include <cmath>

namespace datumfit {
namespace internal {

namespace {

// All points at the origin, from where the models will count.
giPoint2coDynArr room_for(int n) {
    giPoint2coDynArr points(std::max(n, 1), 1);
    for (int i = 0; i < n; ++i) points.append(giPoint2(0.0, 0.0));
    return points;
}

}  // namespace

repeated_circle_fit::repeated_circle_fit(int n, doublecoDynArr const * radii, int inside)
    : radii_(radii), points_(room_for(n)), free_(points_),
      probed_(points_, radii != nullptr ? *radii : no_radii_, inside), free_solver_(free_), probed_solver_(probed_),
      circle_(mlVectorZero, 3), scratch_(circle_) {}

bool repeated_circle_fit::fit() {
    if (points_.size() < 3) return false;
    if (radii_ != nullptr) {
        deviation_ = fit_probed_circle(probed_, probed_solver_, points_, *radii_, scratch_, circle_);
    } else {
        deviation_ = std::sqrt(fit_circle(free_, free_solver_, points_, circle_));
    }
    return true;
}

}  // namespace internal
}  // namespace datumfit
