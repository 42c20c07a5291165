#pragma once

#include <datumfit/foundation/geometry/angle.h>
#include <datumfit/foundation/geometry/point2.h>
#include <datumfit/foundation/geometry/point3.h>
#include <datumfit/foundation/geometry/unit_vec2.h>
#include <datumfit/foundation/geometry/unit_vec3.h>

class sqFittedCylinder;
class sqFittedCone;
using sqFittedCylindercoDynArr = coDynArr<sqFittedCylinder>;
using sqFittedConecoDynArr = coDynArr<sqFittedCone>;

/// Fits of geometry to measured points by least squares of the orthogonal distances.
///
/// Every entry takes points in any order and any one unit, and gives 1 with the results in that unit, or 0 when there
/// was no fit. With fewer points than an entry needs, the results are as they were. The deviation is the root mean
/// square of the distances of the points from the result. Nothing else fails: points that do not determine the geometry
/// give one of the many that fit them. The same input gives the same bits on every call.
///
/// Probed entries take the centres of a probe that touched the surface, with one probe radius for each point at least,
/// and give the surface. With `inside` not 0 the centres lie inside the geometry, as in a bore: the surface is one
/// radius further out. With `inside` 0 they lie outside.
class sqLeastSquareEvaluator {
public:
    /// A line in the plane through the centroid of at least 2 points, by principal axes. 0 with all points in one
    /// place: then point is that place, the direction arbitrary.
    static int evaluate_line(giPoint2coDynArr const & points, giPoint2 & point, giUnitVec2 & direction,
                             double & deviation);

    /// A line in the plane through `origin` with that normal, nearest to the projections of at least 2 points on it.
    /// The heights of the points above the plane count in the deviation only. 0 as evaluate_line.
    static int evaluate_line2(giPoint3 const & origin, giUnitVec3 const & normal, giPoint3coDynArr const & points,
                              giPoint3 & point, giUnitVec3 & direction, double & deviation);

    /// A line in space through the centroid of at least 2 points. 0 as evaluate_line.
    static int evaluate_line3(giPoint3coDynArr const & points, giPoint3 & point, giUnitVec3 & direction,
                              double & deviation);

    /// A plane through the centroid of at least 3 points.
    static int evaluate_plane(giPoint3coDynArr const & points, giPoint3 & point, giUnitVec3 & normal,
                              double & deviation);

    /// A line in the plane from at least 2 probe centres. `normals` are approximate directions from the line towards
    /// the probe centres; only their sum counts: it tells the side of the line, and `normal`, at right angles to the
    /// line, is given its sense. With a sum of zero, or no normals, both sides are tried and the one that fits better
    /// is kept. `point` lies on the line.
    static int evaluate_probed_line2(giPoint2coDynArr const & points, doublecoDynArr const & radii,
                                     giUnitVec2coDynArr const & normals, giPoint2 & point, giUnitVec2 & normal,
                                     double & deviation);

    /// A plane from at least 3 probe centres, as evaluate_probed_line2.
    static int evaluate_probed_plane(giPoint3coDynArr const & points, doublecoDynArr const & radii,
                                     giUnitVec3coDynArr const & normals, giPoint3 & point, giUnitVec3 & normal,
                                     double & deviation);

    /// A circle through at least 3 points in the plane, from one start: the centroid and the mean distance from it.
    static int evaluate_circle(giPoint2coDynArr const & points, giPoint2 & centre, double & radius, double & deviation);

    /// A circle in the plane through `origin` with that normal, nearest to the projections of at least 3 points on it.
    /// The heights of the points above the plane count in the deviation only.
    static int evaluate_circle2(giPoint3 const & origin, giUnitVec3 const & normal, giPoint3coDynArr const & points,
                                giPoint3 & centre, double & radius, double & deviation);

