#include <datumfit/align3d/points_to_planes/points_to_planes.h>

#include <algorithm>
#include <cmath>

namespace {

// For points that all but coincide with the origin a unit of rotation is still no more than this in radians.
constexpr double greatest_rotation_scale = 1e7;

}  // namespace

int sqPointsToPlanes::single_linear_step(giXform3 & step) {
    if (shift_directions_.size() > 0) return single_linear_step_translates(step);
    if (locked_from_.size() > 0) return single_linear_step_locked_axis(step);
    return positioning_.size() > 0 ? single_linear_step_locked_point(step) : single_linear_step_free(step);
}

void sqPointsToPlanes::set_rotation_scale(double square_sum_of_arms) {
    int const n = bestfit_.size();
    if (n == 0) return;
    double const arm = std::sqrt(square_sum_of_arms / n);
    if (arm != 0.0) rotation_scale_ = 1.0 / arm;
    rotation_scale_ = std::min(rotation_scale_, greatest_rotation_scale);
}
