#pragma once

namespace datumfit {
namespace internal {

/// A skew frame in the plane: (u, v) is the point centre + (ux u, uy u + vy v).
struct skew_frame {
    double centre[2];
    double ux, uy, vy;
};

/// The means of the products of the coordinates of points up to the fourth degree, in a frame in which the points have
/// the mean 0 and the variance 1 in every direction, nearly.
///
/// There the sums of products are as good as a triangular factor of the points' rows: nothing in them cancels, however
/// far the points are from the origin, and however thin the set. What is fitted from them is carried over to the
/// coordinates of the points in closed form.
struct plane_moments {
    skew_frame frame;
    double mean[15];

    /// The mean of u^i v^j, for i + j up to 4.
    double operator()(int i, int j) const { return mean[(i + j) * (i + j + 1) / 2 + j]; }
};

/// Takes n points of two coordinates, n at least 1; one pass over them as a rule. The frame comes from a sample, and
/// where that was misleading, the pass is made again in the frame that the moments tell.
plane_moments find_plane_moments(double const * coordinates, int n);

}  // namespace internal
}  // namespace datumfit
