#pragma once

#include <datumfit/foundation/containers/dyn_arr.h>
#include <datumfit/foundation/geometry/point2.h>
#include <datumfit/foundation/geometry/point3.h>
#include <datumfit/foundation/geometry/unit_vec2.h>
#include <datumfit/foundation/geometry/unit_vec3.h>

/// How well points are spread over a primitive that was fitted to them, as a number from 0.
///
/// It grows with the extent of the points along the primitive and falls with their scatter across it. About 1 is a part
/// measured all over: a whole circle or sphere, a square of a plane. Numbers of different primitives, and those of free
/// and of probed ones, are not comparable. Curved primitives are graded by
/// mlDistanceLeastSquares::point_distribution_quality(), lines and planes by their extents, in the unit in use: points
/// that lie within 0.0001 of them count as scattered by that.
///
/// The arguments are what a fit returned. With fewer than 3 points the curved primitives give 0; lines need at least
/// one point.
class sqLeastSquareDistributionQuality {
public:
    static double distribution_quality_line(giPoint2coDynArr const & points, giPoint2 const & point,
                                            giUnitVec2 const & direction);

    /// Of the points seen along the normal of a plane.
    static double distribution_quality_line2(giPoint3 const & origin, giUnitVec3 const & normal,
                                             giPoint3coDynArr const & points, giPoint3 const & point,
                                             giUnitVec3 const & direction);
    static double distribution_quality_line3(giPoint3coDynArr const & points, giPoint3 const & point,
                                             giUnitVec3 const & direction);

    /// By the principal axes of the points: the plane itself is not looked at. 0 with fewer than 2 points.
    static double distribution_quality_plane(giPoint3coDynArr const & points, giPoint3 const & point,
                                             giUnitVec3 const & normal);

    static double distribution_quality_circle(giPoint2coDynArr const & points, giPoint2 const & centre, double radius);
    static double distribution_quality_circle2(giPoint3 const & origin, giUnitVec3 const & normal,
                                               giPoint3coDynArr const & points, giPoint3 const & centre, double radius);
    static double distribution_quality_circle3(giPoint3coDynArr const & points, giPoint3 const & centre,
                                               giUnitVec3 const & normal, double radius);
    static double distribution_quality_probed_circle(giPoint2coDynArr const & points, doublecoDynArr const & radii,
                                                     int inside, giPoint2 const & centre, double radius);
    static double distribution_quality_sphere(giPoint3coDynArr const & points, giPoint3 const & centre, double radius);

    static double distribution_quality_cylinder(giPoint3coDynArr const & points, giPoint3 const & axis_point,
                                                giUnitVec3 const & axis_dir, double radius);
    static double distribution_quality_probed_cylinder(giPoint3coDynArr const & points, doublecoDynArr const & radii,
                                                       int inside, giPoint3 const & axis_point,
                                                       giUnitVec3 const & axis_dir, double radius);

    /// axis_point is the apex, half_angle in radians.
    static double distribution_quality_cone(giPoint3coDynArr const & points, giPoint3 const & axis_point,
                                            giUnitVec3 const & axis_dir, double half_angle);

    /// The points of which guesses were made are not looked at.
    static double distribution_quality_probed_cone(giPoint3coDynArr const & points, doublecoDynArr const & radii,
                                                   int inside, giPoint3coDynArr const & guess_points,
                                                   giPoint3 const & axis_point, giUnitVec3 const & axis_dir,
                                                   double half_angle);

    /// a and b are the semi-axes, theta the angle of the first, in radians.
    static double distribution_quality_ellipse(giPoint2coDynArr const & points, giPoint2 const & centre, double a,
                                               double b, double theta);
    static double distribution_quality_torus(giPoint3coDynArr const & points, giPoint3 const & centre,
                                             giUnitVec3 const & axis_dir, double major_radius, double minor_radius);
};
