#pragma once

#include <datumfit/foundation/containers/dyn_arr.h>
#include <datumfit/foundation/geometry/point3.h>
#include <datumfit/foundation/geometry/vector3.h>

/// The effort of a torus search from a given axis: one downhill simplex, quick, normal or thorough; or several on the
/// hull area of the folded points, then a thorough one.
enum sqTORUS_SPEED { sqTORUS_QUICK = 0, sqTORUS_NORMAL = 1, sqTORUS_THOROUGH = 2, sqTORUS_HULL_AREA = 3 };

/// Finds the least-squares torus of points without a start value: 1, or 0 when no axis has a torus.
///
/// Axes of a grid of directions and places are searched by a quick simplex; of each four starts the best is searched
/// on. The winner goes through longer simplexes and a hundred runs of the least-squares solver. The scan ends early
/// once the deviation is below `tolerance`, which is also the least step of its grid; the last runs are left out then.
///
/// radii holds one probe radius for each point, or none for points on the surface; with `inside` not 0 the probe
/// centres lie within the tube. axis has unit length. After a 0 deviation is the largest float and all else as it was,
/// but for axis, which says nothing.
int sqCalculateTorusDownhillSimplex(giPoint3coDynArr const & points, doublecoDynArr const & radii, int inside,
                                    giPoint3 & centre, giVector3 & axis, double & major, double & minor,
                                    double & deviation, double tolerance);

/// Finds a torus near a given axis, of unit length, by downhill simplexes only: 1, or 0 with fewer than 3 points and
/// nothing written. The simplexes start with steps of 0.1 in the unit in use; points whose box has a diagonal above 200
/// are taken in a greater unit, a power of two.
int sqCalculateTorusDownhillSimplexWithGuess(giPoint3coDynArr const & points, doublecoDynArr const & radii, int inside,
                                             giPoint3 const & start_point, giVector3 const & start_axis,
                                             giPoint3 & centre, giVector3 & axis, double & major, double & minor,
                                             double & deviation, sqTORUS_SPEED speed);