    /// A circle in space, its plane found by the fit, through at least 3 points. Of more than 10000 points a sample of
    /// 10000 is used, spread over the array from 12000 points on, and the deviation is that of the sample.
    static int evaluate_circle3(giPoint3coDynArr const & points, giPoint3 & centre, giUnitVec3 & normal,
                                double & radius, double & deviation);

    /// A circle in the plane from at least 3 probe centres: the best from ten starts about the centroid.
    static int evaluate_probed_circle(giPoint2coDynArr const & points, doublecoDynArr const & radii, int inside,
                                      giPoint2 & centre, double & radius, double & deviation);

    /// A sphere through at least 4 points. Unless the first fit's mean square is below a 1000th of three times the
    /// diagonal of the points' box, in the numbers of the unit in use, 19 more starts are searched at random.
    static int evaluate_sphere(giPoint3coDynArr const & points, giPoint3 & centre, double & radius, double & deviation);

    /// A sphere from at least 4 probe centres, as evaluate_sphere.
    static int evaluate_probed_sphere(giPoint3coDynArr const & points, doublecoDynArr const & radii, int inside,
                                      giPoint3 & centre, double & radius, double & deviation);

    /// A cylinder through at least 5 points, found without a start value; sqCalculateLeastSquareCylinder() tells of the
    /// preferred direction (may be unset), its limit, and of new_points, with which an earlier fit is continued. 4
    /// points give 0 as well, and with 4 points or more a 0 makes axis_dir invalid.
    static int evaluate_cylinder(giPoint3coDynArr const & points, giPoint3 & axis_point, giUnitVec3 & axis_dir,
                                 double & radius, double & deviation, giUnitVec3 const & preferred_dir,
                                 giAngle const & dir_limit, int new_points);

    /// The same with a surface normal for each point, in place of a preferred direction.
    static int evaluate_cylinder(giPoint3coDynArr const & points, giUnitVec3coDynArr const & normals,
                                 giAngle const & dir_limit, giPoint3 & axis_point, giUnitVec3 & axis_dir,
                                 double & radius, double & deviation, int new_points);

    /// A cylinder from at least 5 probe centres, as evaluate_cylinder. A 0 leaves all results as they were.
    static int evaluate_probed_cylinder(giPoint3coDynArr const & points, doublecoDynArr const & radii, int inside,
                                        giPoint3 & axis_point, giUnitVec3 & axis_dir, double & radius,
                                        double & deviation, giUnitVec3 const & preferred_dir, giAngle const & dir_limit,
                                        int new_points);
    static int evaluate_probed_cylinder(giPoint3coDynArr const & points, doublecoDynArr const & radii, int inside,
                                        giUnitVec3coDynArr const & normals, giAngle const & dir_limit,
                                        giPoint3 & axis_point, giUnitVec3 & axis_dir, double & radius,
                                        double & deviation, int new_points);

    /// Several cylinders in one cloud of at least 5 points: sqCalculateMultipleLeastSquareCylinders().
    static int evaluate_multiple_cylinders(giPoint3coDynArr const & points, giUnitVec3coDynArr const & guess_dirs,
                                           double tolerance, giAngle const & angle_tolerance, int n_wanted,
                                           sqFittedCylindercoDynArr & results);

    /// A cone through at least 6 points, found without a start value; sqCalculateLeastSquareCone() tells of the
    /// preferred direction (may be unset), its limit, and of new_points, with which an earlier fit is continued.
    static int evaluate_cone(giPoint3coDynArr const & points, giPoint3 & apex, giUnitVec3 & axis_dir,
                             double & half_angle, double & deviation, giUnitVec3 const & preferred_dir,
                             giAngle const & dir_limit, int new_points);

    /// The same with a surface normal for each point, in place of a preferred direction.
    static int evaluate_cone(giPoint3coDynArr const & points, giUnitVec3coDynArr const & normals,
                             giAngle const & dir_limit, giPoint3 & apex, giUnitVec3 & axis_dir, double & half_angle,
                             double & deviation, int new_points);

