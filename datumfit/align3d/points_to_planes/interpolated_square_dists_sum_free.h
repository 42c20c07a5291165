#pragma once

#include <datumfit/align3d/plane_and_point.h>
#include <datumfit/foundation/geometry/xform3.h>
#include <datumfit/foundation/maths/function.h>
#include <datumfit/foundation/maths/vector.h>

/// The sum of squares of best-fit records along the line from one solution of a free linear step to another.
///
/// A solution has six unknowns: a shift, and a rotation vector divided by `rotation_scale`. At t stands the rigid
/// motion of (1 - t) start + t end: each point is turned about the origin, by the arc tangent of the length of the
/// rotation vector, and then shifted. With p' the moved point, q and n the plane's, its normal carrying the weight, the
/// value is the sum of ((p' - q) . n)^2 + point_weight |p' - q|^2; 0 without records.
///
/// The records and both solutions are referred to, not copied. The transform of the last evaluation is kept, also by
/// const operations, so an object belongs to one thread.
class sqInterpolatedSquareDistsSumFree : public mlFunction {
public:
    /// A rotation vector shorter than tiny_angle counts as none.
    sqInterpolatedSquareDistsSumFree(sqPlaneAndPointcoDynArr const & pairs, mlVector const & start,
                                     mlVector const & end, double rotation_scale, double point_weight,
                                     double tiny_angle);
    ~sqInterpolatedSquareDistsSumFree() override;

    double function(double t) const override;
    double t_min() const override { return 0.0; }
    double t_max() const override { return 1.0; }

    /// The transform of t, which is also the last one from now on.
    giXform3 const & interpolate_xform(double t) const;

    /// The transform of the last evaluation; invalid before the first.
    giXform3 const & last_xform() const { return xform_; }

private:
    sqPlaneAndPointcoDynArr const & pairs_;
    mlVector const & start_;
    mlVector const & end_;
    double rotation_scale_;
    double point_weight_;
    double tiny_angle_;
    mutable giXform3 xform_;
};
