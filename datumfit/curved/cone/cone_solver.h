#pragma once

#include <datumfit/curved/cone/fitted_cone.h>
#include <datumfit/foundation/geometry/angle.h>
#include <datumfit/foundation/geometry/point3.h>
#include <datumfit/foundation/geometry/unit_vec3.h>

/// Finds the least-squares cone of at least 6 points, without a start value: 1, or 0 with the results as they were.
///
/// The solver runs from what sqConeGuessGenerator makes of the points and their normals, until a proper cone within the
/// limits is found, and once more, to the last digit, from the best solution. Orthogonal distances; a point beyond the
/// apex counts as if the cone went on there, its distance measured from the continued lines.
///
/// preferred_dir (may be unset) and normals (one for each point, or none) are a preference: a cone whose axis, either
/// way round, lies within dir_limit of the direction, and whose normals all lie within dir_limit of the measured ones
/// or of their reverse, stands against one that fits better, by up to a 1000th of the diagonal of the points' box in
/// deviation. Nearly flat cones and nearly cylindrical ones give way to proper cones: see
/// sqSetLeastSquareConeNonPhysicalTolerance() and sqLeastSquareConeResults::get_best().
///
/// new_points other than 0 continues from the given apex, axis and half angle: positive, as a fit of all points but the
/// last new_points, unless these lie too far off it or pull it too far off the others; negative, without a test. No
/// limit counts there. Of too few old points, or of a cone that is not finite, the search is made anew.
///
/// axis_dir has unit length and points to the apex, the cone opens against it; half_angle is in radians, from 0 to
/// pi / 2; deviation is the root mean square of the distances. The apex of a cylinder, half angle 0, lies at infinity.
int sqCalculateLeastSquareCone(giPoint3coDynArr const & points, giPoint3 & apex, giUnitVec3 & axis_dir,
                               double & half_angle, double & deviation, giUnitVec3 const & preferred_dir,
                               giAngle const & dir_limit, giUnitVec3coDynArr const & normals, int new_points);

/// The same from probe centres, with one radius for each at least: the surface, which lies one probe radius further out
/// than the centre with `inside` not 0, and one nearer to the axis with 0. The guesses are made of `guess_points`,
/// which lie on the surface or near it, such as the probe centres themselves; with normals given, as many as these.
int sqCalculateLeastSquareProbedCone(giPoint3coDynArr const & points, doublecoDynArr const & radii, int inside,
                                     giPoint3coDynArr const & guess_points, giPoint3 & apex, giUnitVec3 & axis_dir,
                                     double & half_angle, double & deviation, giUnitVec3 const & preferred_dir,
                                     giAngle const & dir_limit, giUnitVec3coDynArr const & normals, int new_points);

/// Looks for different cones near given directions that all points fit with a deviation below `tolerance`, with a half
/// angle between the two given, and appends them to the results. Two are different when sqFittedCone::coincident() says
/// so for the tolerances. The search stops when a found cone leaves n_wanted results. The axes of the results point
/// away from the apex, into the cone. Gives the number of results.
int sqCalculateMultipleLeastSquareCones(giPoint3coDynArr const & points, giUnitVec3coDynArr const & guess_dirs,
                                        double tolerance, giAngle const & angle_tolerance, int n_wanted,
                                        sqFittedConecoDynArr & results, giAngle const & min_angle,
                                        giAngle const & max_angle);
