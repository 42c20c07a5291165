#pragma once

#include <datumfit/foundation/geometry/point3.h>
#include <datumfit/foundation/geometry/vector3.h>
#include <datumfit/foundation/maths/function_n1.h>
#include <datumfit/primitives/repeated_circle_fit.h>

/// How well points fit a torus about an axis, as a function of the axis, for mlDownHillSimplex.
///
/// About a given axis all points fold into one half plane, where the torus is a circle that is fitted directly; four
/// unknowns of the axis remain. Variables: the shifts of the axis point along two directions u and v across the start
/// axis, and the turns of the axis towards these, in radians.
///
/// The points and radii (one for each point, or none for points on the surface) are referred to. An object belongs to
/// one thread: its const operations share buffers.
class sqDistanceFromTorus : public mlFunctionN1 {
public:
    /// start_axis is expected to have unit length.
    sqDistanceFromTorus(giPoint3coDynArr const & points, doublecoDynArr const & radii, int inside,
                        giPoint3 const & start_point, giVector3 const & start_axis);

    /// The deviation of the torus about the axis; 100 when it has none, or a negative major radius.
    double function(mlSlice const & x) const override;

    /// The torus about the axis; 1, or 0 with fewer than 3 points, and then nothing is written. A negative major radius
    /// makes the deviation 100.
    int torus_data(mlSlice const & x, giPoint3 & centre, giVector3 & axis, double & major, double & minor,
                   double & deviation) const;

    /// The axis direction of the two turns.
    giVector3 torus_axis(double x2, double x3) const;

    /// The area of the convex hull of the folded points; 0 without points.
    double projection_hull_area(mlSlice const & x);

    /// Writes the variables of the axis through a point along a unit vector.
    void get_variables(giPoint3 const & point, giVector3 const & vector, mlVector & x) const;
    ~sqDistanceFromTorus() override;

private:
    giPoint3 axis_point(mlSlice const & x) const;
    void fold(mlSlice const & x) const;

    giPoint3coDynArr const & points_;
    giPoint3 start_point_;
    giVector3 start_axis_, u_dir_, v_dir_;
    mutable datumfit::internal::repeated_circle_fit circle_;  // of the folded points
};

/// The area of the convex hull of the folded points of a torus objective, as a function of the same four variables: it
/// is small where the points repeat themselves about the axis.
class sqRotationalProjectionHullArea : public mlFunctionN1 {
public:
    /// The objective is referred to.
    explicit sqRotationalProjectionHullArea(sqDistanceFromTorus & distance);

    double function(mlSlice const & x) const override;
    ~sqRotationalProjectionHullArea() override;

private:
    sqDistanceFromTorus & distance_;
};

namespace datumfit {
namespace internal {

/// Two unit vectors across a and each other: u the direction of the longer of a × x axis and a × y axis, the second one
/// on a tie, v that of a × u.
void orthogonal_pair(giVector3 & u, giVector3 & v, giVector3 const & a);

}  // namespace internal
}  // namespace datumfit
