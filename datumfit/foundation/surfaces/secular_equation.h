#pragma once

namespace datumfit {
namespace internal {

/// The feet of points on an ellipsoid, an elliptic cylinder or an elliptic cone in its principal axes,
///   x² / s0² + y² / s1² + z² / s2² = 1,   x² / s0² + y² / s1² = 1   or   x² / s0² + y² / s1² = z²,
/// with semi-axes in ascending order.
///
/// The foot of p lies where p - y is along the gradient: y_i = p_i s_i² / (s_i² + t), for the cone's z with the sign of
/// s_i² turned, s_2 = 1. So with r_i = s_i p_i / (t - t_i) and poles t_i = -s_i² (+1 for the cone's z), t is a root of
///   f(t) - l(t) = 0,   f = 1 / root of the sum of the squares r_i² but for the cone's z,
/// where l is 1, or |t - 1| / |p_z| for the cone. Between two poles f is concave (as in the trust regions of Moré &
/// Sorensen 1983, for the interval above all poles; by the inequality of Cauchy & Schwarz it holds in each), and nearly
/// straight away from the curve of centres of curvature. So from below f - l = 0, Newton's method rises to the nearest
/// root of an interval without passing it, and passes the top of f - l at once where there is none: no foot is lost.
class secular_equation {
public:
    enum quadric { ellipsoid, elliptic_cylinder, elliptic_cone };

    struct feet {
        int n = 0;
        double places[6][3];
    };

    secular_equation() = default;

    /// Takes the semi-axes in ascending order; the third only for an ellipsoid.
    secular_equation(quadric kind, double s0, double s1, double s2);

    /// All feet of p, in no special order. A point on a plane of symmetry has the feet of one a tiny step off it: so of
    /// a circle of feet it has two opposite ones.
    void find(double const (&p)[3], feet & found) const;

private:
    struct search;

    quadric kind_ = ellipsoid;
    double semi_axes_[3] = {1.0, 1.0, 1.0};
    double gaps_[3][3] = {};  // pole k less pole i
};

}  // namespace internal
}  // namespace datumfit