    /// A cone from at least 6 probe centres, as evaluate_cone. The search begins with cones through `guess_points`,
    /// which lie on the surface or near it.
    static int evaluate_probed_cone(giPoint3coDynArr const & points, doublecoDynArr const & radii, int inside,
                                    giPoint3coDynArr const & guess_points, giPoint3 & apex, giUnitVec3 & axis_dir,
                                    double & half_angle, double & deviation, giUnitVec3 const & preferred_dir,
                                    giAngle const & dir_limit, int new_points);
    static int evaluate_probed_cone(giPoint3coDynArr const & points, doublecoDynArr const & radii, int inside,
                                    giPoint3coDynArr const & guess_points, giUnitVec3coDynArr const & normals,
                                    giAngle const & dir_limit, giPoint3 & apex, giUnitVec3 & axis_dir,
                                    double & half_angle, double & deviation, int new_points);

    /// Several cones of any half angle in one cloud: sqCalculateMultipleLeastSquareCones().
    static int evaluate_multiple_cones(giPoint3coDynArr const & points, giUnitVec3coDynArr const & guess_dirs,
                                       double tolerance, giAngle const & angle_tolerance, int n_wanted,
                                       sqFittedConecoDynArr & results);

    /// sqSetLeastSquareConeNonPhysicalTolerance().
    static double set_cone_non_physical_tolerance(double radians);

    /// An ellipse in the plane through at least 4 points, found without a start value: sqCalculateLeastSquareEllipse().
    static int evaluate_ellipse(giPoint2coDynArr const & points, giPoint2 & centre, double & major, double & minor,
                                double & angle, double & deviation);

    /// An ellipse in the plane through `origin` with that normal, nearest to the projections of the points on it, of
    /// which there are at least 4: fewer give 0. `angle` is that of the major axis from the part of `reference` within
    /// the plane, counterclockwise about the normal, from 0 to below pi; with a reference along the normal it is told
    /// from some direction in the plane. The heights of the points above the plane count in the deviation only.
    static int evaluate_ellipse2(giPoint3 const & origin, giUnitVec3 const & reference, giUnitVec3 const & normal,
                                 giPoint3coDynArr const & points, giPoint3 & centre, double & major, double & minor,
                                 double & angle, double & deviation);

    /// The axis of a surface of revolution of unknown profile, from at least 6 points and as many normals, of either
    /// sense; 0 with fewer points or another number of normals. With `direction` set, `point` and `direction` are the
    /// start of one local fit; with it unset all axes and space diagonals are tried. A `point` that is not set starts
    /// at the centroid. The deviation is the root mean square of the distances between the axis and the lines along
    /// the normals. sqLeastSquareAxisRev tells what those do not determine.
    static int evaluate_axis_rev(giPoint3coDynArr const & points, giUnitVec3coDynArr const & normals, giPoint3 & point,
                                 giUnitVec3 & direction, double & deviation);

    /// A torus through at least 4 points, found without a start value: sqCalculateTorusDownhillSimplex(). After a 0
    /// with 4 points or more, axis_dir says nothing and the deviation is the largest float.
    static int evaluate_torus(giPoint3coDynArr const & points, giPoint3 & centre, giUnitVec3 & axis_dir, double & major,
                              double & minor, double & deviation);

    /// A torus from at least 4 probe centres: with `inside` not 0 they lie within the tube.
    static int evaluate_probed_torus(giPoint3coDynArr const & points, doublecoDynArr const & radii, int inside,
                                     giPoint3 & centre, giUnitVec3 & axis_dir, double & major, double & minor,
                                     double & deviation);

    /// A torus near the axis through `centre` along axis_dir, by one downhill simplex; 0 with fewer than 3 points, and
    /// then the deviation is 0 and all else as it was.
    static int evaluate_torus_with_guess(giPoint3coDynArr const & points, giPoint3 & centre, giUnitVec3 & axis_dir,
                                         double & major, double & minor, double & deviation);
};
