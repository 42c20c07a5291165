#pragma once

#include <datumfit/curved/cylinder/fitted_cylinder.h>
#include <datumfit/foundation/geometry/angle.h>
#include <datumfit/foundation/geometry/point3.h>
#include <datumfit/foundation/geometry/unit_vec3.h>

/// Finds the least-squares cylinder of at least 5 points, without a start value: 1, or 0 with the results as they were.
///
/// Orthogonal distances have many local minima, told apart by the direction of the axis. Solver runs start from the
/// best direction of a scan, from the direction between the two points farthest apart and from the plane of the
/// normals; then from random directions, a hundred at a time, of which the one goes to the solver along which a circle
/// fits best. Directions whose circle cannot beat the best of their hundred are told from the moments of the points,
/// without a fit.
///
/// preferred_dir (may be unset) and normals (one for each point, or none) are a preference: a cylinder whose axis lies
/// within dir_limit of the direction, and whose normals all lie within dir_limit of the measured ones or of their
/// reverse, stands against one that fits better, by up to a 1000th of the diagonal of the points' box in deviation.
///
/// new_points other than 0 continues from the given axis and radius: positive, as a fit of all points but the last
/// new_points, unless these lie too far off it or pull it too far off the others; negative, without a test. No limit
/// counts there. Of too few old points, or of an axis and radius that are not finite, the search is made anew.
///
/// axis_dir has unit length and either sense, axis_point is the point of the axis nearest to the origin; deviation is
/// the root mean square of the distances.
int sqCalculateLeastSquareCylinder(giPoint3coDynArr const & points, giPoint3 & axis_point, giUnitVec3 & axis_dir,
                                   double & radius, double & deviation, giUnitVec3 const & preferred_dir,
                                   giAngle const & dir_limit, giUnitVec3coDynArr const & normals, int new_points);

/// The same from probe centres, with one radius for each at least: the surface, which lies one probe radius further
/// from the axis than the centre with `inside` not 0, and one nearer with 0.
int sqCalculateLeastSquareProbedCylinder(giPoint3coDynArr const & points, doublecoDynArr const & radii, int inside,
                                         giPoint3 & axis_point, giUnitVec3 & axis_dir, double & radius,
                                         double & deviation, giUnitVec3 const & preferred_dir,
                                         giAngle const & dir_limit, giUnitVec3coDynArr const & normals, int new_points);

/// Looks for up to n_wanted different cylinders that all points fit with a deviation below `tolerance`, and appends
/// them to the results, whose entries count as found already. Two are different when sqFittedCylinder::coincident()
/// says so for the tolerances. At most 150 n_wanted directions are tried, first the given ones, then random ones near
/// them and anywhere. Gives the number of results; 0 with fewer than 5 points.
int sqCalculateMultipleLeastSquareCylinders(giPoint3coDynArr const & points, giUnitVec3coDynArr const & guess_dirs,
                                            double tolerance, giAngle const & angle_tolerance, int n_wanted,
                                            sqFittedCylindercoDynArr & results);
